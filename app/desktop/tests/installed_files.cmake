# SPDX-License-Identifier: Apache-2.0
# The launcher and the AppStream metadata as installed must pass the checks desktops and software
# centres apply: desktop-file-validate with neither error nor warning, and appstreamcli validate
# (offline), which fails on both.
# Arguments: -DPREFIX=<installed tree>
find_program(DESKTOP_FILE_VALIDATE desktop-file-validate)
find_program(APPSTREAMCLI appstreamcli)
if(NOT DESKTOP_FILE_VALIDATE OR NOT APPSTREAMCLI)
    message("Skipped: desktop-file-validate or appstreamcli is not installed (packages "
            "desktop-file-utils and appstream).")
    return()
endif()
set(launcher "${PREFIX}/share/applications/org.tessary.Tessary.desktop")
set(metainfo "${PREFIX}/share/metainfo/org.tessary.Tessary.metainfo.xml")
foreach(file IN ITEMS "${launcher}" "${metainfo}")
    if(NOT EXISTS "${file}")
        message(FATAL_ERROR "The install lacks ${file}.")
    endif()
endforeach()
execute_process(COMMAND "${DESKTOP_FILE_VALIDATE}" "${launcher}" RESULT_VARIABLE status
                OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0 OR output MATCHES "error:|warning:")
    message(FATAL_ERROR "The launcher is not valid:\n${output}")
endif()
execute_process(COMMAND "${APPSTREAMCLI}" validate --no-net --explain "${metainfo}"
                RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "The AppStream metadata is not valid:\n${output}")
endif()
