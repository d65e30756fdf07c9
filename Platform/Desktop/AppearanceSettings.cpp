// SPDX-License-Identifier: MIT
#include "Platform/Desktop/AppearanceSettings.h"

#include "Platform/Desktop/Linux/SessionBus.h"
#include "Platform/Desktop/Linux/SettingsPortal.h"

#include <QEvent>

#include <algorithm>
#include <array>

namespace platform {

namespace {

/// The selection colours of Qt's own palettes: a desktop that has them has chosen none.
constexpr std::array<QRgb, 2> toolkitHighlights = {0xff308cc6, 0xff000080};

bool isSetByProgram(const QPalette& palette, QPalette::ColorRole role) {
    return palette.isBrushSet(QPalette::Active, role);
}

} // namespace

AppearanceSettings::AppearanceSettings(Palette palette)
    : m_portal(std::make_unique<SettingsPortal>())
    , m_readPalette(std::move(palette)) {
    readPalette();
    qApp->installEventFilter(this);
}

AppearanceSettings::~AppearanceSettings() = default;

void AppearanceSettings::start() {
    m_portal->start(
        sessionBus(), [this](const DesktopAppearance& desktop) { follow(desktop); });
}

void AppearanceSettings::settle() {
    m_portal->settle();
}

void AppearanceSettings::follow(const DesktopAppearance& desktop) {
    m_desktop = desktop;
    update();
}

bool AppearanceSettings::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp)
        readPalette();
    else if (event->type() == QEvent::ApplicationFontChange && watched == qApp)
        update();
    return false;
}

void AppearanceSettings::readPalette() {
    const QPalette palette = m_readPalette();
    if (!isSetByProgram(palette, QPalette::Window) &&
        !isSetByProgram(palette, QPalette::WindowText)) {
        m_palette.isDark = palette.color(QPalette::WindowText).lightness() >
                           palette.color(QPalette::Window).lightness();
    }
    if (!isSetByProgram(palette, QPalette::Highlight)) {
        const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
        const bool isChosen = std::find(toolkitHighlights.begin(), toolkitHighlights.end(),
                                        highlight.rgb()) == toolkitHighlights.end();
        m_palette.accent = isChosen ? std::optional(QColor(highlight.rgb())) : std::nullopt;
    }
    update();
}

void AppearanceSettings::update() {
    m_isDark = m_desktop.isDark.value_or(m_palette.isDark.value_or(false));
    m_accent = m_desktop.accent ? m_desktop.accent : m_palette.accent;
    m_reducesMotion = m_desktop.reducesMotion.value_or(false);
    m_font = m_desktop.font.value_or(QGuiApplication::font());
    m_monospacedFont = m_desktop.monospacedFont;
    m_increasesContrast = m_desktop.increasesContrast.value_or(false);
    m_windowButtons = m_desktop.windowButtons.value_or(QStringLiteral(":close"));
}

} // namespace platform
