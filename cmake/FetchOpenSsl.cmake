# Defines OpenSSL::Crypto for the processor that is built for, from Debian's packages, which are
# fetched once a build folder.
set(libraries ${CMAKE_BINARY_DIR}/libraries)
set(triplet ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
if(NOT EXISTS ${libraries})
    execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/fetch-libraries.sh
                            ${TREVOLT_DEBIAN_ARCHITECTURE} ${libraries} libssl-dev
                    COMMAND_ERROR_IS_FATAL ANY)
endif()
add_library(OpenSSL::Crypto STATIC IMPORTED)
set_target_properties(OpenSSL::Crypto PROPERTIES
    IMPORTED_LOCATION ${libraries}/usr/lib/${triplet}/libcrypto.a
    INTERFACE_INCLUDE_DIRECTORIES "${libraries}/usr/include;${libraries}/usr/include/${triplet}")
