# SPDX-License-Identifier: Apache-2.0
# Debian's hardening flags, as dpkg-buildflags gives them for a package built with
# "hardening=+all": fortified libc calls, stack protection, full RELRO and immediate binding.
# The build type keeps its own optimisation and debug flags.
option(TESSARY_HARDENING "Build with Debian's hardening flags from dpkg-buildflags" ON)
if(NOT TESSARY_HARDENING)
    return()
endif()
find_program(DPKG_BUILDFLAGS dpkg-buildflags)
if(NOT DPKG_BUILDFLAGS)
    message(WARNING "dpkg-buildflags (package dpkg-dev) is missing; building without hardening.")
    return()
endif()

function(tessary_buildflags area out)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env "DEB_BUILD_MAINT_OPTIONS=hardening=+all reproducible=-all"
                "DEB_${area}_MAINT_STRIP=-g -O2" "${DPKG_BUILDFLAGS}" --get ${area}
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    set(${out} ${flags} PARENT_SCOPE)
endfunction()

tessary_buildflags(CPPFLAGS cppflags)
tessary_buildflags(CXXFLAGS cxxflags)
tessary_buildflags(LDFLAGS ldflags)
# _FORTIFY_SOURCE needs an optimising build; without one it only warns.
add_compile_options("$<$<NOT:$<CONFIG:Debug>>:${cppflags}>" ${cxxflags})
add_link_options(${ldflags})
string(JOIN " " summary ${cppflags} ${cxxflags} ${ldflags})
message(STATUS "Hardening: ${summary}")
