# SPDX-License-Identifier: Apache-2.0
# Without a display that works, the app says why in one sentence and ends with status 1, instead of
# Qt's abort, and before it copies the sample into the user's data folder.
# Arguments: -DTESSARY=<program> -DWORK=<scratch folder>
file(REMOVE_RECURSE "${WORK}")

function(expect_refusal setting reason)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env --unset=DISPLAY --unset=WAYLAND_DISPLAY
                --unset=QT_QPA_PLATFORM ${setting} "XDG_DATA_HOME=${WORK}" "${TESSARY}"
        RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors TIMEOUT 30)
    if(NOT status EQUAL 1 OR NOT errors STREQUAL
                             "Tessary cannot open its window because ${reason}\n")
        message(FATAL_ERROR "With \"${setting}\", tessary ended with status ${status} and said:\n"
                            "${output}${errors}")
    endif()
endfunction()

expect_refusal("" "no display is available; start it from a desktop session.")
expect_refusal("DISPLAY=:97531" "the display “:97531” could not be opened.")
expect_refusal("QT_QPA_PLATFORM=nowhere" "the Qt platform “nowhere” could not be started.")
if(EXISTS "${WORK}")
    message(FATAL_ERROR "tessary wrote into the user's data folder although it could not start.")
endif()
