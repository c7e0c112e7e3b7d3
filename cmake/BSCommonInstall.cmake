# Installation, the CMake package, the pkg-config file and the Debian packages.
#
#   cmake --install <build> [--prefix DIR]   lib/        libBSCommonLibrary.so, libtoolkit.so
#                                            bin/        mdvr-param (and the bus tools)
#                                            share/man/man1/  their man pages
#                                            share/doc/libbscommonlibrary/examples/mdvr_parameters.json
#                                            share/bscommonlibrary/mdvr-bus.lua (the dissector)
#                                            share/bash-completion/completions/  the tools' completion
#                                            share/doc/libbscommonlibrary{,-dev}/
#                                                        changelog.gz, copyright; -dev: html/
#                                            include/BSCommonLibrary/   exported headers, CommonToolkit.h, BusWire.h
#                                            lib/cmake/BSCommonLibrary/ find_package(BSCommonLibrary CONFIG)
#                                            lib/pkgconfig/BSCommonLibrary.pc
#   cpack -G DEB (in <build>)                libbscommonlibrary (runtime) and
#                                            libbscommonlibrary-dev (development) for the build's architecture
#
# The support library is installed beside the library in both of its builds:
# the host build made here, or the vendor's files (libtoolkit.so*) from
# TOOLKIT_VENDOR_DIR. Consumers reach it as BSCommonLibrary::toolkit.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(BSCOMMON_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/BSCommonLibrary)
set(BSCOMMON_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/BSCommonLibrary)

target_include_directories(BSCommonLibrary INTERFACE $<INSTALL_INTERFACE:${BSCOMMON_INSTALL_INCLUDEDIR}>)
target_link_libraries(BSCommonLibrary INTERFACE $<INSTALL_INTERFACE:BSCommonLibrary::toolkit>)
# Installed, the library finds the support library beside itself and the tool
# finds both in the library directory.
file(RELATIVE_PATH BSCOMMON_BIN_TO_LIB /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(BSCommonLibrary PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(mdvr-param PROPERTIES INSTALL_RPATH "$ORIGIN/${BSCOMMON_BIN_TO_LIB}")

install(TARGETS BSCommonLibrary EXPORT BSCommonLibraryTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
install(TARGETS mdvr-param RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
# The development bus (daemon, command-line client and the example recorder
# process) comes with the host build of the support library.
foreach(tool mdvr-busd mdvr-bus mdvr-recorder)
    if(TARGET ${tool})
        set_target_properties(${tool} PROPERTIES INSTALL_RPATH "$ORIGIN/${BSCOMMON_BIN_TO_LIB}")
        install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
    endif()
endforeach()
# Bash completion: one file for all the tools, installed under each tool's
# name, where bash-completion looks for it when the tool is first completed.
foreach(tool mdvr-param mdvr-busd mdvr-bus mdvr-recorder)
    if(TARGET ${tool})
        install(FILES ${PROJECT_SOURCE_DIR}/tools/completion/bscommon-tools.bash
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${tool} COMPONENT runtime)
    endif()
endforeach()
if(TOOLKIT_VENDOR_DIR)
    file(GLOB BSCOMMON_VENDOR_TOOLKIT ${TOOLKIT_VENDOR_DIR}/libtoolkit.so*)
    install(FILES ${BSCOMMON_VENDOR_TOOLKIT} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
else()
    install(TARGETS toolkit LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
endif()

file(GLOB BSCOMMON_PUBLIC_HEADERS ${BSCOMMON_DIR}/include/*.h)
install(FILES ${BSCOMMON_PUBLIC_HEADERS} ${TOOLKIT_INCLUDE}/CommonToolkit.h ${TOOLKIT_INCLUDE}/BusWire.h
    DESTINATION ${BSCOMMON_INSTALL_INCLUDEDIR} COMPONENT development)

install(EXPORT BSCommonLibraryTargets NAMESPACE BSCommonLibrary::
    DESTINATION ${BSCOMMON_INSTALL_CMAKEDIR} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/BSCommonLibraryConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/BSCommonLibraryConfig.cmake
    INSTALL_DESTINATION ${BSCOMMON_INSTALL_CMAKEDIR}
    PATH_VARS CMAKE_INSTALL_LIBDIR BSCOMMON_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/BSCommonLibraryConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/BSCommonLibraryConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/BSCommonLibraryConfigVersion.cmake
    DESTINATION ${BSCOMMON_INSTALL_CMAKEDIR} COMPONENT development)

# Documentation (cmake/BSCommonDocs.cmake): man pages with the tools, the API
# reference with the headers, and in each package's doc directory the
# changelog and the copyright file that Debian packages carry.
if(BSCOMMON_DOCS)
    # A page names the installed example document and dissector under the
    # prefix that it is installed to.
    foreach(page IN LISTS BSCOMMON_MAN_PAGES)
        install(CODE "set(BSCOMMON_MAN_PAGE \"${page}\")
            set(BSCOMMON_MAN_BUILD_PREFIX \"${CMAKE_INSTALL_PREFIX}\")
            set(BSCOMMON_MAN_PATHS \"${BSCOMMON_MAN_PATHS}\")
            set(BSCOMMON_MAN_DESTINATION \"${CMAKE_INSTALL_MANDIR}/man1\")
            set(BSCOMMON_GZIP \"${GZIP}\")
            include(\"${CMAKE_CURRENT_LIST_DIR}/InstallManPage.cmake\")"
            COMPONENT runtime)
    endforeach()
    # What the man pages' examples and FILES sections name.
    install(FILES ${PROJECT_SOURCE_DIR}/examples/mdvr_parameters.json
        DESTINATION ${BSCOMMON_EXAMPLES_INSTALL_DIR} COMPONENT runtime)
    if(TARGET mdvr-bus)
        install(FILES ${PROJECT_SOURCE_DIR}/docs/mdvr-bus.lua DESTINATION ${BSCOMMON_DATA_INSTALL_DIR}
            COMPONENT runtime)
    endif()
    install(DIRECTORY ${BSCOMMON_DOCS_DIR}/html
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libbscommonlibrary-dev COMPONENT development)
    foreach(package_component libbscommonlibrary:runtime libbscommonlibrary-dev:development)
        string(REPLACE ":" ";" package_component ${package_component})
        list(GET package_component 0 package)
        list(GET package_component 1 component)
        install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz ${CMAKE_CURRENT_SOURCE_DIR}/docs/copyright
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
    endforeach()
endif()

# pkg-config: relocatable, the prefix is found from the file's own place.
file(RELATIVE_PATH BSCOMMON_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" BSCOMMON_PC_TO_PREFIX "${BSCOMMON_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/BSCommonLibrary.pc.in ${CMAKE_CURRENT_BINARY_DIR}/BSCommonLibrary.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/BSCommonLibrary.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# --- Debian packages -----------------------------------------------------------
# Debian's name of the build's architecture, and the Debian packages that hold
# the shared libraries linked in (with their installed version as the lower
# bound): JsonCpp, and ZeroMQ for the host build of the support library.
set(BSCOMMON_DEB_ARCH_x86_64 amd64)
set(BSCOMMON_DEB_ARCH_arm armhf)
set(BSCOMMON_DEB_ARCH_aarch64 arm64)
set(BSCOMMON_DEB_ARCH ${BSCOMMON_DEB_ARCH_${CMAKE_SYSTEM_PROCESSOR}})

# Sets `var` to "package (>= version)" for the package that holds `file`, or
# to `fallback` when dpkg does not know the file. A file of the sysroot is
# looked up in the sysroot's own dpkg database (scripts/armhf-sysroot.sh
# writes one).
function(bscommon_deb_dependency var file fallback)
    set(${var} ${fallback} PARENT_SCOPE)
    get_filename_component(file "${file}" REALPATH)
    set(admindir "")
    if(CMAKE_SYSROOT)
        get_filename_component(sysroot "${CMAKE_SYSROOT}" REALPATH)
        string(LENGTH "${sysroot}" length)
        string(SUBSTRING "${file}" 0 ${length} head)
        if(head STREQUAL sysroot)
            string(SUBSTRING "${file}" ${length} -1 file)
            set(admindir --admindir=${sysroot}/var/lib/dpkg)
        endif()
    endif()
    execute_process(COMMAND dpkg-query ${admindir} -S ${file}
        OUTPUT_VARIABLE owner ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(owner MATCHES "^([^:,]+):([^:,]+): ")
        set(package ${CMAKE_MATCH_1})
        execute_process(COMMAND dpkg-query ${admindir} -W -f=\${Version} ${CMAKE_MATCH_1}:${CMAKE_MATCH_2}
            OUTPUT_VARIABLE version ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
        set(${var} "${package} (>= ${version})" PARENT_SCOPE)
    endif()
endfunction()

set(BSCOMMON_JSONCPP_FILE "")
get_target_property(BSCOMMON_JSONCPP_TARGET JsonCpp::JsonCpp INTERFACE_LINK_LIBRARIES)
if(TARGET ${BSCOMMON_JSONCPP_TARGET})
    get_target_property(BSCOMMON_JSONCPP_CONFIGS ${BSCOMMON_JSONCPP_TARGET} IMPORTED_CONFIGURATIONS)
    list(GET BSCOMMON_JSONCPP_CONFIGS 0 BSCOMMON_JSONCPP_CONFIG)
    get_target_property(BSCOMMON_JSONCPP_FILE ${BSCOMMON_JSONCPP_TARGET} IMPORTED_LOCATION_${BSCOMMON_JSONCPP_CONFIG})
endif()
bscommon_deb_dependency(BSCOMMON_RUNTIME_DEPENDS "${BSCOMMON_JSONCPP_FILE}" libjsoncpp25)
if(NOT TOOLKIT_VENDOR_DIR AND ZMQ_LIBRARY)
    bscommon_deb_dependency(BSCOMMON_ZMQ_DEPENDS "${ZMQ_LIBRARY}" libzmq5)
    string(APPEND BSCOMMON_RUNTIME_DEPENDS ", ${BSCOMMON_ZMQ_DEPENDS}")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME bscommonlibrary)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "MDVR platform team <mdvr-platform@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Common services for the MDVR application processes")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${BSCOMMON_DEB_ARCH})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libbscommonlibrary)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${BSCOMMON_RUNTIME_DEPENDS}, libstdc++6 (>= 12), libgcc-s1, libc6 (>= 2.34)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libbscommonlibrary-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libbscommonlibrary (= ${PROJECT_VERSION}), libjsoncpp-dev")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "the shared library, the support library and the tools with their man pages")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "headers, CMake package, pkg-config file and the API reference")
include(CPack)

# Tests of what is installed and packaged (not with sanitizers: a consumer
# would have to bring their runtimes). A cross-built consumer gets the build's
# toolchain file and sysroot, and for pkg-config its compiler and flags.
if(BSCOMMON_TESTS AND NOT BSCOMMON_SANITIZE AND NOT BSCOMMON_FUZZ)
    set(BSCOMMON_CONSUMER_CROSS "")
    if(CMAKE_TOOLCHAIN_FILE)
        get_filename_component(BSCOMMON_CONSUMER_TOOLCHAIN "${CMAKE_TOOLCHAIN_FILE}" ABSOLUTE
            BASE_DIR ${CMAKE_SOURCE_DIR})
        set(BSCOMMON_CONSUMER_CROSS ${BSCOMMON_CONSUMER_TOOLCHAIN} ${CMAKE_SYSROOT})
    endif()
    foreach(mode cmake pkg-config)
        add_test(NAME consumer_${mode}
            COMMAND ${CMAKE_COMMAND} -E env "CXX=${CMAKE_CXX_COMPILER}" "CXXFLAGS=${CMAKE_CXX_FLAGS}"
                    "LDFLAGS=${CMAKE_EXE_LINKER_FLAGS}"
                    bash ${CMAKE_SOURCE_DIR}/tests/consumer/run-consumer.sh ${CMAKE_BINARY_DIR} ${mode}
                    ${BSCOMMON_CONSUMER_CROSS})
    endforeach()
    add_test(NAME deb_contents
        COMMAND bash ${CMAKE_SOURCE_DIR}/tests/consumer/check-debs.sh ${CMAKE_BINARY_DIR} ${BSCOMMON_DEB_ARCH})
    set_tests_properties(consumer_cmake consumer_pkg-config deb_contents PROPERTIES TIMEOUT 600)
endif()
