// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Button.h"

namespace platform {

/// A button that is a symbol. Its name is for assistive technology and the tool tip.
class IconButton : public Button {
    Q_OBJECT

public:
    /// `points`: the size of the font in which the symbol stands.
    IconButton(const Theme& theme, QString name, QString icon, qreal points,
               QWidget* parent = nullptr);

    const QString& icon() const { return m_icon; }
    void setIcon(const QString& icon);
    void setName(const QString& name);
    void setColorRole(ColorRole role);
    ColorRole colorRole() const { return m_role; }
    /// Of the symbol: 0 to 1.
    void setSymbolOpacity(qreal opacity);
    qreal symbolOpacity() const { return m_opacity; }
    /// The free space round the symbol, in pixels; at least what the focus ring needs.
    void setPadding(int padding);
    /// A round ground and ring, for symbols that are discs themselves.
    void setRound(bool isRound);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_icon;
    qreal m_points;
    ColorRole m_role = ColorRole::SecondaryLabel;
    qreal m_opacity = 1;
    int m_padding = 7;
    bool m_isRound = false;
};

} // namespace platform
