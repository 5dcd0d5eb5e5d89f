# SPDX-License-Identifier: Apache-2.0
# Makes the Debian package of the build tree in a scratch folder, as `cpack -G DEB` does, and
# checks it with lintian at the pedantic level: any error or warning fails. The infos and
# pedantic tags that stay are explained in docs/decisions.md.
# Arguments: -DCPACK=<cpack> -DBUILD=<build tree> -DWORK=<scratch folder>
find_program(LINTIAN lintian)
if(NOT LINTIAN)
    message("Skipped: lintian is not installed, so the package is not checked.")
    return()
endif()
file(REMOVE_RECURSE "${WORK}")
execute_process(COMMAND "${CPACK}" -G DEB --config "${BUILD}/CPackConfig.cmake" -B "${WORK}"
                RESULT_VARIABLE packed OUTPUT_VARIABLE output ERROR_VARIABLE output)
file(GLOB package "${WORK}/*.deb")
if(NOT packed EQUAL 0 OR NOT package)
    message(FATAL_ERROR "cpack -G DEB failed:\n${output}")
endif()
execute_process(
    COMMAND "${LINTIAN}" --pedantic --display-info --fail-on error,warning --tag-display-limit 0
            ${package}
    RESULT_VARIABLE clean OUTPUT_VARIABLE report ERROR_VARIABLE report)
message("${report}")
if(NOT clean EQUAL 0)
    message(FATAL_ERROR "lintian finds errors or warnings in ${package}.")
endif()
file(REMOVE_RECURSE "${WORK}")
