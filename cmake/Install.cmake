# What `cmake --install` lays down, in three components: programs, library and documents. What comes
# with the command, a manual page or completions, is of the first, which both packages for Linux take.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Trevolt)
set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/trevolt)
set(generated ${PROJECT_BINARY_DIR}/generated)

install(TARGETS trevolt-cli RUNTIME COMPONENT programs)

# The manual page and the shells' completions, as ./dev pages makes them.
if(NOT WIN32)
    set(TREVOLT_ZSH_FOLDER site-functions CACHE STRING
        "Folder of share/zsh for the completion: vendor-completions in a package of Debian's")
    set(shared ${CMAKE_INSTALL_DATAROOTDIR})
    install(FILES share/man/man1/trevolt-cli.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
            COMPONENT programs)
    install(FILES share/bash-completion/completions/trevolt-cli
            DESTINATION ${shared}/bash-completion/completions COMPONENT programs)
    install(FILES share/zsh/site-functions/_trevolt-cli
            DESTINATION ${shared}/zsh/${TREVOLT_ZSH_FOLDER} COMPONENT programs)
    install(FILES share/fish/vendor_completions.d/trevolt-cli.fish
            DESTINATION ${shared}/fish/vendor_completions.d COMPONENT programs)
endif()

install(DIRECTORY include/trevolt DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT library)
set(libraries trevolt)
if(CMAKE_CROSSCOMPILING)
    list(APPEND libraries lz4)
endif()
install(TARGETS ${libraries} EXPORT TrevoltTargets
        ARCHIVE COMPONENT library
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TrevoltTargets NAMESPACE Trevolt:: DESTINATION ${package} COMPONENT library)
write_basic_package_version_file(${generated}/TrevoltConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES cmake/TrevoltConfig.cmake ${generated}/TrevoltConfigVersion.cmake
        DESTINATION ${package} COMPONENT library)

# The pkg-config file finds its folders from its own place.
set(pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH TREVOLT_PREFIX_FROM_PC /${pkgconfig} /)
string(REGEX REPLACE "/$" "" TREVOLT_PREFIX_FROM_PC ${TREVOLT_PREFIX_FROM_PC})
if(WIN32)
    set(TREVOLT_PC_REQUIRES "")
    set(TREVOLT_PC_LIBRARIES "-ltrevolt -ltrevolt_lz4 -ladvapi32 -lbcrypt -pthread")
else()
    set(TREVOLT_PC_REQUIRES "liblz4, libcrypto")
    set(TREVOLT_PC_LIBRARIES "-ltrevolt -pthread")
endif()
configure_file(cmake/trevolt.pc.in ${generated}/trevolt.pc @ONLY)
install(FILES ${generated}/trevolt.pc DESTINATION ${pkgconfig} COMPONENT library)

# The archive's own program, in place of the other, and what it holds beside.
if(TARGET trevolt-cli-standalone)
    install(TARGETS trevolt-cli-standalone RUNTIME COMPONENT standalone EXCLUDE_FROM_ALL)
    install(FILES /usr/share/doc/libssl-dev/copyright DESTINATION ${documents}/licences
            COMPONENT standalone EXCLUDE_FROM_ALL RENAME OpenSSL.txt)
    install(FILES /usr/share/common-licenses/Apache-2.0 DESTINATION ${documents}/licences
            COMPONENT standalone EXCLUDE_FROM_ALL RENAME Apache-2.0.txt)
endif()

# All that the pages lead to.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md LICENSE
        DESTINATION ${documents} COMPONENT documents)
install(DIRECTORY docs examples DESTINATION ${documents} COMPONENT documents)

# The licences of what the programs and the library hold of others, and the Debian packages whose
# files of copyright tell them.
set(licences LZ4=liblz4-dev xxHash=libxxhash-dev fmt=libfmt-dev CLI11=libcli11-dev
             stb=libstb-dev zlib=zlib1g-dev DejaVu-fonts=fonts-dejavu-core)
if(WIN32)
    list(APPEND licences GCC-runtime=gcc-mingw-w64-x86-64-posix-runtime
                         MinGW-w64=mingw-w64-x86-64-dev)
    install(FILES /usr/share/common-licenses/GPL-3 DESTINATION ${documents}/licences
            COMPONENT documents RENAME GPL-3.txt)
endif()
foreach(licence IN LISTS licences)
    string(REPLACE "=" ";" licence ${licence})
    list(GET licence 0 name)
    list(GET licence 1 debian)
    install(FILES /usr/share/doc/${debian}/copyright DESTINATION ${documents}/licences
            COMPONENT documents RENAME ${name}.txt)
endforeach()
