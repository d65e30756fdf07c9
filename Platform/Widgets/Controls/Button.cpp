// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Look/Contrast.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QVariantAnimation>

#include <algorithm>
#include <utility>

namespace platform {

namespace {

using enum Button::Look;

/// What the looks differ in.
struct Style {
    ColorRole color;
    TextStyle text;
    QFont::Weight weight;
    int paddingX;
    int paddingY;
    qreal radius;
};

constexpr qreal capsule = 1000; // cut down to half the height
constexpr int ring = Theme::focusRingWidth;

Style styleOf(Button::Look look) {
    switch (look) {
    case Icon:
        return {ColorRole::SecondaryLabel, TextStyle::Body, QFont::Normal, 7, 7,
                Theme::controlRadius};
    case Disc:
        return {ColorRole::SecondaryLabel, TextStyle::Body, QFont::Normal, ring, ring, capsule};
    case Floating:
        return {ColorRole::Label, TextStyle::Body, QFont::Normal, 9, 9, capsule};
    case Window:
        return {ColorRole::Label, TextStyle::Body, QFont::Normal, 6, 6, capsule};
    case Default:
    case Quiet:
        return {ColorRole::Label, TextStyle::Body, QFont::Medium, 20, 7, Theme::controlRadius + 1};
    case Link:
        return {ColorRole::Link, TextStyle::Footnote, QFont::Medium, 5, 3, 4};
    case Chip:
        return {ColorRole::Accent,   TextStyle::Subheadline, QFont::Medium,
                Theme::chipPaddingX, Theme::chipPaddingY,    capsule};
    case MenuRow:
        return {ColorRole::Label, TextStyle::Body, QFont::Normal, 9, 5, Theme::controlRadius - 1};
    case ListRow:
        break;
    }
    return {ColorRole::Label, TextStyle::Subheadline, QFont::Medium, 0, 0, Theme::controlRadius};
}

} // namespace

Button::Button(const Theme& theme, Look look, const QString& name, QString icon)
    : m_theme(theme)
    , m_look(look)
    , m_icon(std::move(icon))
    , m_role(styleOf(look).color)
    , m_points(Theme::bodyPoints) {
    setName(name);
    setCheckable(look == Chip);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);        // repaints as the pointer comes and goes
    setMouseTracking(look == MenuRow); // a menu that opens under the pointer waits for its move
    setSizePolicy(isRow() ? QSizePolicy::Expanding : QSizePolicy::Fixed, QSizePolicy::Fixed);
    if (look == Link)
        setCursor(Qt::PointingHandCursor);
    connect(
        this, &QAbstractButton::clicked, this,
        [this] {
            const auto action = m_isBusy ? nullptr : m_action;
            if (action) // a copy: the action may replace or destroy us
                action();
        });
    observe(this, [this] { setFont(m_theme.font(styleOf(m_look).text, styleOf(m_look).weight)); });
}

void Button::setName(const QString& name) {
    setText(name);
    setShortcut({}); // an ampersand is a letter
    if (isSymbolAlone())
        setToolTip(name);
}

void Button::setIcon(const QString& icon) {
    m_icon = icon;
    update();
}

void Button::setColorRole(ColorRole role) {
    m_role = role;
    update();
}

void Button::setDefault(bool isDefault) {
    m_look = isDefault ? Default : Quiet;
    update();
}

void Button::setSymbolPoints(qreal points) {
    m_points = points;
    updateGeometry();
}

void Button::setSymbolOpacity(qreal opacity) {
    m_opacity = opacity;
    update();
}

void Button::setBusy(bool isBusy) {
    if (std::exchange(m_isBusy, isBusy) == isBusy)
        return;
    QAccessible::State changed;
    changed.disabled = true;
    tellChanged(this, changed);
    update();
}

void Button::setTurning(bool isTurning) {
    if (isTurning == (m_turn != nullptr) || (isTurning && !m_theme.motion().isEnabled()))
        return;
    if (!isTurning) {
        delete std::exchange(m_turn, nullptr);
    } else {
        m_turn = new QVariantAnimation(this);
        m_turn->setStartValue(0.0);
        m_turn->setEndValue(360.0);
        m_turn->setDuration(1000);
        m_turn->setLoopCount(-1);
        connect(m_turn, &QVariantAnimation::valueChanged, this, [this] { update(); });
        m_turn->start();
    }
    update();
}

// Size and looks

IconAndText Button::line() const {
    return iconAndText(m_theme, m_icon, text(), styleOf(m_look).text, styleOf(m_look).weight);
}

QSize Button::sizeHint() const {
    const auto side = m_theme.symbolSize(m_points);
    const auto content = isSymbolAlone() ? QSize(side, side) : line().size();
    return content + 2 * QSize(styleOf(m_look).paddingX, styleOf(m_look).paddingY);
}

QSize Button::minimumSizeHint() const {
    return isRow() ? QSize(0, sizeHint().height()) : sizeHint();
}

std::optional<ColorRole> Button::background() const {
    if (m_look == Default || (m_look == Chip && isChecked()) || (m_look == MenuRow && hasFocus()))
        return ColorRole::AccentFill;
    if (m_look == Floating)
        return ColorRole::Popover;
    if (m_look == Window)
        return ColorRole::Hover;
    if (m_look == Quiet)
        return ColorRole::Field;
    return m_look == Chip ? std::optional(ColorRole::Chip) : std::nullopt;
}

QColor Button::foreground() const {
    const bool isOnAccent = background() == ColorRole::AccentFill;
    const auto color = m_theme.color(isOnAccent ? ColorRole::OnAccent : m_role);
    if (!isSymbolAlone())
        return withOpacity(color, isEnabled() ? 1 : 0.4);
    const auto own = withOpacity(color, m_opacity);
    if (!isEnabled())
        return withOpacity(own, m_opacity < 1 ? 1 : 0.4);
    return withOpacity(own, m_look != Disc ? 1 : isDown() ? 0.65 : isHovered() ? 0.85 : 1);
}

void Button::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const auto radius = styleOf(m_look).radius;
    const auto shape = m_look == ListRow ? QRectF(rect()).adjusted(4, 3, -4, -3) : QRectF(rect());
    const auto role = background();
    if (role)
        fillRounded(painter, shape, radius, m_theme.color(*role));
    const bool showsPointer = m_look != Disc && m_look != Link && m_look != MenuRow;
    if (showsPointer && (isDown() || isHovered())) {
        fillRounded(painter, shape, radius,
                    m_theme.color(isDown() ? ColorRole::Pressed : ColorRole::Hover));
    }
    if (m_look == Floating)
        strokeRounded(painter, shape, radius, m_theme.color(ColorRole::Outline));
    paintContent(painter);
    if (showsFocus() && m_look != MenuRow) {
        paintFocusRing(painter, m_theme, shape, radius,
                       role == ColorRole::AccentFill ? ColorRole::OnAccent : ColorRole::FocusRing);
    }
}

void Button::paintContent(QPainter& painter) const {
    if (isSymbolAlone()) {
        const auto side = m_theme.symbolSize(m_points);
        const QRectF square((width() - side) / 2, (height() - side) / 2, side, side);
        if (m_turn != nullptr) {
            painter.translate(square.center());
            painter.rotate(m_turn->currentValue().toReal());
            painter.translate(-square.center());
        }
        m_theme.icons().paint(painter, m_icon, square, foreground());
        return;
    }
    auto line = this->line();
    line.font.setUnderline(m_look == Link && isHovered());
    const auto free = isRow() ? 0 : (width() - line.size().width()) / 2;
    const auto side = std::max(styleOf(m_look).paddingX, free);
    line.paint(painter, m_theme, rect().adjusted(side, 0, -side, 0), foreground(),
               layoutDirection());
}

// Keyboard and pointer

void Button::focusInEvent(QFocusEvent* event) {
    m_showsFocusRing = showsFocusRing(event->reason(), m_showsFocusRing);
    QAbstractButton::focusInEvent(event);
}

void Button::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (isReturn && isPlain && !event->isAutoRepeat())
        click();
    else if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Select)
        QAbstractButton::keyPressEvent(event);
    else
        event->ignore(); // arrows would walk to a sibling of no relation
}

void Button::mouseMoveEvent(QMouseEvent* event) {
    if (m_look == MenuRow && isEnabled() && !hasFocus() &&
        rect().contains(event->position().toPoint()))
        setFocus(Qt::MouseFocusReason);
    QAbstractButton::mouseMoveEvent(event);
}

// Assistive technology

QAccessible::Role Button::accessibleRole() const {
    if (m_look == Link)
        return QAccessible::Link;
    return m_look == MenuRow ? QAccessible::MenuItem : QAccessible::Button;
}

void Button::addAccessibleState(QAccessible::State& state) const {
    state.disabled = state.disabled || m_isBusy;
    state.pressed = isCheckable() ? isChecked() : isDown();
    state.checkable = isCheckable();
    state.checked = isChecked();
}

/// The accessibility bus of Qt 6.4 has no toggle buttons, and few screen readers say of a plain
/// button that it is pressed: so it is said here, too.
QString Button::accessibleDetail() const {
    return isChecked() ? QStringLiteral("Pressed") : QString();
}

QStringList Button::accessibleActions() const {
    return {QAccessibleActionInterface::pressAction()};
}

} // namespace platform
