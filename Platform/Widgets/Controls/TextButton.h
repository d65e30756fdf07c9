// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Button.h"

namespace platform {

/// A button that is a text.
class TextButton final : public Button {
    Q_OBJECT

public:
    enum class Kind {
        Default, ///< filled with the accent: what Return does
        Plain,   ///< on a quiet ground
        Link,    ///< like a link in text; the pointer becomes a hand
    };

    TextButton(const Theme& theme, const QString& text, Kind kind, QWidget* parent = nullptr);

    void setTextStyle(TextStyle style, QFont::Weight weight);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    QAccessible::Role accessibleRole() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QMargins padding() const;

    Kind m_kind;
    TextStyle m_style = TextStyle::Body;
    QFont::Weight m_weight = QFont::Normal;
};

} // namespace platform
