// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/ScrollArea.h"

#include <QEvent>

#include <algorithm>

namespace platform {

ScrollArea::ScrollArea(const Theme& theme, QWidget* parent, Qt::Orientation orientation)
    : AbstractScrollArea(theme, parent, orientation) {
    if (!isVertical())
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ScrollArea::setContent(QWidget* content) {
    delete m_content;
    m_content = content;
    if (content) {
        content->setParent(this);
        content->lower(); // beneath the bar
        content->show();
    }
    updateGeometry();
    adoptOffset(0);
    layOut();
}

int ScrollArea::heightForWidth(int width) const {
    if (!m_content)
        return 0;
    return m_content->hasHeightForWidth() ? m_content->heightForWidth(width)
                                          : m_content->sizeHint().height();
}

int ScrollArea::contentLength() const {
    return isVertical() ? heightForWidth(width()) : sizeHint().width();
}

void ScrollArea::layOut() {
    adoptOffset(offset());
    if (m_content) {
        const int whole = contentLength();
        QRect place;
        if (isVertical())
            place = {0, -offset(), width(), std::max(whole, height())};
        else
            place = {whole > width() ? -offset() : (width() - whole) / 2, 0, whole, height()};
        m_content->setGeometry(mirrored(place));
    }
    // Only what scrolls is a stop for the keyboard.
    if (isVertical())
        setFocusPolicy(maximum() > 0 ? Qt::TabFocus : Qt::NoFocus);
    updateBar();
}

bool ScrollArea::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return AbstractScrollArea::event(event);
}

} // namespace platform
