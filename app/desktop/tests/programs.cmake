# SPDX-License-Identifier: Apache-2.0
# Every installed program, and every developer tool of the build tree, answers --help (its name
# in a usage text) and --version ("<name> <version>"), with status 0, without a display and
# without touching the user's data. Every program in bin/ has a manual page.
# Arguments: -DPREFIX=<installed tree> -DTOOLS=<a|b|…: programs built but not installed>
#            -DVERSION=<project version> -DWORK=<scratch folder>
file(REMOVE_RECURSE "${WORK}")
file(GLOB commands LIST_DIRECTORIES false "${PREFIX}/bin/*")
file(GLOB programs LIST_DIRECTORIES false "${PREFIX}/bin/*" "${PREFIX}/libexec/tessary/*")
if(NOT programs)
    message(FATAL_ERROR "No program is installed in ${PREFIX}.")
endif()
string(REPLACE "|" ";" tools "${TOOLS}")
set(failures "")
foreach(program IN LISTS programs tools)
    get_filename_component(name "${program}" NAME)
    foreach(option --help --version)
        execute_process(
            COMMAND "${CMAKE_COMMAND}" -E env --unset=DISPLAY --unset=WAYLAND_DISPLAY
                    --unset=QT_QPA_PLATFORM "XDG_DATA_HOME=${WORK}" "${program}" ${option}
            RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors TIMEOUT 30)
        set(answered FALSE)
        if(option STREQUAL "--help" AND output MATCHES "Usage: [^\n]*${name}")
            set(answered TRUE)
        elseif(option STREQUAL "--version" AND output STREQUAL "${name} ${VERSION}\n")
            set(answered TRUE)
        endif()
        if(NOT status EQUAL 0 OR NOT answered)
            string(APPEND failures "\n${name} ${option} (status ${status}):\n${output}${errors}")
        endif()
    endforeach()
endforeach()
foreach(command IN LISTS commands)
    get_filename_component(name "${command}" NAME)
    if(NOT EXISTS "${PREFIX}/share/man/man1/${name}.1.gz")
        string(APPEND failures "\n${name} has no manual page share/man/man1/${name}.1.gz.")
    endif()
endforeach()
if(EXISTS "${WORK}")
    string(APPEND failures "\n--help or --version wrote into the user's data folder.")
endif()
if(failures)
    message(FATAL_ERROR "Not every program answers as it should:${failures}")
endif()
