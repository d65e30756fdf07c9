// SPDX-License-Identifier: MIT
#include "tests/support/TestMain.h"

#include <QApplication>

#include <cstdio>
#include <map>
#include <string>

namespace {

struct RegisteredTest {
    TestNeeds needs;
    TestFunction run;
};

std::map<std::string, RegisteredTest>& registeredTests() {
    static std::map<std::string, RegisteredTest> tests;
    return tests;
}

} // namespace

bool registerTest(const char* name, TestNeeds needs, TestFunction run) {
    return registeredTests().emplace(name, RegisteredTest{needs, run}).second;
}

/// Usage: PROGRAM TEST [ARGUMENT…]. Every test is run in a process of its own.
int main(int argc, char** argv) {
    const auto found = registeredTests().find(argc > 1 ? argv[1] : "");
    if (found == registeredTests().end()) {
        std::fputs("The tests:\n", stderr);
        for (const auto& [name, test] : registeredTests())
            std::fprintf(stderr, "    %s\n", name.c_str());
        return 2;
    }
    argv[1] = argv[0];
    ++argv;
    --argc;
    switch (found->second.needs) {
    case TestNeeds::Nothing:
        break;
    case TestNeeds::EventLoop: {
        const QCoreApplication application(argc, argv);
        return found->second.run(argc, argv);
    }
    case TestNeeds::Widgets: {
        const QApplication application(argc, argv);
        return found->second.run(argc, argv);
    }
    }
    return found->second.run(argc, argv);
}
