// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Scrolling/AbstractScrollArea.h"

namespace platform {

/// An area over one widget. In a vertical area the widget has the area's width; in a horizontal one
/// it is as wide as it likes, and stands in the middle where it fits.
class ScrollArea final : public AbstractScrollArea {
    Q_OBJECT

public:
    /// `theme` outlives the area.
    explicit ScrollArea(const Theme& theme, QWidget* parent = nullptr,
                        Qt::Orientation orientation = Qt::Vertical);

    /// Takes ownership and shows the content from its start; destroys the former one.
    void setContent(QWidget* content);
    QWidget* content() const { return m_content; }

    bool hasHeightForWidth() const override { return isVertical() && m_content; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override { return m_content ? m_content->sizeHint() : QSize(0, 0); }
    QSize minimumSizeHint() const override { return {0, isVertical() ? 0 : sizeHint().height()}; }

protected:
    int contentLength() const override;
    void layOut() override;
    bool event(QEvent* event) override;

private:
    QWidget* m_content = nullptr;
};

} // namespace platform
