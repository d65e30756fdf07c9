// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/Sheet.h"

#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Scrolling/ScrollView.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace platform {

namespace {

using namespace Qt::StringLiterals;

constexpr int airAtSides = 16;
constexpr int airAbove = 24;
constexpr qreal closePoints = 14;

} // namespace

Sheet::Sheet(const Theme& theme, const QString& title, QWidget* content, int width)
    : OverlaySurface(theme, title)
    , m_close(new Button(theme, Button::Look::Disc, u"Close"_s, u"xmark.circle.fill"_s, this))
    , m_scroll(new ScrollView(theme, this))
    , m_width(width) {
    m_close->setSymbolPoints(closePoints);
    m_close->setSymbolOpacity(0.75);
    m_close->setAction([this] { dismiss(); });
    m_scroll->setContent(content);
    auto* layout = new QVBoxLayout(this);
    const auto margins = contentsMargins();
    setContentsMargins(0, 0, 0, 0);
    layout->setContentsMargins(margins);
    layout->addWidget(m_scroll);
    m_close->raise();
}

QRect Sheet::place(const QRect& area) {
    const auto width = std::min(m_width, area.width() - 2 * airAtSides);
    const auto height = std::min(m_scroll->heightForWidth(width), area.height() - 2 * airAbove);
    QRect body(0, 0, width, height);
    body.moveCenter(area.center());
    return body;
}

void Sheet::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        if (!m_scroll->hasFocus()) // it has had the key already
            QCoreApplication::sendEvent(m_scroll, event);
        event->accept();
        break;
    default:
        OverlaySurface::keyPressEvent(event);
    }
}

void Sheet::resizeEvent(QResizeEvent* /*event*/) {
    const auto side = m_close->sizeHint();
    const auto body = bodyRect();
    const QRect corner(QPoint(body.right() - 9 - side.width(), body.top() + 9), side);
    m_close->setGeometry(QStyle::visualRect(layoutDirection(), body, corner));
}

bool Sheet::event(QEvent* event) {
    const bool handled = OverlaySurface::event(event);
    if (event->type() == QEvent::LayoutRequest && parentWidget() != nullptr)
        setBodyGeometry(place(parentWidget()->rect()));
    return handled;
}

} // namespace platform
