// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace platform {

class Panel;

/// The layer over a window's content on which menus, popovers, sheets and alerts are shown. Nothing
/// leaves the window, so it looks the same under every compositor. A title bar that the window
/// draws itself stays usable, as one of the desktop's does: the pointer goes through to it.
///
/// Make one a window, as a child of the widget to cover; it keeps to that widget's size, stays on
/// top of its siblings, and is hidden while nothing is shown.
class OverlayHost final : public QWidget {
    Q_OBJECT

public:
    OverlayHost(const Theme& theme, QWidget* covered);
    ~OverlayHost() override;

    /// Shows a panel above all others and moves the focus into it. `onDismissed` is called once
    /// when it has been closed, in whatever way, after the focus has gone back to where it was; not
    /// called if the host goes first.
    Panel* present(std::unique_ptr<Panel> panel, std::function<void()> onDismissed = {});

    /// Closes a panel and all that were opened over it; one that is not shown: does nothing.
    void dismiss(Panel* panel);

    bool isPresenting() const { return !m_shown.empty(); }
    /// The panel on top; none: null.
    Panel* top() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Shown {
        Panel* panel;
        QPointer<QWidget> focusBefore;
        std::function<void()> onDismissed;
    };
    /// The picture of a panel that is gone, while it fades.
    struct Snapshot {
        QPixmap picture;
        QRect geometry;
        qreal opacity;
    };

    /// Lets what the pointer does through where nothing but a title bar lies beneath it.
    void leaveTitleBarFree(const QEvent& event);
    void giveFocusBack(const Shown& gone);
    void animateIn(Panel* panel);
    void animateOut(Panel* panel);
    void fadeScrim();
    void updateVisibility();

    const Theme& m_theme;
    std::vector<Shown> m_shown; // bottom up
    std::vector<std::shared_ptr<Snapshot>> m_fading;
    qreal m_scrim = 0; // 0 to 1
    QPointer<QObject> m_scrimAnimation;
    QPointer<QObject> m_watchedWindow;
    /// By the last input: opened from the keyboard, a panel shows at once where the keyboard is.
    Qt::FocusReason m_focusReason = Qt::PopupFocusReason;
};

} // namespace platform
