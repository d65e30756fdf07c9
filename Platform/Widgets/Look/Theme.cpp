// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Theme.h"

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Contrast.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace platform {

namespace {

/// What the schemes differ in; all other colours are mixed from these.
struct Tone {
    ColorRole role;
    QRgb light;
    QRgb dark;
};

constexpr Tone tones[] = {
    {ColorRole::Accent, 0xff007aff, 0xff0a84ff}, // without one of the desktop's
    {ColorRole::Label, 0xff1d1d1f, 0xfff2f2f4},
    {ColorRole::SecondaryLabel, 0xff5f5f66, 0xffb0b0b8},
    {ColorRole::TertiaryLabel, 0xff6b6b71, 0xff98989f},
    {ColorRole::Red, 0xffd70015, 0xffff6961},
    {ColorRole::Orange, 0xffb04a00, 0xffff9f0a},
    {ColorRole::OrangeSymbol, 0xffd96b00, 0xffff9f0a},
    {ColorRole::Window, 0xffffffff, 0xff1c1c1e},
    {ColorRole::Popover, 0xfff5f5f7, 0xff28282b},
    {ColorRole::Sheet, 0xfff9f9fb, 0xff28282b},
    {ColorRole::Card, 0xffffffff, 0xff343438},
    {ColorRole::Header, 0xffffffff, 0xff1c1c1e},
    {ColorRole::OnAccent, 0xffffffff, 0xffffffff},
    {ColorRole::Hover, 0x0d000000, 0x14ffffff},
    {ColorRole::Pressed, 0x1c000000, 0x26ffffff},
    {ColorRole::SelectionOnAccent, 0x5a000000, 0x5a000000},
    {ColorRole::Found, 0x66ffcc00, 0x4cffd60a},
    {ColorRole::FoundOnAccent, 0x5a000000, 0x5a000000},
    {ColorRole::FoundCurrent, 0xffffcc00, 0xb0b07800},
    {ColorRole::FoundCurrentOnAccent, 0xb0000000, 0xb0000000},
    {ColorRole::Divider, 0x1a000000, 0x1cffffff},
    {ColorRole::Outline, 0x1e000000, 0x22ffffff},
    {ColorRole::FieldBorder, 0x00000000, 0x00ffffff},
    {ColorRole::Scrim, 0x48000000, 0x78000000},
    {ColorRole::Shadow, 0x60000000, 0xbe000000},
    {ColorRole::ScrollThumb, 0x50000000, 0x50ffffff},
};

// A symbol's drawing fills its square, a letter does not fill its em: a little larger than the
// font, the two look alike.
constexpr double symbolScale = 1.15;

// Contrast ratios of text.
constexpr double readable = 4.5;
constexpr double wellReadable = 7;

/// Yellow turns olive as it darkens, amber does not.
QColor toDarken(const QColor& color) {
    constexpr int amber = 38;
    const bool isYellow = color.hsvHue() > amber && color.hsvHue() < 75;
    return isYellow ? QColor::fromHsv(amber, color.hsvSaturation(), color.value()) : color;
}

double points(TextStyle style) {
    constexpr std::array<double, 6> all{26, 17, Theme::bodyPoints, 11, 10, 10};
    return all.at(static_cast<size_t>(style));
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
    if (std::exchange(m_dark, dark) != dark)
        rebuild();
}

void Theme::setIncreasedContrast(bool isIncreased) {
    if (std::exchange(m_hasIncreasedContrast, isIncreased) != isIncreased)
        rebuild();
}

void Theme::setAccent(std::optional<QColor> accent) {
    if (accent && !accent->isValid())
        accent.reset();
    if (std::exchange(m_accent, accent) != accent)
        rebuild();
}

void Theme::rebuild() {
    using enum ColorRole;
    const auto of = [this](ColorRole role) -> QColor& {
        return m_palette.at(static_cast<size_t>(role));
    };
    for (const auto& tone : tones)
        of(tone.role) = QColor::fromRgba(m_dark ? tone.dark : tone.light);

    const QColor extreme = m_dark ? Qt::white : Qt::black;
    const auto hardest = of(m_dark ? Card : Popover);
    const double ratio = m_hasIncreasedContrast ? wellReadable : readable;
    if (m_hasIncreasedContrast) {
        of(Label) = extreme;
        for (const auto role : {SecondaryLabel, TertiaryLabel, Red, Orange, OrangeSymbol})
            of(role) = adjustedForContrast(of(role), composed(withOpacity(of(role), 0.15), hardest),
                                           extreme, ratio);
        for (const auto role : {Divider, Outline, FieldBorder})
            of(role) = withOpacity(of(Label), 0.7);
    }

    // White stands on the accent as a background; the accent as text stands on every background and
    // on its own tint over it, so it is made for the surface with the minimum of contrast.
    const auto accent = m_accent ? QColor(m_accent->rgb()) : of(Accent);
    const auto plain =
        adjustedForContrast(m_dark ? accent : toDarken(accent), hardest, extreme, ratio);
    const auto tinted = composed(withOpacity(plain, 0.1), hardest);
    of(Accent) = adjustedForContrast(plain, tinted, extreme, ratio);
    of(AccentFill) = of(UserBubble) =
        adjustedForContrast(toDarken(accent), Qt::white, Qt::black, ratio);
    of(AssistantBubble) = withOpacity(of(SecondaryLabel), 0.15);
    of(GreetingBubble) = withOpacity(of(SecondaryLabel), 0.12);
    of(Field) = withOpacity(of(SecondaryLabel), 0.1);
    of(Link) =
        adjustedForContrast(of(Accent), composed(of(AssistantBubble), of(Window)), extreme, ratio);
    of(Chip) = withOpacity(of(Accent), 0.1);
    of(ModeBar) = withOpacity(of(Accent), 0.08);
    of(Selection) = withOpacity(of(AccentFill), m_dark ? 0.5 : 0.25);
    of(FocusRing) = withOpacity(of(Accent), 0.6);
    m_revision = m_revision.valueBypassingBindings() + 1;
}

QFont Theme::font(TextStyle style, QFont::Weight weight) const {
    auto font = resized(bodyFont(), points(style) / bodyPoints);
    font.setWeight(weight);
    return font;
}

QFont Theme::bodyFont() const {
    return resized(m_bodyFont.value(), m_zoom.value());
}

void Theme::setMonospacedFont(const std::optional<QFont>& font) {
    m_ownMonospaced = font;
}

void Theme::setZoom(qreal zoom) {
    m_zoom = std::clamp(zoom, 0.8, 2.0);
}

QFont Theme::codeFont() const {
    if (!m_monospaced) // asked of the desktop only when somebody needs it
        m_monospaced = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    const auto body = bodyFont();
    auto font = m_ownMonospaced.value().value_or(*m_monospaced);
    if (body.pixelSize() > 0)
        font.setPixelSize(body.pixelSize());
    else
        font.setPointSizeF(body.pointSizeF());
    return resized(font, 0.92);
}

qreal Theme::bodySize() const {
    const auto body = bodyFont();
    return body.pixelSize() > 0 ? body.pixelSize() : QFontInfo(body).pixelSize();
}

void Theme::setBodyFont(const QFont& font) {
    m_monospaced.reset();
    m_emojiFont.forget();
    m_bodyFont = font;
}

qreal Theme::scaled(qreal points) const {
    return points * bodySize() / bodyPoints;
}

int Theme::symbolSize(qreal points) const {
    return static_cast<int>(std::lround(scaled(points) * symbolScale));
}

qreal Theme::symbolPoints(int side) const {
    return side / (scaled(1) * symbolScale);
}

int Theme::symbolSize(TextStyle style) const {
    return symbolSize(points(style));
}

} // namespace platform
