// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QTextLayout>
#include <QWidget>

namespace platform {

/// Text that is only read: one line that is elided where it does not fit, or wrapped lines. A
/// symbol may stand before a single line.
///
/// Right-to-left text lies right within the label, whatever the window's direction is.
class Label final : public QWidget, public AccessibleElement {
    Q_OBJECT

public:
    Label(const Theme& theme, QString text, TextStyle style, QWidget* parent = nullptr);

    const QString& text() const { return m_text; }
    void setText(const QString& text);

    /// Shows the symbol before the text; empty: none. Not for wrapped text.
    void setIcon(const QString& icon);

    TextStyle textStyle() const { return m_style; }
    QFont::Weight weight() const { return m_weight; }
    ColorRole colorRole() const { return m_role; }
    void setTextStyle(TextStyle style, QFont::Weight weight = QFont::Normal);
    void setWeight(QFont::Weight weight) { setTextStyle(m_style, weight); }
    void setColorRole(ColorRole role);
    void setWrapping(bool isWrapping);
    /// Qt::AlignLeading (the start), Qt::AlignHCenter or Qt::AlignTrailing.
    void setTextAlignment(Qt::Alignment alignment);
    /// Whether the label is a heading to assistive technology.
    void setHeading(bool isHeading) { m_isHeading = isHeading; }

    bool hasHeightForWidth() const override { return m_isWrapping; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    /// The distance of the first line's baseline from the label's top, in pixels.
    int firstBaseline() const;

    QAccessible::Role accessibleRole() const override;
    void addAccessibleState(QAccessible::State& state) const override { state.readOnly = true; }
    QString accessibleText() const override { return m_text; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void applyTheme();
    void changed();
    /// Breaks the text into lines of a width; gives the block's size.
    QSizeF layOut(QTextLayout& layout, qreal width) const;
    Qt::LayoutDirection direction() const;

    const Theme& m_theme;
    QString m_text;
    QString m_icon;
    TextStyle m_style;
    QFont::Weight m_weight = QFont::Normal;
    ColorRole m_role = ColorRole::Label;
    Qt::Alignment m_alignment = Qt::AlignLeading;
    bool m_isWrapping = false;
    bool m_isHeading = false;
    QFont m_font;
    mutable int m_measuredWidth = -1; ///< for which m_measuredHeight holds
    mutable int m_measuredHeight = 0;
    mutable QSize m_natural; ///< of the unbroken text; invalid until measured
};

} // namespace platform
