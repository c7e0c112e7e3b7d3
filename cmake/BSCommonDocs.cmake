# Documentation built with the library:
#   docs          the API reference (HTML) from the exported headers, with
#                 Debian's doxygen; any warning (an undocumented function,
#                 record, field or enumerator) fails the build. Each record's
#                 layout page is made from `mdvr-param layout` when the docs
#                 are built (docs/api/make-layout-pages.py).
#   man pages     of the tools, by docs/man/make-man-page.py from each tool's
#                 --help (and its commands' --help) plus docs/man/<tool>.h2m,
#                 which adds only what --help lacks
#   changelog.gz and copyright for /usr/share/doc/<package> of each .deb
# All of them are part of the default build; cmake/BSCommonInstall.cmake
# installs them.
option(BSCOMMON_DOCS "Build the API reference and the man pages" ON)
if(NOT BSCOMMON_DOCS)
    return()
endif()
include(GNUInstallDirs)
find_program(DOXYGEN doxygen REQUIRED)
find_program(PYTHON3_DOCS python3 REQUIRED)
find_program(GZIP gzip REQUIRED)

# Installed files that the man pages name, relative to the installation
# prefix: the example parameter document and the Wireshark dissector. A page
# is made naming them under this build's CMAKE_INSTALL_PREFIX; installing it
# names them under the prefix it is installed to (cmake/InstallManPage.cmake).
set(BSCOMMON_EXAMPLES_INSTALL_DIR ${CMAKE_INSTALL_DATADIR}/doc/libbscommonlibrary/examples)
set(BSCOMMON_DATA_INSTALL_DIR ${CMAKE_INSTALL_DATADIR}/bscommonlibrary)
set(BSCOMMON_MAN_PATHS
    EXAMPLE_DOC=${BSCOMMON_EXAMPLES_INSTALL_DIR}/mdvr_parameters.json
    DISSECTOR=${BSCOMMON_DATA_INSTALL_DIR}/mdvr-bus.lua)

# --- API reference ----------------------------------------------------------------
set(BSCOMMON_DOCS_DIR ${CMAKE_CURRENT_BINARY_DIR}/docs)
set(BSCOMMON_LAYOUT_PAGES ${BSCOMMON_DOCS_DIR}/records.dox)
configure_file(${CMAKE_CURRENT_SOURCE_DIR}/docs/api/Doxyfile.in ${BSCOMMON_DOCS_DIR}/Doxyfile @ONLY)
file(GLOB BSCOMMON_DOC_HEADERS CONFIGURE_DEPENDS ${BSCOMMON_DIR}/include/*.h)
# A page per record type with what `mdvr-param layout` prints, and each field's
# offset and size from it.
add_custom_command(OUTPUT ${BSCOMMON_LAYOUT_PAGES}
    COMMAND ${PYTHON3_DOCS} ${CMAKE_CURRENT_SOURCE_DIR}/docs/api/make-layout-pages.py
            --headers ${BSCOMMON_DIR}/include --output ${BSCOMMON_LAYOUT_PAGES}
            -- ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:mdvr-param>
    DEPENDS mdvr-param ${BSCOMMON_DOC_HEADERS} ${CMAKE_CURRENT_SOURCE_DIR}/docs/api/make-layout-pages.py
    COMMENT "record layout pages (from mdvr-param layout)"
    VERBATIM)
add_custom_command(OUTPUT ${BSCOMMON_DOCS_DIR}/html/index.html
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${BSCOMMON_DOCS_DIR}/html
    COMMAND ${DOXYGEN} ${BSCOMMON_DOCS_DIR}/Doxyfile
    DEPENDS ${BSCOMMON_DOC_HEADERS} ${BSCOMMON_DOCS_DIR}/Doxyfile ${CMAKE_CURRENT_SOURCE_DIR}/docs/api/mainpage.md
            ${CMAKE_CURRENT_SOURCE_DIR}/docs/guide.md ${BSCOMMON_LAYOUT_PAGES}
            ${TOOLKIT_INCLUDE}/CommonToolkit.h ${TOOLKIT_INCLUDE}/BusWire.h
    COMMENT "API reference (doxygen, warnings are errors)"
    VERBATIM)
add_custom_target(docs ALL DEPENDS ${BSCOMMON_DOCS_DIR}/html/index.html)
if(BSCOMMON_TESTS AND NOT CMAKE_CROSSCOMPILING)
    add_test(NAME docs_reference
        COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tests/docs/check-docs.sh ${BSCOMMON_DOCS_DIR}/html
                $<TARGET_FILE:mdvr-param>)
endif()

# --- man pages ------------------------------------------------------------------
# A page for each tool that this build makes and that answers --version.
set(BSCOMMON_MAN_DIR ${CMAKE_CURRENT_BINARY_DIR}/man)
set(BSCOMMON_MAN_PAGES "")
set(BSCOMMON_MAN_SET "")
foreach(path IN LISTS BSCOMMON_MAN_PATHS)
    string(REGEX REPLACE "^([A-Z_]+)=(.*)$" "\\1=${CMAKE_INSTALL_PREFIX}/\\2" path "${path}")
    list(APPEND BSCOMMON_MAN_SET --set ${path})
endforeach()
foreach(tool mdvr-param mdvr-bus mdvr-busd mdvr-recorder)
    if(NOT TARGET ${tool})
        continue()
    endif()
    get_target_property(sources ${tool} SOURCES)
    set(answers_version FALSE)
    foreach(source IN LISTS sources)
        file(READ ${CMAKE_CURRENT_SOURCE_DIR}/${source} text)
        if(text MATCHES "BSCOMMON_VERSION")
            set(answers_version TRUE)
        endif()
    endforeach()
    if(NOT answers_version)
        message(STATUS "No man page for ${tool}: it does not print BSCOMMON_VERSION for --version")
        continue()
    endif()
    add_custom_command(OUTPUT ${BSCOMMON_MAN_DIR}/${tool}.1
        COMMAND ${PYTHON3_DOCS} ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/make-man-page.py
                --include ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/${tool}.h2m
                --output ${BSCOMMON_MAN_DIR}/${tool}.1 ${BSCOMMON_MAN_SET}
                -- ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${tool}>
        DEPENDS ${tool} ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/${tool}.h2m
                ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/make-man-page.py
        COMMENT "man page of ${tool} (from its --help and docs/man/${tool}.h2m)"
        VERBATIM)
    list(APPEND BSCOMMON_MAN_PAGES ${BSCOMMON_MAN_DIR}/${tool}.1)
endforeach()
add_custom_target(man-pages ALL DEPENDS ${BSCOMMON_MAN_PAGES})
# The tests: each page formats without a warning from man (groff) and has the
# sections it must have; every option and command that a tool's --help (and
# each command's --help) prints is on its page; and every example on a page,
# run against the installed files, ends with status 0 or the one it states.
if(BSCOMMON_TESTS)
    string(REPLACE ";" "," pages "${BSCOMMON_MAN_PAGES}")
    add_test(NAME man_pages
        COMMAND ${CMAKE_COMMAND} -DPAGES=${pages} -P ${CMAKE_CURRENT_SOURCE_DIR}/tests/check_man_pages.cmake)
    string(REPLACE ";" " " emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
    foreach(page IN LISTS BSCOMMON_MAN_PAGES)
        get_filename_component(tool ${page} NAME_WE)
        list(APPEND man_tools ${tool}=$<TARGET_FILE:${tool}>)
    endforeach()
    add_test(NAME man_options
        COMMAND ${PYTHON3_DOCS} ${CMAKE_CURRENT_SOURCE_DIR}/tests/man/check-man-options.py
                --emulator "${emulator}" ${BSCOMMON_MAN_DIR} ${man_tools})
    # The examples run the installed tools: not in a cross build.
    if(NOT CMAKE_CROSSCOMPILING)
        add_test(NAME man_examples
            COMMAND ${PYTHON3_DOCS} ${CMAKE_CURRENT_SOURCE_DIR}/tests/man/run-man-examples.py ${CMAKE_BINARY_DIR})
        set_tests_properties(man_examples PROPERTIES TIMEOUT 300)
    endif()
endif()

# --- changelog.gz ---------------------------------------------------------------
add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md ${CMAKE_CURRENT_BINARY_DIR}/changelog
    COMMAND ${GZIP} -9nf ${CMAKE_CURRENT_BINARY_DIR}/changelog
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md
    VERBATIM)
add_custom_target(changelog ALL DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
