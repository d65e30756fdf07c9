// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/OverlayHost.h"

#include "Platform/Widgets/Controls/HeaderBar.h"
#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Overlays/Panel.h"

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QMouseEvent>
#include <QPainter>
#include <QVariantAnimation>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace platform {

namespace {

using namespace std::chrono_literals;

constexpr auto openingTime = 160ms;
constexpr auto closingTime = 120ms;
constexpr int rise = 8; // pixels that a panel travels while it opens

/// Runs `step` with values from 0 to 1, then `finished`; at once with 1 if there is no time.
QVariantAnimation* animate(QObject* owner, std::chrono::milliseconds time,
                           std::function<void(qreal)> step, std::function<void()> finished) {
    if (time == time.zero()) {
        step(1);
        finished();
        return nullptr;
    }
    auto* animation = new QVariantAnimation(owner);
    animation->setStartValue(0.0);
    animation->setEndValue(1.0);
    animation->setDuration(static_cast<int>(time.count()));
    animation->setEasingCurve(QEasingCurve::OutCubic);
    QObject::connect(animation, &QVariantAnimation::valueChanged, owner,
                     [step = std::move(step)](const QVariant& value) { step(value.toReal()); });
    QObject::connect(animation, &QVariantAnimation::finished, owner, std::move(finished));
    animation->start(QAbstractAnimation::DeleteWhenStopped);
    return animation;
}

QAccessible::Event openingEvent(Panel::Kind kind) {
    if (kind == Panel::Kind::Menu)
        return QAccessible::PopupMenuStart;
    return kind == Panel::Kind::Alert ? QAccessible::Alert : QAccessible::DialogStart;
}

bool dimsWindow(const Panel& panel) {
    return panel.kind() == Panel::Kind::Sheet || panel.kind() == Panel::Kind::Alert;
}

} // namespace

OverlayHost::OverlayHost(const Theme& theme, QWidget* covered)
    : QWidget(covered)
    , m_theme(theme) {
    hide();
    setGeometry(covered->rect());
    covered->installEventFilter(this);
}

OverlayHost::~OverlayHost() {
    // The panels go with us as children; they must not ask us to be dismissed meanwhile.
    for (auto& shown : m_shown)
        shown.panel->m_host = nullptr;
}

Panel* OverlayHost::top() const {
    return m_shown.empty() ? nullptr : m_shown.back().panel;
}

Panel* OverlayHost::present(std::unique_ptr<Panel> owned, std::function<void()> onDismissed) {
    auto* panel = owned.release();
    panel->m_host = this;
    m_shown.push_back({panel, QApplication::focusWidget(), std::move(onDismissed)});
    panel->setParent(this);
    updateVisibility();
    panel->fit();
    panel->show();
    panel->raise();
    panel->initialFocus()->setFocus(m_focusReason);
    fadeScrim();
    animateIn(panel);
    QAccessibleEvent event(panel, openingEvent(panel->kind()));
    QAccessible::updateAccessibility(&event);
    return panel;
}

void OverlayHost::dismiss(Panel* panel) {
    while (std::ranges::find(m_shown, panel, &Shown::panel) != m_shown.end()) {
        const auto gone = std::move(m_shown.back());
        m_shown.pop_back();
        gone.panel->m_host = nullptr;
        animateOut(gone.panel);
        giveFocusBack(gone);
        gone.panel->hide();
        gone.panel->deleteLater();
        fadeScrim();
        updateVisibility();
        if (gone.onDismissed)
            gone.onDismissed();
    }
}

void OverlayHost::giveFocusBack(const Shown& gone) {
    auto* now = QApplication::focusWidget();
    if (now != nullptr && now != gone.panel && !gone.panel->isAncestorOf(now))
        return; // somebody has taken it meanwhile
    auto* before = gone.focusBefore.data();
    if (before != nullptr && before->isVisible() && before->isEnabled())
        before->setFocus(m_focusReason);
    else if (!m_shown.empty())
        m_shown.back().panel->setFocus(m_focusReason);
}

void OverlayHost::animateIn(Panel* panel) {
    const auto time = m_theme.motion().duration(openingTime);
    if (time == time.zero())
        return;
    auto* effect = new QGraphicsOpacityEffect(panel);
    panel->setGraphicsEffect(effect);
    const auto step = [panel, effect](qreal share) {
        effect->setOpacity(share);
        panel->fit();
        panel->move(panel->pos() + QPoint(0, qRound((1 - share) * rise)));
    };
    animate(panel, time, step, [panel] { panel->setGraphicsEffect(nullptr); });
    step(0);
}

void OverlayHost::animateOut(Panel* panel) {
    const auto time = m_theme.motion().duration(closingTime);
    if (time == time.zero() || !panel->isVisible())
        return;
    const auto snapshot =
        std::make_shared<Snapshot>(Snapshot{panel->grab(), panel->geometry(), 1.0});
    m_fading.push_back(snapshot);
    animate(
        this, time,
        [this, snapshot](qreal share) {
            snapshot->opacity = 1 - share;
            update(snapshot->geometry);
        },
        [this, snapshot] {
            std::erase(m_fading, snapshot);
            updateVisibility();
        });
}

void OverlayHost::fadeScrim() {
    const auto from = m_scrim;
    const bool isDimmed =
        std::ranges::any_of(m_shown, [](const Shown& shown) { return dimsWindow(*shown.panel); });
    for (auto* header : parentWidget()->findChildren<HeaderBar*>())
        header->setDimmed(isDimmed);
    const auto to = isDimmed ? 1.0 : 0.0;
    delete m_scrimAnimation.data();
    if (from == to)
        return;
    const auto time = m_theme.motion().duration(to > from ? openingTime : closingTime);
    m_scrimAnimation = animate(
        this, time,
        [this, from, to](qreal share) {
            m_scrim = from + (to - from) * share;
            update();
        },
        [this] { updateVisibility(); });
}

void OverlayHost::updateVisibility() {
    // While the last panel fades the window beneath already hears the pointer.
    setAttribute(Qt::WA_TransparentForMouseEvents, m_shown.empty());
    const bool isNeeded = !m_shown.empty() || !m_fading.empty() || m_scrim > 0;
    if (isNeeded && isHidden()) {
        setGeometry(parentWidget()->rect());
        setVisible(true);
        raise();
        if (auto* handle = window()->windowHandle(); handle != m_watchedWindow) {
            handle->installEventFilter(this);
            m_watchedWindow = handle;
        }
    } else if (!isNeeded) {
        setVisible(false);
    }
}

bool OverlayHost::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_watchedWindow) {
        if (event->type() == QEvent::KeyPress)
            m_focusReason = Qt::TabFocusReason;
        else if (event->type() == QEvent::MouseButtonPress)
            m_focusReason = Qt::PopupFocusReason;
        if (isPresenting() && (event->isSinglePointEvent() || event->type() == QEvent::Leave))
            leaveTitleBarFree(*event);
    } else if (event->type() == QEvent::Resize) {
        setGeometry(parentWidget()->rect());
        for (auto& shown : m_shown)
            shown.panel->fit();
    } else if (event->type() == QEvent::ChildAdded) {
        raise();
    }
    return false;
}

void OverlayHost::leaveTitleBarFree(const QEvent& event) {
    QPoint pointer(-1, -1); // gone
    if (event.isSinglePointEvent())
        pointer =
            mapFrom(window(), static_cast<const QSinglePointEvent&>(event).position().toPoint());
    const bool isBeside = std::ranges::none_of(m_shown, [pointer](const Shown& shown) {
        return shown.panel->outline().contains(pointer - shown.panel->pos());
    });
    setAttribute(Qt::WA_TransparentForMouseEvents); // to see what is beneath
    const bool isFree = isBeside && HeaderBar::isPartOfTitleBar(parentWidget()->childAt(pointer));
    if (isFree && event.type() == QEvent::MouseButtonPress && !dimsWindow(*top()))
        dismiss(top()); // a menu or popover closes at every press beside it
    setAttribute(Qt::WA_TransparentForMouseEvents, isFree || !isPresenting());
}

void OverlayHost::mousePressEvent(QMouseEvent* event) {
    event->accept();
    if (auto* panel = top(); panel != nullptr && panel->kind() != Panel::Kind::Alert)
        dismiss(panel);
}

void OverlayHost::wheelEvent(QWheelEvent* event) {
    event->accept();
}

void OverlayHost::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (m_scrim > 0)
        painter.fillRect(event->rect(), withOpacity(m_theme.color(ColorRole::Scrim), m_scrim));
    for (const auto& snapshot : m_fading) {
        painter.setOpacity(snapshot->opacity);
        painter.drawPixmap(snapshot->geometry.topLeft(), snapshot->picture);
    }
}

} // namespace platform
