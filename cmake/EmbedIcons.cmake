# SPDX-License-Identifier: MIT
# Writes the drawings of the icons into a C++ source at configure time.
#
#   embed_icons(OUTPUT file FROM folder name=drawing… OWN folder name…)
#
# Why not QtSvg: reading eight icons through it costs 1.6 ms of the program's start and 0.9 MB of
# its memory, as much as several screens. A drawing here is a few lines of path data, which
# Icons turns into a QPainterPath when the icon is first shown.

function(_append_icon name file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    file(READ "${file}" svg)
    string(REGEX MATCHALL "<path[^>]*>" elements "${svg}")
    if(NOT elements)
        message(FATAL_ERROR "No path in the drawing ${file}")
    endif()
    set(parts "")
    foreach(element IN LISTS elements)
        string(REGEX MATCH " d=\"([^\"]*)\"" _ "${element}")
        string(REGEX REPLACE "[ \t\r\n]+" " " data "${CMAKE_MATCH_1}")
        set(stroke 0)
        if(element MATCHES " stroke-width=\"([0-9.]+)\"")
            set(stroke "${CMAKE_MATCH_1}")
        endif()
        set(even_odd false)
        if(element MATCHES "fill-rule=\"evenodd\"")
            set(even_odd true)
        endif()
        string(APPEND parts "    {\"${name}\", \"${data}\", ${stroke}, ${even_odd}},\n")
    endforeach()
    set(icon_table "${icon_table}${parts}" PARENT_SCOPE)
endfunction()

function(embed_icons)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "OUTPUT" "FROM;OWN")
    list(POP_FRONT arg_FROM from)
    list(POP_FRONT arg_OWN own)
    set(icon_table "")
    foreach(pair IN LISTS arg_FROM)
        string(REGEX MATCH "^(.*)=(.*)$" _ "${pair}")
        _append_icon("${CMAKE_MATCH_1}" "${from}/${CMAKE_MATCH_2}.svg")
    endforeach()
    foreach(name IN LISTS arg_OWN)
        _append_icon("${name}" "${own}/${name}.svg")
    endforeach()
    file(CONFIGURE OUTPUT "${arg_OUTPUT}" @ONLY CONTENT [=[
// Written by EmbedIcons.cmake.
#include "Platform/Widgets/Look/Icons.h"

namespace platform {

namespace {

constexpr IconPart parts[] = {
@icon_table@};

} // namespace

std::span<const IconPart> iconParts() { return parts; }

} // namespace platform
]=])
endfunction()
