# SPDX-License-Identifier: Apache-2.0
# Installs the build tree into a scratch prefix, stripped as the README installs it, for the
# tests that read an install; with -DREMOVE=ON takes it away again.
# Arguments: -DBUILD=<build tree> -DPREFIX=<scratch prefix> [-DREMOVE=ON]
if(EXISTS "${PREFIX}")
    execute_process(COMMAND chmod -R u+w "${PREFIX}") # a test that stopped half-way leaves it read-only
    file(REMOVE_RECURSE "${PREFIX}")
endif()
if(REMOVE)
    return()
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${PREFIX}" --strip
                OUTPUT_QUIET RESULT_VARIABLE installed)
if(NOT installed EQUAL 0)
    message(FATAL_ERROR "cmake --install into ${PREFIX} failed.")
endif()
