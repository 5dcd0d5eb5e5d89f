# SPDX-License-Identifier: Apache-2.0
# The Node.js that runs the pose worker, fixed at build time so that another `node` earlier in a
# user's PATH (nvm and the like) never replaces it. A build for the system (prefix /usr) takes the
# system's; any other build the one on PATH, with which the set-up ran `npm ci`.
set(node_doc "Node.js (18 or later) that runs dravik-batch's pose worker")
if(NOT DEFINED TESSARY_NODE AND CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(TESSARY_NODE /usr/bin/node CACHE FILEPATH "${node_doc}")
endif()
find_program(TESSARY_NODE node DOC "${node_doc}")
set(node "${TESSARY_NODE}")
if(NOT TESSARY_NODE)
    set(node /usr/bin/node)
    message(WARNING "Node.js was not found; dravik-batch will look for it at ${node}.")
else()
    execute_process(COMMAND "${TESSARY_NODE}" --version OUTPUT_VARIABLE node_version
                    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(NOT node_version MATCHES "^v([0-9]+)\\." OR CMAKE_MATCH_1 LESS 18)
        message(WARNING "${TESSARY_NODE} is Node.js \"${node_version}\"; the pose worker needs 18 "
                        "or later (set TESSARY_NODE).")
    endif()
endif()
if(NOT node STREQUAL "/usr/bin/node")
    message(STATUS "dravik-batch runs Node.js from ${node}; a Debian package made from this build "
                   "needs -DTESSARY_NODE=/usr/bin/node to run on other machines.")
endif()
set_property(SOURCE src/node_runtime.cpp APPEND PROPERTY COMPILE_DEFINITIONS TESSARY_NODE="${node}")
