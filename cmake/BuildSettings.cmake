# SPDX-License-Identifier: MIT
# The settings that every target shares. Headers are included by their path from the top of the tree
# ("Platform/Text/Text.h"), so that every include line tells which folder it reaches into.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(build_settings INTERFACE)
target_include_directories(build_settings INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(build_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion
    $<$<BOOL:${TELLWICK_WERROR}>:-Werror>)
target_compile_definitions(build_settings INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(TELLWICK_SANITIZE)
    target_compile_options(build_settings INTERFACE
        -fsanitize=${TELLWICK_SANITIZE} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(build_settings INTERFACE -fsanitize=${TELLWICK_SANITIZE})
endif()

# The sources below the current folder, those for other systems left out.
function(find_sources variable)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "*.cpp" "*.h")
    if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
        list(FILTER sources EXCLUDE REGEX "/(Linux|LlamaServer)/")
    endif()
    set(${variable} ${sources} PARENT_SCOPE)
endfunction()

# The toolkit's headers are read once and not for every file. Only where tests are built: what users get is
# compiled without, which shows that each file includes what it uses.
function(precompile_headers target)
    if(BUILD_TESTING)
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
endfunction()
