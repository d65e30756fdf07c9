// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"
#include "Platform/Widgets/Look/EmojiFont.h"
#include "Platform/Widgets/Look/Icons.h"

#include <QColor>
#include <QFont>

#include <array>
#include <chrono>
#include <optional>

namespace platform {

/// What a colour is for. Widgets name a role; the theme knows the colour.
enum class ColorRole {
    // Text and symbols.
    Accent,         ///< links' and chips' text, selected marks: readable on every background
    Label,          ///< primary text
    SecondaryLabel, ///< subtitles, details, placeholders
    TertiaryLabel,  ///< the quietest text; on the window's background only
    Red,
    Orange,
    OrangeSymbol, ///< symbols want less contrast than text, and look the better for it
    Link,
    // Backgrounds: opaque.
    Window,
    Popover, ///< popovers and menus
    Sheet,   ///< sheets and alerts
    Card,    ///< the rows of an inset list
    Header,  ///< the window's header bar
    // The accent as a background, dark enough for white text, and what stands on it.
    AccentFill,
    OnAccent,
    // Fills over a background: translucent, but for the user's bubble.
    UserBubble,
    AssistantBubble, ///< secondary at 0.15
    GreetingBubble,  ///< secondary at 0.12
    Field,           ///< secondary at 0.1
    Chip,            ///< accent at 0.1
    ModeBar,         ///< accent at 0.08
    Hover,           ///< under a button or a row beneath the pointer
    Pressed,
    Selection,         ///< behind selected text
    SelectionOnAccent, ///< behind selected text of the user's bubble
    Found,             ///< behind what was looked for
    FoundOnAccent,
    FoundCurrent, ///< behind the one that the reader is at
    FoundCurrentOnAccent,
    // Lines and overlays.
    Divider,
    Outline,     ///< hairline round a popover, sheet or menu
    FieldBorder, ///< seen where the user wants more contrast
    FocusRing,
    Scrim,  ///< over the window beneath a sheet or an alert
    Shadow, ///< the darkest tone of a shadow
    ScrollThumb,
    Count_
};

/// The text styles of the program, as ratios of the desktop's own font.
enum class TextStyle { LargeTitle, Title2, Body, Subheadline, Footnote, Caption };

/// The one switch of all animations. They are off until somebody who knows the user's wish turns
/// them on, so tests never wait for one.
class Motion {
public:
    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }

    /// How long an animation of the given length is to take now: its length, or no time at all.
    std::chrono::milliseconds duration(std::chrono::milliseconds length) const {
        return m_enabled ? length : std::chrono::milliseconds::zero();
    }

private:
    Observed<bool> m_enabled{false};
};

/// Every colour, text style and size of the interface, for the light and the dark scheme.
///
/// One object, made at the program's start and passed by reference to every widget; it outlives
/// them. All reads are tracked by observe(): a widget that reads the theme there is up to date when
/// the desktop's scheme, accent or font changes. Main thread only.
class Theme {
public:
    /// A light theme over the application's font, with our own accent.
    Theme();

    // Colours.

    /// The colour of a role; some are translucent (see ColorRole).
    QColor color(ColorRole role) const;

    void setDark(bool dark);
    /// Whether the user wants more contrast: text at 7:1, stronger lines, borders.
    void setIncreasedContrast(bool isIncreased);

    /// The desktop's accent colour; none: our own blue. What is shown is the nearest tone of it
    /// that gives text enough contrast.
    void setAccent(std::optional<QColor> accent);

    // Text.

    QFont font(TextStyle style, QFont::Weight weight = QFont::Normal) const;
    /// The desktop's monospaced font beside text of the body style: a little smaller, for it looks
    /// larger than others of its size.
    QFont codeFont() const;
    const EmojiFont& emojiFont() const { return m_emojiFont; }
    /// The height of the body style's em in device-independent pixels.
    qreal bodySize() const;

    /// The font of the body style: the desktop's. Set again when the desktop changes it.
    void setBodyFont(const QFont& font);

    /// How large everything that goes with the text is, 1 at first.
    qreal zoom() const { return m_zoom.value(); }
    /// Within 0.8 and 2.
    void setZoom(qreal zoom);

    /// The font of code; none: the one that Qt finds.
    void setMonospacedFont(const std::optional<QFont>& font);

    /// A length that goes with the text (13 points: the body's em) in device-independent pixels.
    qreal scaled(qreal points) const;
    /// The side of the square for a symbol that stands in a font of so many points.
    int symbolSize(qreal points) const;
    /// The points of a symbol whose square has this side.
    qreal symbolPoints(int side) const;
    /// The side of the square for a symbol beside text of a style.
    int symbolSize(TextStyle style) const;

    // Symbols and motion.

    const Icons& icons() const { return m_icons; }

    Motion& motion() { return m_motion; }
    const Motion& motion() const { return m_motion; }

    /// The body's size in the points that the other sizes of text and symbols are said in.
    static constexpr qreal bodyPoints = 13;

    // Sizes in device-independent pixels.

    static constexpr int defaultPadding = 16; ///< around a column
    static constexpr int defaultSpacing = 8;  ///< between the parts of a row
    static constexpr int bubbleRadius = 18;
    static constexpr int bubblePaddingX = 12;
    static constexpr int bubblePaddingY = 8;
    static constexpr int bubbleFreeSide = 60;
    static constexpr int columnWidth = 700;
    static constexpr int rowSpacing = 12;
    static constexpr int greetingRadius = 16;
    static constexpr int fieldRadius = 20;
    static constexpr int fieldPaddingX = 12;
    static constexpr int fieldPaddingY = 8;
    static constexpr int chipPaddingX = 14;
    static constexpr int chipPaddingY = 8;
    static constexpr int overlayRadius = 12;
    static constexpr int menuRadius = 8;
    static constexpr int cardRadius = 10;
    static constexpr int controlRadius = 6;
    static constexpr int focusRingWidth = 3;

private:
    void rebuild();

    QFont bodyFont() const;

    bool m_dark = false;
    bool m_hasIncreasedContrast = false;
    Observed<int> m_revision{0}; // of the palette
    std::optional<QColor> m_accent;
    std::array<QColor, static_cast<size_t>(ColorRole::Count_)> m_palette;
    Observed<QFont> m_bodyFont;
    Observed<qreal> m_zoom{1};
    Observed<std::optional<QFont>> m_ownMonospaced;
    mutable std::optional<QFont> m_monospaced;
    EmojiFont m_emojiFont;
    Icons m_icons;
    Motion m_motion;
};

} // namespace platform
