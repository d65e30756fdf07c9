// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/ScrollView.h"

#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QStyle>
#include <QWheelEvent>

#include <algorithm>

namespace platform {

namespace {

constexpr int wheelStep = 120;   // eighths of a degree of one notch
constexpr int pixelsANotch = 60; // a little over three lines

} // namespace

ScrollView::ScrollView(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_bar(new OverlayScrollBar(theme, this)) {
    connect(m_bar, &QAbstractSlider::valueChanged, this, &ScrollView::setOffset);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* before, QWidget* now) {
        // From nowhere: the window has become active again, and nobody asked for another view.
        if (before != nullptr && now != nullptr && m_content != nullptr &&
            m_content->isAncestorOf(now))
            ensureVisible(now);
    });
}

void ScrollView::setContent(QWidget* content) {
    delete m_content;
    m_content = content;
    m_offset = 0;
    if (content != nullptr) {
        content->setParent(this);
        content->lower();
        content->show();
    }
    updateGeometry();
    layOut();
}

int ScrollView::contentHeight(int width) const {
    if (m_content == nullptr)
        return 0;
    if (m_content->hasHeightForWidth())
        return m_content->heightForWidth(width);
    if (auto* layout = m_content->layout(); layout != nullptr && layout->hasHeightForWidth())
        return layout->totalHeightForWidth(width);
    return m_content->sizeHint().height();
}

int ScrollView::heightForWidth(int width) const {
    return contentHeight(width);
}

QSize ScrollView::sizeHint() const {
    return m_content == nullptr ? QSize(0, 0) : m_content->sizeHint();
}

int ScrollView::maximum() const {
    return m_content == nullptr ? 0 : std::max(0, m_content->height() - height());
}

void ScrollView::setOffset(int offset) {
    offset = std::clamp(offset, 0, maximum());
    if (offset != m_offset) {
        m_offset = offset;
        m_content->move(0, -offset);
        m_bar->setValue(offset);
        m_bar->flash();
    }
}

void ScrollView::ensureVisible(const QWidget* widget) {
    const auto top = widget->mapTo(m_content, QPoint(0, 0)).y();
    constexpr int air = 8; // so that it does not stick to the edge
    const auto least = top + widget->height() + air - height();
    setOffset(std::min(std::max(m_offset, least), std::max(0, top - air)));
}

void ScrollView::layOut() {
    if (m_content == nullptr) {
        m_bar->hide();
        return;
    }
    const auto high = std::max(contentHeight(width()), height());
    m_offset = std::clamp(m_offset, 0, high - height());
    m_content->setGeometry(0, -m_offset, width(), high);
    const auto breadth = m_bar->sizeHint().width();
    const QRect edge(width() - breadth, 0, breadth, height());
    m_bar->setGeometry(QStyle::visualRect(layoutDirection(), rect(), edge));
    m_bar->setRange(0, high - height());
    m_bar->setPageStep(height());
    m_bar->setValue(m_offset);
    m_bar->setVisible(high > height());
    m_bar->raise();
    // Only what scrolls is a stop for the keyboard.
    setFocusPolicy(high > height() ? Qt::TabFocus : Qt::NoFocus);
}

bool ScrollView::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        layOut();
    }
    return QWidget::event(event);
}

void ScrollView::resizeEvent(QResizeEvent* /*event*/) {
    layOut();
}

void ScrollView::wheelEvent(QWheelEvent* event) {
    if (maximum() == 0) {
        event->ignore();
        return;
    }
    auto pixels = event->pixelDelta().y();
    if (event->pixelDelta().isNull()) {
        m_wheelRest += event->angleDelta().y() * pixelsANotch;
        pixels = m_wheelRest / wheelStep;
        m_wheelRest %= wheelStep;
    }
    setOffset(m_offset - pixels);
    event->accept();
}

void ScrollView::keyPressEvent(QKeyEvent* event) {
    const auto line = qRound(m_theme.scaled(40));
    const auto page = std::max(line, height() - line);
    if (maximum() == 0 || (event->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) {
        event->ignore();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Up:
        setOffset(m_offset - line);
        break;
    case Qt::Key_Down:
        setOffset(m_offset + line);
        break;
    case Qt::Key_PageUp:
        setOffset(m_offset - page);
        break;
    case Qt::Key_PageDown:
    case Qt::Key_Space:
        setOffset(m_offset + page);
        break;
    case Qt::Key_Home:
        setOffset(0);
        break;
    case Qt::Key_End:
        setOffset(maximum());
        break;
    default:
        event->ignore();
    }
}

} // namespace platform
