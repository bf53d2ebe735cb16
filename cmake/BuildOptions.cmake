# What every target of the project is built with.

option(TREVOLT_BUILD_TESTS "Build the tests" OFF)
option(TREVOLT_JOIN_SOURCES "Compile several sources of a target at a time" OFF)
option(TREVOLT_JOIN_ENTRIES "Join the entries of programs with what they start (for clang-tidy)" OFF)
option(TREVOLT_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(TREVOLT_BUILD_FUZZERS "Build the libFuzzer targets (clang)" OFF)
option(TREVOLT_COVERAGE "Count which lines and branches of the library run (GCC)" OFF)
set(TREVOLT_SANITIZERS "" CACHE STRING "Comma-separated -fsanitize= list")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
# Sums and products are rounded as written, on every system.
add_compile_options(-ffp-contract=off)

if(TREVOLT_SANITIZERS)
    add_compile_options(-fsanitize=${TREVOLT_SANITIZERS} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TREVOLT_SANITIZERS})
    if(TREVOLT_BUILD_FUZZERS)
        add_compile_options(-fsanitize=fuzzer-no-link)
    endif()
endif()

if(TREVOLT_COVERAGE)
    add_link_options(--coverage)
endif()

# Warnings are errors.
function(trevolt_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # GCC 12 sees overlapping copies in plain string concatenation at -O3.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(MINGW)
        # GCC 12 takes MinGW's inline wmemcpy for one that reads past short texts.
        target_compile_options(${target} PRIVATE -Wno-array-bounds
                               -Wno-stringop-overread)
    endif()
endfunction()

# The project's own code, which is included from its root.
function(trevolt_own_code target)
    trevolt_warnings(${target})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
endfunction()

# The compiler goes through the headers once for several sources of the target. Builds without it
# prove that each source includes what it uses.
function(trevolt_joined target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${TREVOLT_JOIN_SOURCES})
endfunction()

# trevolt_joined_entry(<target> <file>)
# A program's entry includes the same headers as the target that it starts: clang-tidy takes both as one.
function(trevolt_joined_entry target file)
    if(TREVOLT_JOIN_ENTRIES)
        target_sources(${target} PRIVATE ${file})
    endif()
endfunction()

# trevolt_joined_programs(<target> ENTRIES <function>... SOURCES <file>... USES <target>...)
# Programs of one source each, where each has one of the entries, as one target: clang-tidy takes all of
# them as one.
function(trevolt_joined_programs target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "ENTRIES;SOURCES;USES")
    if(NOT TREVOLT_JOIN_ENTRIES)
        return()
    endif()
    add_library(${target} OBJECT ${arg_SOURCES})
    trevolt_own_code(${target})
    target_link_libraries(${target} PRIVATE ${arg_USES})
    foreach(entry IN LISTS arg_ENTRIES)
        string(APPEND rename "#define ${entry} TREVOLT_ENTRY\n")
        string(APPEND undo "#undef ${entry}\n")
    endforeach()
    set_target_properties(${target} PROPERTIES
        UNITY_BUILD ON
        UNITY_BUILD_UNIQUE_ID TREVOLT_ENTRY
        UNITY_BUILD_CODE_BEFORE_INCLUDE "${rename}"
        UNITY_BUILD_CODE_AFTER_INCLUDE "${undo}")
endfunction()

# trevolt_folder(<folder> SOURCES <file>... [USES <target>...])
# One folder of the house as a static library with the folder's name.
function(trevolt_folder folder)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES")
    add_library(trevolt_${folder} STATIC ${arg_SOURCES})
    trevolt_own_code(trevolt_${folder})
    trevolt_joined(trevolt_${folder})
    target_link_libraries(trevolt_${folder} PUBLIC ${arg_USES})
    if(TREVOLT_SANITIZERS)
        # What the tests and fuzz targets spend their time in.
        target_compile_options(trevolt_${folder} PRIVATE -O1)
    endif()
    if(TREVOLT_COVERAGE)
        # Threads count the same lines. The tests spend their time here too; what the standard
        # library's headers bring is not counted.
        target_compile_options(trevolt_${folder} PRIVATE -Og --coverage -fprofile-update=atomic
                               -fprofile-exclude-files=^/usr/)
    endif()
endfunction()

# Arguments and printing: what takes no time but the compiler's.
function(trevolt_quick_to_build target)
    if(TREVOLT_SANITIZERS)
        target_compile_options(${target} PRIVATE -O0)
    else()
        target_compile_options(${target} PRIVATE -O1)
    endif()
endfunction()

# trevolt_wide_entry(<target> PUBLIC|PRIVATE|INTERFACE)
# The program starts at wmain or wWinMain on Windows, so that every Unicode argument arrives.
function(trevolt_wide_entry target scope)
    if(MINGW)
        target_link_options(${target} ${scope} -municode)
    endif()
endfunction()
