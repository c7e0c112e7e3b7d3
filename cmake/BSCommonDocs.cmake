# Documentation built with the library:
#   docs          the API reference (HTML) from the exported headers, with
#                 Debian's doxygen; any warning (an undocumented function,
#                 record, field or enumerator) fails the build
#   man pages     of the tools, with Debian's help2man from each tool's --help
#                 and --version plus docs/man/<tool>.h2m
#   changelog.gz and copyright for /usr/share/doc/<package> of each .deb
# All of them are part of the default build; cmake/BSCommonInstall.cmake
# installs them.
option(BSCOMMON_DOCS "Build the API reference and the man pages" ON)
if(NOT BSCOMMON_DOCS)
    return()
endif()
find_program(DOXYGEN doxygen REQUIRED)
find_program(HELP2MAN help2man REQUIRED)
find_program(GZIP gzip REQUIRED)

# --- API reference ----------------------------------------------------------------
set(BSCOMMON_DOCS_DIR ${CMAKE_CURRENT_BINARY_DIR}/docs)
configure_file(${CMAKE_CURRENT_SOURCE_DIR}/docs/api/Doxyfile.in ${BSCOMMON_DOCS_DIR}/Doxyfile @ONLY)
file(GLOB BSCOMMON_DOC_HEADERS CONFIGURE_DEPENDS ${BSCOMMON_DIR}/include/*.h)
add_custom_command(OUTPUT ${BSCOMMON_DOCS_DIR}/html/index.html
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${BSCOMMON_DOCS_DIR}/html
    COMMAND ${DOXYGEN} ${BSCOMMON_DOCS_DIR}/Doxyfile
    DEPENDS ${BSCOMMON_DOC_HEADERS} ${BSCOMMON_DOCS_DIR}/Doxyfile ${CMAKE_CURRENT_SOURCE_DIR}/docs/api/mainpage.md
    COMMENT "API reference (doxygen, warnings are errors)"
    VERBATIM)
add_custom_target(docs ALL DEPENDS ${BSCOMMON_DOCS_DIR}/html/index.html)

# --- man pages ------------------------------------------------------------------
# A page for each tool that this build makes and that answers --version.
set(BSCOMMON_MAN_DIR ${CMAKE_CURRENT_BINARY_DIR}/man)
set(BSCOMMON_MAN_PAGES "")
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
    add_custom_command(OUTPUT ${BSCOMMON_MAN_DIR}/${tool}.1 ${BSCOMMON_MAN_DIR}/${tool}.1.gz
        COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/help2man.sh $<TARGET_FILE:${tool}>
                ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/${tool}.h2m ${BSCOMMON_MAN_DIR}/${tool}.1
                ${CMAKE_CROSSCOMPILING_EMULATOR}
        COMMAND ${GZIP} -9nf -k ${BSCOMMON_MAN_DIR}/${tool}.1
        DEPENDS ${tool} ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/${tool}.h2m ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/help2man.sh
        COMMENT "man page of ${tool} (help2man)"
        VERBATIM)
    list(APPEND BSCOMMON_MAN_PAGES ${BSCOMMON_MAN_DIR}/${tool}.1)
endforeach()
add_custom_target(man-pages ALL DEPENDS ${BSCOMMON_MAN_PAGES})
# The test: each page formats without a warning from man (groff).
if(BSCOMMON_TESTS)
    string(REPLACE ";" "," pages "${BSCOMMON_MAN_PAGES}")
    add_test(NAME man_pages
        COMMAND ${CMAKE_COMMAND} -DPAGES=${pages} -P ${CMAKE_CURRENT_SOURCE_DIR}/tests/check_man_pages.cmake)
endif()

# --- changelog.gz ---------------------------------------------------------------
add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md ${CMAKE_CURRENT_BINARY_DIR}/changelog
    COMMAND ${GZIP} -9nf ${CMAKE_CURRENT_BINARY_DIR}/changelog
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md
    VERBATIM)
add_custom_target(changelog ALL DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
