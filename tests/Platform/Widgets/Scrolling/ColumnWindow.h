// SPDX-License-Identifier: MIT
#pragma once

#include "tests/Platform/Widgets/Scrolling/Boxes.h"

#include <QLineEdit>

#include <memory>

namespace tests {

/// A column of boxes in a window, with a field below it.
struct ColumnWindow : AreaWindow {
    Boxes boxes;
    platform::LazyColumn column;
    QLineEdit field{&window};

    explicit ColumnWindow(int count, QSize size = {500, 400})
        : boxes(count)
        , column(theme, boxes, &window) {
        field.setGeometry(0, size.height(), 100, 40);
        show(&column, size);
    }
    /// Over rows of many heights, all of them guessed wrong.
    static std::unique_ptr<ColumnWindow> uneven(int guess) {
        auto made = std::make_unique<ColumnWindow>(0);
        made->boxes.guess = guess;
        for (int i = 0; i < 1000; ++i)
            made->boxes.items.append(Boxes::Item{.height = 20 + (i * 53) % 150});
        made->column.reload();
        return made;
    }
    Box* box(qsizetype row) const { return static_cast<Box*>(column.widgetOf(row)); }
    int top(qsizetype row) const { return box(row) ? box(row)->y() : -100000; }
    /// How far the last row's end lies above the lower edge.
    int endGap() const {
        const QWidget* last = column.widgetOf(boxes.count() - 1);
        return last ? column.height() - last->geometry().bottom() - 1 : -100000;
    }
    qsizetype built() const {
        qsizetype count = 0;
        for (qsizetype i = 0; i < boxes.count(); ++i)
            count += box(i) ? 1 : 0;
        return count;
    }
    qsizetype boxesAlive() const {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const auto children = column.children();
        return std::count_if(children.begin(), children.end(),
                             [](QObject* child) { return dynamic_cast<Box*>(child); });
    }
    /// The first row whose top is visible.
    qsizetype firstVisible() const {
        for (qsizetype i = 0; i < boxes.count(); ++i)
            if (top(i) >= 0)
                return i;
        return -1;
    }
};

} // namespace tests
