# SPDX-License-Identifier: Apache-2.0
# tessary_man_page(NAME.SECTION.in): the manual page with @PROJECT_VERSION@ and
# @TESSARY_RELEASE_DATE@ filled in, gzipped as Debian wants it, installed into its section.
function(tessary_man_page source)
    get_filename_component(page "${source}" NAME_WLE)
    string(REGEX MATCH "[1-9]$" section "${page}")
    set(configured "${CMAKE_CURRENT_BINARY_DIR}/${page}")
    configure_file("${source}" "${configured}" @ONLY)
    add_custom_command(OUTPUT "${configured}.gz"
        COMMAND gzip -9nc "${configured}" > "${configured}.gz"
        DEPENDS "${configured}")
    add_custom_target("man_${page}" ALL DEPENDS "${configured}.gz")
    install(FILES "${configured}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}")
endfunction()
