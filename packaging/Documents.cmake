# SPDX-License-Identifier: MIT
# What is made while building besides the programs: the manual pages, and for a package (scripts/make-package) the icon
# in each usual size and the changelogs.
option(TELLWICK_PACKAGE "Make what only a Debian package holds, too" OFF)
# Below those of a distribution, whose own package would take the place of this one.
set(debian_revision 0tellwick1)
set(made "")
find_program(GZIP gzip REQUIRED)

# Compressed without the name and time of the file, so that the same text gives the same file.
function(add_compressed source output)
    add_custom_command(OUTPUT "${output}" DEPENDS "${source}" VERBATIM
        COMMAND "${GZIP}" -9nc "${source}" > "${output}")
    set(made "${made};${output}" PARENT_SCOPE)
endfunction()

function(add_manual_page program)
    configure_file(${program}.1.in ${program}.1 @ONLY)
    add_compressed("${CMAKE_CURRENT_BINARY_DIR}/${program}.1" ${program}.1.gz)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${program}.1.gz"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT program)
    set(made "${made}" PARENT_SCOPE)
endfunction()

set(see_also "")
if(TARGET tellwick-setup)
    set(see_also "\n.SH SEE ALSO\n.BR tellwick-setup (1)")
    add_manual_page(tellwick-setup)
endif()
add_manual_page(tellwick)

if(TELLWICK_PACKAGE)
    find_program(RSVG_CONVERT rsvg-convert REQUIRED)
    foreach(size 16 22 24 32 48 64 128 256 512)
        add_custom_command(OUTPUT icons/${size}.png DEPENDS tellwick.svg VERBATIM
            COMMAND "${CMAKE_COMMAND}" -E make_directory icons
            COMMAND "${RSVG_CONVERT}" --width=${size} --height=${size} --output=icons/${size}.png
                "${CMAKE_CURRENT_SOURCE_DIR}/tellwick.svg")
        list(APPEND made icons/${size}.png)
        install(FILES "${CMAKE_CURRENT_BINARY_DIR}/icons/${size}.png" RENAME tellwick.png COMPONENT program
            DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps")
    endforeach()

    add_custom_command(OUTPUT changelog.Debian DEPENDS debian-changelog "${changelog}" VERBATIM
        COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/debian-changelog" "${changelog}" ${debian_revision} > changelog.Debian)
    add_compressed("${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian" changelog.Debian.gz)
    add_compressed("${changelog}" changelog.gz)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz" "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/tellwick" COMPONENT program)
endif()
add_custom_target(documents ALL DEPENDS ${made})
