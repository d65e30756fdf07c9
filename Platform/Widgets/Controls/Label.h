// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QLabel>
#include <QTextLayout>

namespace platform {

/// Text that is only read: one line that is elided where it does not fit, or wrapped lines. A
/// symbol may stand before a single line, or by itself: decoration, which assistive technology
/// passes over.
///
/// Right-to-left text lies right within the label, whatever the window's direction is.
class Label final : public QLabel, public AccessibleElement {
    Q_OBJECT

public:
    Label(const Theme& theme, const QString& text, TextStyle style,
          ColorRole role = ColorRole::Label, QFont::Weight weight = QFont::Normal);

    ColorRole colorRole() const { return m_role.value(); }
    void setColorRole(ColorRole role) { m_role = role; }
    const QString& icon() const { return m_icon; }
    /// Shows a symbol as large as the text, or as a font of so many points; not for wrapped text.
    void setIcon(const QString& icon, qreal points = 0);
    void setWrapping(bool isWrapping);
    /// Makes it a heading to assistive technology.
    void setHeading() { m_isHeading = true; }

    bool hasHeightForWidth() const override { return wordWrap(); }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    QAccessible::Role accessibleRole() const override;
    void addAccessibleState(QAccessible::State& state) const override;
    QString accessibleText() const override { return text(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool isSymbolAlone() const { return text().isEmpty() && !m_icon.isEmpty(); }
    IconAndText line() const;
    /// Breaks the text into lines of a width; gives the block's size.
    QSize layOut(QTextLayout& layout, qreal width) const;
    Qt::LayoutDirection direction() const;

    const Theme& m_theme;
    const TextStyle m_style;
    const QFont::Weight m_weight;
    Observed<ColorRole> m_role;
    QString m_icon;
    qreal m_points = 0;
    bool m_isHeading = false;
};

} // namespace platform
