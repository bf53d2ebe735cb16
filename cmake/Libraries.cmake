# Libraries from Debian's packages. Header-only ones are staged into the build folder, so that no
# system header of the build machine leaks into a cross build; GoogleTest (and LZ4, in a cross
# build) are built from their packaged sources.

find_package(Threads REQUIRED)

set(TREVOLT_STAGE ${CMAKE_BINARY_DIR}/staged/include)
function(trevolt_header_library name)
    foreach(folder IN LISTS ARGN)
        if(NOT EXISTS /usr/include/${folder})
            message(FATAL_ERROR "${folder} is missing: run tools/setup.sh build")
        endif()
        file(COPY /usr/include/${folder} DESTINATION ${TREVOLT_STAGE}/${name})
    endforeach()
    add_library(${name} INTERFACE)
    target_include_directories(${name} SYSTEM INTERFACE ${TREVOLT_STAGE}/${name})
endfunction()

trevolt_header_library(cli11 CLI)
trevolt_header_library(fmt_headers fmt)
trevolt_header_library(stb_headers stb)

# In a folder of its own: LZ4's source has an older xxhash.h beside its headers.
if(NOT EXISTS /usr/include/xxhash.h)
    message(FATAL_ERROR "xxhash.h is missing: run tools/setup.sh build")
endif()
file(COPY /usr/include/xxhash.h DESTINATION ${TREVOLT_STAGE}/xxhash/xxhash)
add_library(xxhash INTERFACE)
target_include_directories(xxhash SYSTEM INTERFACE ${TREVOLT_STAGE}/xxhash)
target_compile_definitions(xxhash INTERFACE XXH_INLINE_ALL)

# A program that links the library may use any {fmt} beside it: this one lies in a namespace of the
# project's own.
target_compile_definitions(fmt_headers INTERFACE
    "FMT_BEGIN_NAMESPACE=namespace fmt { inline namespace trevolt_fmt {" "FMT_END_NAMESPACE=}}")

# {fmt}'s own functions are compiled once, from its headers, and not in every source that prints.
add_library(fmt STATIC ${PROJECT_SOURCE_DIR}/cmake/FmtLibrary.cpp)
target_compile_options(fmt PRIVATE -w)
target_link_libraries(fmt PUBLIC fmt_headers)

# The letters in pictures are of this file, which the program holds.
set(TREVOLT_FONT ${CMAKE_BINARY_DIR}/staged/DejaVuSans.ttf)
if(NOT EXISTS /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf)
    message(FATAL_ERROR "DejaVuSans.ttf is missing: run tools/setup.sh build")
endif()
configure_file(/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf ${TREVOLT_FONT} COPYONLY)

if(CMAKE_CROSSCOMPILING)
    include(FetchLz4Source)
    add_library(lz4 STATIC ${LZ4_SOURCE_DIR}/lib/lz4.c ${LZ4_SOURCE_DIR}/lib/lz4frame.c
                           ${LZ4_SOURCE_DIR}/lib/lz4hc.c ${LZ4_SOURCE_DIR}/lib/xxhash.c)
    # It is installed beside the library, where another LZ4 may stand.
    set_target_properties(lz4 PROPERTIES OUTPUT_NAME trevolt_lz4 EXPORT_NAME trevolt_lz4)
    target_include_directories(lz4 SYSTEM PUBLIC $<BUILD_INTERFACE:${LZ4_SOURCE_DIR}/lib>)
    target_compile_definitions(lz4 PRIVATE XXH_NAMESPACE=LZ4_)
    target_compile_options(lz4 PRIVATE -O3 -w)
else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(TREVOLT_LZ4 REQUIRED IMPORTED_TARGET liblz4)
    add_library(lz4 ALIAS PkgConfig::TREVOLT_LZ4)
    find_package(OpenSSL REQUIRED COMPONENTS Crypto)
    find_package(ZLIB REQUIRED)
endif()
if(WIN32)
    set(ZLIB_USE_STATIC_LIBS ON)
    find_package(ZLIB REQUIRED)
elseif(CMAKE_CROSSCOMPILING)
    include(FetchStaticLibraries)
endif()

# What pictures are made with.
add_library(stb STATIC ${PROJECT_SOURCE_DIR}/cmake/StbLibraries.c)
target_compile_options(stb PRIVATE -O2 -w)
target_link_libraries(stb PUBLIC stb_headers)

if(TREVOLT_BUILD_TESTS)
    set(GTEST_SOURCE /usr/src/googletest/googletest)
    if(NOT EXISTS ${GTEST_SOURCE})
        message(FATAL_ERROR "GoogleTest's sources are missing: run tools/setup.sh test")
    endif()
    add_library(gtest STATIC ${GTEST_SOURCE}/src/gtest-all.cc)
    target_include_directories(gtest SYSTEM PUBLIC ${GTEST_SOURCE}/include)
    target_include_directories(gtest PRIVATE ${GTEST_SOURCE})
    target_compile_options(gtest PRIVATE -w -O0)
    if(TREVOLT_SANITIZERS)
        # It is not what is looked at, and Clang takes long over it otherwise.
        target_compile_options(gtest PRIVATE -fno-sanitize=all)
    endif()
    target_link_libraries(gtest PUBLIC Threads::Threads)
endif()

if(TREVOLT_BUILD_BENCHMARKS)
    find_package(benchmark REQUIRED)
endif()
