// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QAbstractButton>

#include <functional>
#include <optional>

class QVariantAnimation;

namespace platform {

/// Every button of the interface: Return and Space press it, Tab reaches it, a click leaves the
/// focus where it was, and the ring shows when the keyboard came here.
///
/// A button never changes its own checked state: it shows the state that its owner sets.
class Button : public QAbstractButton, public AccessibleElement {
    Q_OBJECT

public:
    enum class Look {
        Icon,     ///< a symbol alone
        Disc,     ///< a symbol that is a disc itself: its own tone shows the pointer
        Floating, ///< a symbol on a disc that lies over the content
        Window,   ///< a symbol on a quiet disc: what a title bar has for its window
        Default,  ///< a text on the accent: what Return does
        Quiet,    ///< a text on a quiet background: what stands beside a Default one
        Link,     ///< like a link in text; the pointer becomes a hand
        Chip,     ///< a symbol and a text on a capsule, on or off: a toggle button
        MenuRow,  ///< an entry of a menu, highlighted by the focus, which the pointer brings along
        ListRow,  ///< a row of an inset list; see the class of that name
    };

    /// `name` is the text; of a symbol alone it is for assistive technology and the tool tip.
    Button(const Theme& theme, Look look, const QString& name, QString icon = {});

    /// What a press does, by pointer, key or assistive technology. Replaces the former action.
    void setAction(std::function<void()> action) { m_action = std::move(action); }
    void setName(const QString& name);
    const QString& icon() const { return m_icon; }
    void setIcon(const QString& icon);
    ColorRole colorRole() const { return m_role; }
    void setColorRole(ColorRole role);

    /// Gives a Default or Quiet button the one look or the other.
    void setDefault(bool isDefault);

    /// Of a symbol alone: the size of the font in which it stands; at first the body's.
    void setSymbolPoints(qreal points);
    /// Of a symbol alone: 0 to 1.
    void setSymbolOpacity(qreal opacity);
    qreal symbolOpacity() const { return m_opacity; }
    /// A busy button takes no presses and says that it is disabled, but keeps the focus.
    void setBusy(bool isBusy);
    /// Of a symbol alone: turns it round and round, where motion is enabled.
    void setTurning(bool isTurning);
    /// Whether the focus is here, and seen.
    bool showsFocus() const { return m_showsFocusRing && hasFocus(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    QAccessible::Role accessibleRole() const override;
    void addAccessibleState(QAccessible::State& state) const override;
    QString accessibleText() const override { return text(); }
    QString accessibleDetail() const override;
    QStringList accessibleActions() const override;
    void performAccessibleAction() override { click(); }

protected:
    const Theme& theme() const { return m_theme; }
    /// Paints what stands on the button's background.
    virtual void paintContent(QPainter& painter) const;

    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void nextCheckState() override {}
    void paintEvent(QPaintEvent* event) override;

private:
    bool isSymbolAlone() const {
        return m_look == Look::Icon || m_look == Look::Disc || m_look == Look::Floating ||
               m_look == Look::Window;
    }
    bool isRow() const { return m_look == Look::MenuRow || m_look == Look::ListRow; }
    /// Whether the pointer is over the button and a click would press it.
    bool isHovered() const { return underMouse() && isEnabled() && !m_isBusy; }
    IconAndText line() const;
    std::optional<ColorRole> background() const;
    QColor foreground() const;

    const Theme& m_theme;
    Look m_look;
    std::function<void()> m_action;
    QString m_icon;
    ColorRole m_role;
    qreal m_points;
    qreal m_opacity = 1;
    bool m_isBusy = false;
    QVariantAnimation* m_turn = nullptr; // while it turns
    bool m_showsFocusRing = false;
};

} // namespace platform
