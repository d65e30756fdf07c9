// SPDX-License-Identifier: MIT
// A window of another program, over everything: says "active" once it has the focus. Ends with its
// input.
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QWindow>

#include <unistd.h>

#include <cstdio>

int main(int argc, char* argv[]) {
    const QGuiApplication application(argc, argv);
    QWindow window;
    window.setGeometry(0, 0, 400, 300);
    QObject::connect(&window, &QWindow::activeChanged, &window, [&window] {
        if (window.isActive()) {
            std::puts("active");
            std::fflush(stdout);
        }
    });
    window.show();
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QGuiApplication::exec();
}
