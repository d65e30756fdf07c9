// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Theme.h"

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Contrast.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

#include <cmath>

namespace platform {

namespace {

/// What the schemes differ in; everything else is derived.
struct Scheme {
    QRgb label, secondary, tertiary, red, orange;
    QRgb window, popover, sheet, card;
    QColor divider, outline, hover, pressed, scrim, shadow, scrollThumb;
};

Scheme scheme(bool dark) {
    if (dark) {
        return {.label = 0xfff2f2f4,
                .secondary = 0xffb0b0b8,
                .tertiary = 0xff98989f,
                .red = 0xffff6961,
                .orange = 0xffff9f0a,
                .window = 0xff1c1c1e,
                .popover = 0xff28282b,
                .sheet = 0xff28282b,
                .card = 0xff343438,
                .divider = QColor(255, 255, 255, 28),
                .outline = QColor(255, 255, 255, 34),
                .hover = QColor(255, 255, 255, 20),
                .pressed = QColor(255, 255, 255, 38),
                .scrim = QColor(0, 0, 0, 120),
                .shadow = QColor(0, 0, 0, 190),
                .scrollThumb = QColor(255, 255, 255, 80)};
    }
    return {.label = 0xff1d1d1f,
            .secondary = 0xff5f5f66,
            .tertiary = 0xff707076,
            .red = 0xffd70015,
            .orange = 0xffb04a00,
            .window = 0xffffffff,
            .popover = 0xfff5f5f7,
            .sheet = 0xfff9f9fb,
            .card = 0xffffffff,
            .divider = QColor(0, 0, 0, 26),
            .outline = QColor(0, 0, 0, 30),
            .hover = QColor(0, 0, 0, 13),
            .pressed = QColor(0, 0, 0, 28),
            .scrim = QColor(0, 0, 0, 72),
            .shadow = QColor(0, 0, 0, 96),
            .scrollThumb = QColor(0, 0, 0, 80)};
}

constexpr QRgb ownAccentLight = 0xff007aff;
constexpr QRgb ownAccentDark = 0xff0a84ff;
constexpr double readable = 4.5;

double points(TextStyle style) {
    switch (style) {
    case TextStyle::LargeTitle:
        return 26;
    case TextStyle::Title2:
        return 17;
    case TextStyle::Body:
        return Theme::bodyPoints;
    case TextStyle::Subheadline:
        return 11;
    case TextStyle::Footnote:
    case TextStyle::Caption:
        return 10;
    }
    return Theme::bodyPoints;
}

QFont resized(QFont font, double ratio) {
    if (font.pixelSize() > 0)
        font.setPixelSize(static_cast<int>(std::lround(font.pixelSize() * ratio)));
    else
        font.setPointSizeF(font.pointSizeF() * ratio);
    return font;
}

} // namespace

Theme::Theme()
    : m_bodyFont(QGuiApplication::font()) {
    AccessibleElement::install(); // no widget of ours is without a theme
    rebuild();
}

QColor Theme::color(ColorRole role) const {
    [[maybe_unused]] const auto tracked = m_revision.value();
    return m_palette.at(static_cast<size_t>(role));
}

void Theme::setDark(bool dark) {
    if (dark != m_dark) {
        m_dark = dark;
        rebuild();
    }
}

void Theme::setAccent(std::optional<QColor> accent) {
    if (accent && !accent->isValid())
        accent.reset();
    if (accent != m_accent) {
        m_accent = accent;
        rebuild();
    }
}

void Theme::rebuild() {
    const auto own = QColor(m_dark ? ownAccentDark : ownAccentLight);
    m_palette = palette(m_dark, m_accent ? QColor(m_accent->rgb()) : own);
    m_revision = m_revision.valueBypassingBindings() + 1;
}

Theme::Palette Theme::palette(bool dark, const QColor& accent) {
    const auto base = scheme(dark);
    Palette result;
    const auto set = [&result](ColorRole role, const QColor& color) {
        result.at(static_cast<size_t>(role)) = color;
    };
    const QColor secondary(base.secondary);

    // White stands on the accent as a background; the accent as text stands on every background and
    // on its own tint over it, so it is made for the surface with the minimum of contrast.
    const QColor extreme = dark ? Qt::white : Qt::black;
    const auto fill = adjustedForContrast(accent, Qt::white, Qt::black, readable);
    const QColor hardest = dark ? QColor(base.card) : QColor(base.popover);
    const auto plain = adjustedForContrast(accent, hardest, extreme, readable);
    const auto tinted = composed(withOpacity(plain, 0.1), hardest);
    const auto text = adjustedForContrast(plain, tinted, extreme, readable);
    const auto bubble = composed(withOpacity(secondary, 0.15), QColor(base.window));
    const auto link = adjustedForContrast(text, bubble, extreme, readable);

    set(ColorRole::Accent, text);
    set(ColorRole::Label, QColor(base.label));
    set(ColorRole::SecondaryLabel, secondary);
    set(ColorRole::TertiaryLabel, QColor(base.tertiary));
    set(ColorRole::Red, QColor(base.red));
    set(ColorRole::Orange, QColor(base.orange));
    set(ColorRole::Link, link);
    set(ColorRole::Window, QColor(base.window));
    set(ColorRole::Popover, QColor(base.popover));
    set(ColorRole::Sheet, QColor(base.sheet));
    set(ColorRole::Card, QColor(base.card));
    set(ColorRole::Header, QColor(base.window));
    set(ColorRole::AccentFill, fill);
    set(ColorRole::OnAccent, Qt::white);
    set(ColorRole::UserBubble, fill);
    set(ColorRole::AssistantBubble, withOpacity(secondary, 0.15));
    set(ColorRole::GreetingBubble, withOpacity(secondary, 0.12));
    set(ColorRole::Field, withOpacity(secondary, 0.1));
    set(ColorRole::Chip, withOpacity(text, 0.1));
    set(ColorRole::ModeBar, withOpacity(text, 0.08));
    set(ColorRole::Hover, base.hover);
    set(ColorRole::Pressed, base.pressed);
    set(ColorRole::Selection, withOpacity(fill, dark ? 0.5 : 0.25));
    set(ColorRole::SelectionOnAccent, QColor(0, 0, 0, 90));
    set(ColorRole::Divider, base.divider);
    set(ColorRole::Outline, base.outline);
    set(ColorRole::FocusRing, withOpacity(text, 0.6));
    set(ColorRole::Scrim, base.scrim);
    set(ColorRole::Shadow, base.shadow);
    set(ColorRole::ScrollThumb, base.scrollThumb);
    return result;
}

QFont Theme::font(TextStyle style, QFont::Weight weight) const {
    auto font = resized(m_bodyFont.value(), points(style) / bodyPoints);
    font.setWeight(weight);
    return font;
}

QFont Theme::monospacedFont(TextStyle style) const {
    if (!m_monospaced) // asked of the desktop only when somebody needs it
        m_monospaced = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    const auto like = font(style);
    auto font = *m_monospaced;
    if (like.pixelSize() > 0)
        font.setPixelSize(like.pixelSize());
    else
        font.setPointSizeF(like.pointSizeF());
    return font;
}

qreal Theme::bodySize() const {
    const auto body = m_bodyFont.value();
    return body.pixelSize() > 0 ? body.pixelSize() : QFontInfo(body).pixelSize();
}

void Theme::setBodyFont(const QFont& font) {
    m_monospaced.reset();
    m_bodyFont = font;
}

qreal Theme::scaled(qreal points) const {
    return points * bodySize() / bodyPoints;
}

int Theme::symbolSize(qreal points) const {
    // A symbol's drawing fills its square, a letter does not fill its em: a little larger than the
    // font, the two look alike.
    return static_cast<int>(std::lround(scaled(points) * 1.15));
}

int Theme::symbolSize(TextStyle style) const {
    return symbolSize(points(style));
}

} // namespace platform
