# SPDX-License-Identifier: MIT
# The versions, newest first, from CHANGELOG.md: a version that the project has and the changelog lacks, or the other
# way round, stops here. Sets `newest_date`, and `releases` as the software centre's description has them.
set(changelog "${PROJECT_SOURCE_DIR}/CHANGELOG.md")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${changelog}")
file(STRINGS "${changelog}" headings REGEX "^## \\[[0-9]")
set(releases "")
foreach(heading IN LISTS headings)
    if(NOT heading MATCHES "^## \\[([0-9]+\\.[0-9]+\\.[0-9]+)\\] - ([0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9])$")
        message(FATAL_ERROR "CHANGELOG.md: \"${heading}\" is not \"## [VERSION] - DATE\"")
    endif()
    if(releases STREQUAL "")
        set(newest_version "${CMAKE_MATCH_1}")
        set(newest_date "${CMAKE_MATCH_2}")
    endif()
    string(APPEND releases "    <release version=\"${CMAKE_MATCH_1}\" date=\"${CMAKE_MATCH_2}\" />\n")
endforeach()
if(NOT newest_version STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR
        "The newest version in CHANGELOG.md is ${newest_version}, that of CMakeLists.txt is ${PROJECT_VERSION}")
endif()
configure_file(tellwick.metainfo.xml.in tellwick.metainfo.xml @ONLY)
