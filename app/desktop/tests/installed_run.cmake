# SPDX-License-Identifier: Apache-2.0
# Makes the installed tree read-only, as a system install is, and starts the installed app for a
# few seconds with a fresh user data folder. It must still be running then, and must have made the
# user's copy of the sample beside the launcher's resources.
# Arguments: -DPREFIX=<installed tree> -DWORK=<scratch folder>
file(REMOVE_RECURSE "${WORK}")
foreach(file bin/tessary share/tessary/launch.json share/tessary/data-directory.txt
             share/tessary/sample-session/session.json
             share/applications/org.tessary.Tessary.desktop
             share/icons/hicolor/scalable/apps/org.tessary.Tessary.svg)
    if(NOT EXISTS "${PREFIX}/${file}")
        message(FATAL_ERROR "The install lacks ${file}.")
    endif()
endforeach()

execute_process(COMMAND chmod -R a-w "${PREFIX}")
execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env "XDG_DATA_HOME=${WORK}/data" QT_QPA_PLATFORM=offscreen
            timeout 4 "${PREFIX}/bin/tessary"
    RESULT_VARIABLE ran OUTPUT_VARIABLE output ERROR_VARIABLE output)
execute_process(COMMAND chmod -R u+w "${PREFIX}")
if(NOT ran EQUAL 124)
    message(FATAL_ERROR "The installed app ended early (${ran}):\n${output}")
endif()
if(NOT EXISTS "${WORK}/data/tessary/sessions/sample-session/session.json")
    message(FATAL_ERROR "The installed app did not copy the sample into the user's data folder.")
endif()
file(REMOVE_RECURSE "${WORK}")
