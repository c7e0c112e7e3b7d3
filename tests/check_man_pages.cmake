# Formats each man page with `man --warnings -l` and fails on any warning, or
# on a page that lacks a section it must have.
#   cmake -DPAGES=a.1,b.1 -P check_man_pages.cmake
find_program(MAN man REQUIRED)
string(REPLACE "," ";" PAGES "${PAGES}")
if(NOT PAGES)
    message(FATAL_ERROR "no man pages were made")
endif()
foreach(page IN LISTS PAGES)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env MANWIDTH=80 LC_ALL=C.UTF-8 ${MAN} --warnings -l ${page}
        OUTPUT_VARIABLE text ERROR_VARIABLE warnings RESULT_VARIABLE status)
    if(NOT status EQUAL 0 OR NOT warnings STREQUAL "")
        message(FATAL_ERROR "${page}: man exited ${status}:\n${warnings}")
    endif()
    foreach(section NAME SYNOPSIS DESCRIPTION "EXIT STATUS" "SEE ALSO")
        if(NOT text MATCHES "\n${section}\n")
            message(FATAL_ERROR "${page}: no ${section} section in\n${text}")
        endif()
    endforeach()
    # Only these sections: a line of an include file that help2man takes for a
    # section header ("[...]" at the start of a line) would add another.
    string(REGEX MATCHALL "\n[A-Z][^a-z\n]*\n" headings "${text}")
    foreach(heading IN LISTS headings)
        string(STRIP "${heading}" heading)
        if(NOT heading MATCHES "^(NAME|SYNOPSIS|DESCRIPTION|OPTIONS|EXIT STATUS|ENVIRONMENT|EXAMPLES|SEE ALSO)$")
            message(FATAL_ERROR "${page}: unexpected section \"${heading}\" in\n${text}")
        endif()
    endforeach()
    message(STATUS "${page}: no warnings")
endforeach()
