// SPDX-License-Identifier: MIT
#pragma once

#include <QTest>

/// What a test needs of the toolkit before it runs.
enum class TestNeeds { Nothing, EventLoop, Widgets };

using TestFunction = int (*)(int argc, char** argv);

/// Makes a test known to the test program by its name; `run` gets the arguments behind the name.
bool registerTest(const char* name, TestNeeds needs, TestFunction run);

/// Registers a test class, which CTest then runs in a process of its own.
#define TELLWICK_TEST(Class, needs)                                                                \
    static const bool Class##IsRegistered =                                                        \
        registerTest(#Class, TestNeeds::needs, [](int argc, char** argv) {                         \
            Class test;                                                                            \
            return QTest::qExec(&test, argc, argv);                                                \
        });

/// The same for a test that decides itself what it does with its arguments: `run` is called with
/// them.
#define TELLWICK_TEST_FUNCTION(Class, needs, run)                                                  \
    static const bool Class##IsRegistered = registerTest(#Class, TestNeeds::needs, run);
