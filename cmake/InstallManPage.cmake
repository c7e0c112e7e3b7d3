# Installs one man page, gzipped, from an install(CODE) of
# cmake/BSCommonInstall.cmake. The page names installed files under the
# build's CMAKE_INSTALL_PREFIX; installed under another prefix (cmake --install
# --prefix, or a package's /usr) it names them there.
#   BSCOMMON_MAN_PAGE           the page in the build tree
#   BSCOMMON_MAN_BUILD_PREFIX   the build's CMAKE_INSTALL_PREFIX
#   BSCOMMON_MAN_PATHS          NAME=path-under-the-prefix of each such file
#   BSCOMMON_MAN_DESTINATION    the directory under the prefix (share/man/man1)
#   BSCOMMON_GZIP               gzip
# Run at install time, where CMAKE_INSTALL_PREFIX is the prefix installed to.
file(READ "${BSCOMMON_MAN_PAGE}" text)
# The page's text escapes hyphens as troff does.
foreach(path IN LISTS BSCOMMON_MAN_PATHS)
    string(REGEX REPLACE "^[A-Z_]+=" "" path "${path}")
    string(REPLACE "-" "\\-" from "${BSCOMMON_MAN_BUILD_PREFIX}/${path}")
    string(REPLACE "-" "\\-" to "${CMAKE_INSTALL_PREFIX}/${path}")
    string(REPLACE "${from}" "${to}" text "${text}")
endforeach()
get_filename_component(name "${BSCOMMON_MAN_PAGE}" NAME)
set(directory "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${BSCOMMON_MAN_DESTINATION}")
set(staged "${BSCOMMON_MAN_PAGE}.installed")
file(WRITE "${staged}" "${text}")
file(MAKE_DIRECTORY "${directory}")
message(STATUS "Installing: ${directory}/${name}.gz")
execute_process(COMMAND "${BSCOMMON_GZIP}" -9n -c "${staged}" OUTPUT_FILE "${directory}/${name}.gz"
    RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "gzip ${staged} failed")
endif()
list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${directory}/${name}.gz")
