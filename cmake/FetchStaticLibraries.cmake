# Defines OpenSSL::Crypto and ZLIB::ZLIB for the processor that is built for, from Debian's packages,
# which are fetched once a build folder.
set(libraries ${CMAKE_BINARY_DIR}/libraries)
set(triplet ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
if(NOT EXISTS ${libraries}/usr/lib/${triplet}/libz.a)
    execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/fetch-libraries.sh
                            ${TREVOLT_DEBIAN_ARCHITECTURE} ${libraries} libssl-dev zlib1g-dev
                    COMMAND_ERROR_IS_FATAL ANY)
endif()
foreach(library IN ITEMS OpenSSL::Crypto=crypto ZLIB::ZLIB=z)
    string(REPLACE "=" ";" library ${library})
    list(GET library 0 target)
    list(GET library 1 archive)
    add_library(${target} STATIC IMPORTED)
    set_target_properties(${target} PROPERTIES
        IMPORTED_LOCATION ${libraries}/usr/lib/${triplet}/lib${archive}.a
        INTERFACE_INCLUDE_DIRECTORIES "${libraries}/usr/include;${libraries}/usr/include/${triplet}")
endforeach()
