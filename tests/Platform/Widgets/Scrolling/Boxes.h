// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"
#include "Platform/Widgets/Scrolling/LazyColumn.h"

#include <QScroller>
#include <QTest>
#include <QVariantAnimation>
#include <QWheelEvent>

#include <algorithm>
#include <functional>

namespace tests {

/// A widget of a given height that can take the focus.
class Box : public QWidget {
public:
    explicit Box(int height, QWidget* parent = nullptr)
        : QWidget(parent)
        , m_height(height) {
        setFocusPolicy(Qt::StrongFocus);
    }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int) const override { return m_height; }
    QSize sizeHint() const override { return {100, m_height}; }
    void setBoxHeight(int height) {
        m_height = height;
        updateGeometry();
    }
    bool isInUse = false;
    bool isCurrent = false;
    int updates = 0;

private:
    int m_height;
};

/// Rows that are boxes.
class Boxes : public platform::LazyRows {
public:
    struct Item {
        QUuid key = QUuid::createUuid();
        int height = 50;
    };
    QList<Item> items;
    int made = 0;
    mutable qsizetype keysAsked = 0;
    mutable qsizetype guessesAsked = 0;
    int guess = 50;
    std::function<QWidget*(QWidget*)> makeOther; // rows that are no boxes

    explicit Boxes(int count) {
        for (int i = 0; i < count; ++i)
            items.append(Item{});
    }
    qsizetype count() const override { return items.size(); }
    QUuid key(qsizetype row) const override {
        ++keysAsked;
        return items[row].key;
    }
    QWidget* make(qsizetype row, QWidget* parent) override {
        ++made;
        return makeOther ? makeOther(parent) : new Box(items[row].height, parent);
    }
    void update(qsizetype row, QWidget* widget) override {
        if (makeOther)
            return;
        auto* box = static_cast<Box*>(widget);
        ++box->updates;
        box->setBoxHeight(items[row].height);
    }
    void setCurrent(QWidget* widget, bool isCurrent) override {
        if (auto* box = dynamic_cast<Box*>(widget)) // some tests make rows of their own
            box->isCurrent = isCurrent;
    }
    int estimatedHeight(qsizetype, int) const override {
        ++guessesAsked;
        return guess;
    }
    QString accessibleName(qsizetype row) const override {
        return QStringLiteral("Row %1").arg(row);
    }
    bool isInUse(const QWidget* widget) const override {
        const auto* box = dynamic_cast<const Box*>(widget);
        return box && box->isInUse;
    }
};

/// A theme with a line of 20 pixels, whatever fonts the machine has.
class SteadyTheme : public platform::Theme {
public:
    explicit SteadyTheme(int pixels = 13) {
        QFont font;
        font.setPixelSize(pixels);
        setBodyFont(font);
    }
};

/// An area in a window that is shown and active.
struct AreaWindow {
    SteadyTheme theme;
    QWidget window;
    platform::AbstractScrollArea* area = nullptr;

    /// Takes ownership.
    void show(platform::AbstractScrollArea* shown, QSize size = {500, 400}) {
        area = shown;
        area->setParent(&window);
        area->setGeometry(QRect({0, 0}, size));
        window.resize(size + QSize(0, 50));
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("no active window");
    }

    /// Returns whether the area has used it.
    bool wheel(QPoint angle, QPoint pixels = {}, Qt::ScrollPhase phase = Qt::NoScrollPhase,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier, quint64 time = 0) const {
        QWheelEvent event({100, 20}, area->mapToGlobal(QPointF(100, 20)), pixels, angle,
                          Qt::NoButton, modifiers, phase, false);
        event.setTimestamp(time);
        QCoreApplication::sendEvent(area, &event);
        return event.isAccepted();
    }
    void notches(qreal count) const { wheel({0, static_cast<int>(-120 * count)}); }

    /// Waits until nothing moves by itself.
    bool settle() const {
        return QTest::qWaitFor([this] {
            const auto animations = area->findChildren<QVariantAnimation*>();
            return QScroller::scroller(area)->state() == QScroller::Inactive &&
                   std::ranges::all_of(
                       animations,
                       [](const auto* animation) {
                           return animation->state() == QVariantAnimation::Stopped;
                       });
        });
    }
};

} // namespace tests
