// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Text/TextView.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QTest>

namespace tests {

/// A window with one view, and a field beside it that can take the focus.
struct TextWindow {
    platform::Theme theme;
    QWidget window;
    platform::TextView view{theme, platform::TextView::Background::Window, &window};
    QLineEdit field{&window};
    QStringList opened; // links

    explicit TextWindow(QStringView text = {}) {
        view.setMarkdown(platform::TextSnapshot(text));
        view.onLinkActivated([this](const QUrl& url) { opened.append(url.toString()); });
        window.resize(500, 500);
        view.setGeometry(10, 10, 400, 300);
        field.setGeometry(10, 350, 200, 30);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("no active window");
    }

    QPoint at(qsizetype character) const {
        return view.flow().characterRect(character).center().toPoint();
    }
    QPoint before(qsizetype character) const {
        const QRectF rect = view.flow().characterRect(character);
        return {static_cast<int>(rect.left()) + 1, static_cast<int>(rect.center().y())};
    }
    void click(qsizetype character, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(&view, Qt::LeftButton, modifiers, before(character));
    }
    void drag(qsizetype from, qsizetype to) {
        QTest::mousePress(&view, Qt::LeftButton, {}, before(from));
        move(before((from + to) / 2));
        move(before(to));
        QTest::mouseRelease(&view, Qt::LeftButton, {}, before(to));
    }
    void move(QPoint point, Qt::MouseButtons buttons = Qt::LeftButton) {
        QMouseEvent event(QEvent::MouseMove, point, view.mapToGlobal(point), Qt::NoButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &event);
    }
};

} // namespace tests
