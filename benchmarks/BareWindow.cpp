// SPDX-License-Identifier: MIT
// The floor that the program is measured against: an empty window of the same size.
#include <QApplication>
#include <QWidget>

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QWidget window;
    window.resize(640, 800);
    window.show();
    return QApplication::exec();
}
