# The library that other programs link: the folders below the front ends in one archive, and the
# public headers as all that can be included.
add_library(trevolt STATIC)
add_library(Trevolt::trevolt ALIAS trevolt)
foreach(part IN ITEMS trevolt_platform trevolt_common trevolt_formats trevolt_calibuf trevolt_coef
                      trevolt_rotation fmt)
    target_sources(trevolt PRIVATE $<TARGET_OBJECTS:${part}>)
endforeach()
set_target_properties(trevolt PROPERTIES LINKER_LANGUAGE CXX)
target_include_directories(trevolt INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
target_compile_features(trevolt INTERFACE cxx_std_20)
target_link_libraries(trevolt PRIVATE lz4 Threads::Threads)
if(WIN32)
    target_link_libraries(trevolt PRIVATE advapi32 bcrypt)
else()
    target_link_libraries(trevolt PRIVATE OpenSSL::Crypto)
endif()
