# SPDX-License-Identifier: MIT
# The build settings every target shares, and one function for each kind of target.
#
#   add_layer_library(NAME SOURCES … [PUBLIC libs…] [PRIVATE libs…])   one folder, one static library
#   add_unit_test(NAME [SOURCES …] [LIBRARIES …] [PROPERTIES …])       one test program, run by CTest
#
# Headers are included by their path from the top of the tree ("Platform/Text/Text.h"), so that every
# include line tells which layer it reaches into.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(build_settings INTERFACE)
target_compile_options(build_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion
    $<$<BOOL:${TELLWICK_WERROR}>:-Werror>)
target_compile_definitions(build_settings INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(TELLWICK_SANITIZE)
    target_compile_options(build_settings INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(build_settings INTERFACE -fsanitize=address,undefined)
endif()

function(add_layer_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;PUBLIC;PRIVATE")
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE build_settings ${arg_PRIVATE})
endfunction()

# The watchdog of CTest ends a test that hangs; each asynchronous test has a shorter one of its own.
function(add_unit_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;PROPERTIES")
    if(NOT arg_SOURCES)
        set(arg_SOURCES ${name}.cpp)
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name} PRIVATE build_settings ${arg_LIBRARIES} Qt6::Test)
    # The QTRY macros of later Qt releases convert milliseconds to int inside the test's own code.
    if(Qt6_VERSION VERSION_GREATER_EQUAL 6.5)
        set_property(SOURCE ${arg_SOURCES} APPEND PROPERTY COMPILE_OPTIONS -Wno-conversion)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120 ${arg_PROPERTIES})
    set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen" "QT_LOGGING_RULES=qt.qpa.*=false")
endfunction()
