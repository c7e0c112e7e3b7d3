# Formats each man page with `man --warnings -l` and fails on any warning, on
# a page that lacks a section it must have, or on a section that is there
# twice (such as two EXIT STATUS lists) or is not one of the known ones.
#   cmake -DPAGES=a.1,b.1 -P check_man_pages.cmake
cmake_policy(SET CMP0057 NEW) # if(... IN_LIST ...)
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
    foreach(section NAME SYNOPSIS DESCRIPTION OPTIONS "EXIT STATUS" EXAMPLES "SEE ALSO")
        if(NOT text MATCHES "\n${section}\n")
            message(FATAL_ERROR "${page}: no ${section} section in\n${text}")
        endif()
    endforeach()
    # Only these sections, each once.
    string(REGEX MATCHALL "\n[A-Z][^a-z\n]*\n" headings "${text}")
    set(seen "")
    foreach(heading IN LISTS headings)
        string(STRIP "${heading}" heading)
        if(NOT heading MATCHES
           "^(NAME|SYNOPSIS|DESCRIPTION|OPTIONS|COMMANDS|EXIT STATUS|ENVIRONMENT|FILES|EXAMPLES|DIAGNOSTICS|SEE ALSO)$")
            message(FATAL_ERROR "${page}: unexpected section \"${heading}\" in\n${text}")
        endif()
        if(heading IN_LIST seen)
            message(FATAL_ERROR "${page}: section \"${heading}\" twice in\n${text}")
        endif()
        list(APPEND seen "${heading}")
    endforeach()
    message(STATUS "${page}: no warnings")
endforeach()
