# Sets LZ4_SOURCE_DIR to LZ4's packaged source, of the version that the native build links,
# fetched once a build folder.
set(LZ4_SOURCE_DIR ${CMAKE_BINARY_DIR}/lz4-source)
if(NOT EXISTS ${LZ4_SOURCE_DIR}/lib/lz4.c)
    execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/fetch-source.sh lz4 ${LZ4_SOURCE_DIR}
                    COMMAND_ERROR_IS_FATAL ANY)
endif()
