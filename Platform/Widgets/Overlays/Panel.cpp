// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/Panel.h"

#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace platform {

namespace {

using namespace Qt::StringLiterals;

constexpr QSize freeSides(16, 24); // between a panel in the middle and the window's edge
constexpr qreal alertWidth = 300;  // goes with the text
constexpr int alertPadding = 20;
constexpr qreal closePoints = 14;
constexpr int closeInset = 9;
constexpr int popoverMargin = 5; // from the window's edge: the arrow reaches a button there
constexpr int popoverHeight = 620;
constexpr int arrowHeight = 9;
constexpr int arrowHalfWidth = 10;

} // namespace

Panel::Panel(const Theme& theme, Kind kind, const QString& title, QWidget* anchor)
    : m_theme(theme)
    , m_kind(kind)
    , m_column(new QVBoxLayout(this))
    , m_anchor(anchor) {
    setAccessibleName(title);
    setFocusPolicy(Qt::ClickFocus); // a press on the body does not leave the panel
    constexpr auto margin = Shadow::extent;
    m_column->setContentsMargins(margin, margin, margin, margin);
    m_column->setSpacing(0);
}

std::unique_ptr<Panel> Panel::popover(const Theme& theme, const QString& title, QWidget* content,
                                      int width, QWidget* anchor) {
    std::unique_ptr<Panel> panel(new Panel(theme, Kind::Popover, title, anchor));
    panel->setContent(content, width);
    return panel;
}

std::unique_ptr<Panel> Panel::sheet(const Theme& theme, const QString& title, QWidget* content,
                                    int width) {
    std::unique_ptr<Panel> panel(new Panel(theme, Kind::Sheet, title, nullptr));
    auto* close = new Button(theme, Button::Look::Disc, u"Close"_s, u"xmark.circle.fill"_s);
    close->setParent(panel.get()); // first: Tab enters here
    close->setSymbolPoints(closePoints);
    close->setSymbolOpacity(0.75);
    close->setAction([sheet = panel.get()] { sheet->dismiss(); });
    panel->m_button = close;
    panel->setContent(content, width);
    close->raise();
    return panel;
}

std::unique_ptr<Panel> Panel::alert(const Theme& theme, const QString& title,
                                    const QString& message, const QString& button) {
    std::unique_ptr<Panel> panel(new Panel(theme, Kind::Alert, title, nullptr));
    panel->setAccessibleDescription(message);
    auto* texts = new QWidget;
    auto* column = new QVBoxLayout(texts);
    column->setContentsMargins(alertPadding, alertPadding, alertPadding, 0);
    column->setSpacing(8);
    for (auto* label : {new Label(theme, title, TextStyle::Body, ColorRole::Label, QFont::DemiBold),
                        new Label(theme, message, TextStyle::Subheadline)}) {
        label->setWrapping(true);
        label->setAlignment(Qt::AlignHCenter);
        column->addWidget(label);
    }
    column->addStretch();
    panel->setContent(texts, 0); // as wide as its text wants

    auto* close = new Button(theme, Button::Look::Default, button);
    close->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    close->setAction([alert = panel.get()] { alert->dismiss(); });
    auto* foot = new QVBoxLayout;
    foot->setContentsMargins(alertPadding, 16, alertPadding, alertPadding);
    foot->addWidget(close);
    panel->m_column->addLayout(foot);
    panel->m_button = close;
    return panel;
}

void Panel::setContent(QWidget* content, int width) {
    m_scroll = new ScrollArea(m_theme, this);
    m_scroll->setContent(content);
    m_column->addWidget(m_scroll, 1);
    m_width = width;
}

void Panel::dismiss() {
    if (m_host != nullptr)
        m_host->dismiss(this);
}

// Placement

QRect Panel::bodyRect() const {
    return rect().marginsRemoved({Shadow::extent, Shadow::extent, Shadow::extent, Shadow::extent});
}

void Panel::fit() {
    constexpr auto margin = Shadow::extent;
    setGeometry(place(parentWidget()->rect()).adjusted(-margin, -margin, margin, margin));
    update(); // the arrow may have moved
}

QRect Panel::place(const QRect& area) {
    if (m_kind == Kind::Popover)
        return placeAtAnchor(area);
    const auto room = area.size() - 2 * freeSides;
    const auto wanted =
        m_kind == Kind::Alert ? static_cast<int>(m_theme.scaled(alertWidth)) : m_width;
    const auto width = std::min(wanted, room.width());
    auto height = m_scroll->heightForWidth(width);
    if (const auto* foot = m_column->itemAt(1))
        height += foot->sizeHint().height();
    QRect body(0, 0, width, std::min(height, room.height()));
    body.moveCenter(area.center());
    return body;
}

QRect Panel::anchorRect() const {
    return {parentWidget()->mapFromGlobal(m_anchor->mapToGlobal(QPoint())), m_anchor->size()};
}

QRect Panel::placeAtAnchor(const QRect& area) {
    QRect anchor(area.center().x(), area.top(), 1, 1);
    if (m_anchor != nullptr && m_anchor->isVisible())
        anchor = anchorRect();
    constexpr auto margin = popoverMargin;
    const auto width = std::min(m_width, area.width() - 2 * margin);
    const auto wanted = std::min(m_scroll->heightForWidth(width), popoverHeight);
    const auto below = area.bottom() - margin - (anchor.bottom() + arrowHeight);
    const auto above = anchor.top() - arrowHeight - margin - area.top();
    m_isBelow = below >= wanted || below >= above;
    const auto height = std::max(0, std::min(wanted, m_isBelow ? below : above));
    const auto top =
        m_isBelow ? anchor.bottom() + 1 + arrowHeight : anchor.top() - arrowHeight - height;
    const auto tip = std::clamp(anchor.center().x(), area.left() + margin, area.right() - margin);
    const auto left = std::clamp(tip - width / 2, area.left() + margin,
                                 std::max(area.left() + margin, area.right() + 1 - margin - width));
    const auto free = static_cast<int>(cornerRadius()) + arrowHalfWidth;
    m_tip = std::clamp(tip - left, free, std::max(free, width - free));
    return {left, top, width, height};
}

void Panel::resizeEvent(QResizeEvent* /*event*/) {
    if (m_kind != Kind::Sheet)
        return;
    const auto body = bodyRect();
    QRect corner(QPoint(), m_button->sizeHint());
    corner.moveTopRight(body.topRight() + QPoint(-closeInset, closeInset));
    m_button->setGeometry(QStyle::visualRect(layoutDirection(), body, corner));
}

// Focus and input

QWidget* Panel::focusAfter(QWidget* from, bool forward) const {
    const auto next = [forward](QWidget* widget) {
        return forward ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    for (auto* widget = next(from); widget != from; widget = next(widget))
        if (isAncestorOf(widget) && widget->focusPolicy() & Qt::TabFocus && widget->isEnabled() &&
            widget->isVisibleTo(this))
            return widget;
    return nullptr;
}

QWidget* Panel::initialFocus() {
    if (m_kind == Kind::Menu)
        return this;
    if (m_button == nullptr && m_scroll != nullptr && m_scroll->content()->focusProxy() != nullptr)
        return m_scroll->content()->focusProxy();
    auto* first = m_button != nullptr ? m_button : focusAfter(this, true);
    return first != nullptr ? first : this;
}

bool Panel::focusNextPrevChild(bool next) {
    auto* from = isAncestorOf(focusWidget()) ? focusWidget() : this;
    if (auto* widget = focusAfter(from, next))
        widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true; // with nowhere to go the focus stays
}

bool Panel::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter) {
            event->accept(); // ours, before any shortcut of the window
            return true;
        }
    }
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest && m_host != nullptr)
        fit(); // the content has become higher or lower
    return handled;
}

void Panel::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape || (isReturn && m_kind == Kind::Alert))
        dismiss();
    else if (m_scroll != nullptr && !m_scroll->hasFocus() && !m_scroll->isAncestorOf(focusWidget()))
        m_scroll->scrollByKey(*event);
    event->accept(); // the window beneath hears nothing
}

void Panel::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(outline().contains(event->position())); // what is beside is the host's
}

// Painting

qreal Panel::cornerRadius() const {
    return m_kind == Kind::Menu ? Theme::menuRadius : Theme::overlayRadius;
}

QPainterPath Panel::outline() const {
    const QRectF body = bodyRect();
    QPainterPath path;
    path.addRoundedRect(body, cornerRadius(), cornerRadius());
    if (m_kind != Kind::Popover)
        return path;
    QPainterPath arrow;
    const auto edge = m_isBelow ? body.top() : body.bottom();
    const auto out = m_isBelow ? -1.0 : 1.0;
    const auto at = [&](double x, double y) {
        return QPointF(body.left() + m_tip + x, edge + out * y);
    };
    arrow.moveTo(at(-arrowHalfWidth - 3, -2));
    arrow.lineTo(at(-arrowHalfWidth - 3, 0));
    arrow.quadTo(at(-arrowHalfWidth + 1, 0), at(-arrowHalfWidth + 4, 3));
    arrow.lineTo(at(-2, arrowHeight - 1));
    arrow.quadTo(at(0, arrowHeight + 0.6), at(2, arrowHeight - 1));
    arrow.lineTo(at(arrowHalfWidth - 4, 3));
    arrow.quadTo(at(arrowHalfWidth - 1, 0), at(arrowHalfWidth + 3, 0));
    arrow.lineTo(at(arrowHalfWidth + 3, -2));
    arrow.closeSubpath();
    return path.united(arrow);
}

void Panel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    m_shadow.paint(painter, bodyRect(), cornerRadius(), m_theme.color(ColorRole::Shadow));
    painter.setRenderHint(QPainter::Antialiasing);
    const auto shape = outline();
    painter.setPen(QPen(m_theme.color(ColorRole::Outline), 1.5)); // half of it under the fill
    painter.drawPath(shape);
    const bool isInTheMiddle = m_kind == Kind::Sheet || m_kind == Kind::Alert;
    painter.fillPath(shape, m_theme.color(isInTheMiddle ? ColorRole::Sheet : ColorRole::Popover));
}

// Assistive technology

QAccessible::Role Panel::accessibleRole() const {
    if (m_kind == Kind::Menu)
        return QAccessible::PopupMenu;
    return m_kind == Kind::Alert ? QAccessible::AlertMessage : QAccessible::Dialog;
}

} // namespace platform
