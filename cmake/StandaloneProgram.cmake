# trevolt-cli once more, for the archive: it holds what Debian's base system may lack, and loads the
# compilers' libraries only, which every system has that has a package manager. (With libstdc++ held
# too it would ask for a newer C library.) The Debian package has the program that loads all of its
# libraries, so that their mends reach it.
find_library(TREVOLT_LZ4_ARCHIVE liblz4.a REQUIRED)
find_library(TREVOLT_CRYPTO_ARCHIVE libcrypto.a REQUIRED)
find_library(TREVOLT_ZLIB_ARCHIVE libz.a REQUIRED)
add_executable(trevolt-cli-standalone EXCLUDE_FROM_ALL
               $<TARGET_OBJECTS:trevolt-cli> $<TARGET_OBJECTS:trevolt_cli>
               $<TARGET_OBJECTS:trevolt_console_entry> $<TARGET_OBJECTS:trevolt_inspection>
               $<TARGET_OBJECTS:stb>)
set_target_properties(trevolt-cli-standalone PROPERTIES
    OUTPUT_NAME trevolt-cli
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/standalone
    LINKER_LANGUAGE CXX)
add_dependencies(trevolt-cli-standalone trevolt)
target_link_libraries(trevolt-cli-standalone PRIVATE
    $<TARGET_FILE:trevolt> ${TREVOLT_LZ4_ARCHIVE} ${TREVOLT_CRYPTO_ARCHIVE} ${TREVOLT_ZLIB_ARCHIVE}
    Threads::Threads)
