// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"

#include <QColor>
#include <QFont>
#include <QGuiApplication>
#include <QObject>
#include <QPalette>

#include <functional>
#include <memory>
#include <optional>

namespace platform {

class SettingsPortal;

/// The user's wishes about how programs look, as far as the desktop tells them: a field is none
/// where it says nothing.
struct DesktopAppearance {
    std::optional<bool> isDark{};
    std::optional<QColor> accent{};
    std::optional<bool> reducesMotion{};
    std::optional<bool> increasesContrast{};
    std::optional<QString> windowButtons{}; ///< as "appmenu:minimize,maximize,close"
    std::optional<QFont> font{};
    std::optional<QFont> monospacedFont{};

    friend bool operator==(const DesktopAppearance&, const DesktopAppearance&) = default;
};

/// How the user wants programs to look: observed state that follows the desktop while the program
/// runs.
///
/// What the desktop does not tell is taken from the application's palette, which speaks alone until
/// start(); roles that the program sets itself tell nothing. start() does not wait for the answer:
/// called right after the application object is made, it arrives while the window is built, and
/// settle() just before the window is shown takes it over, so that a dark desktop sees no light
/// window first.
///
/// Main thread only; made after the application object and destroyed before it.
class AppearanceSettings final : public QObject {
public:
    /// Gives the palette that the desktop wants.
    using Palette = std::function<QPalette()>;

    explicit AppearanceSettings(Palette palette = &QGuiApplication::palette);
    ~AppearanceSettings() override;

    /// Asks the desktop and follows it from here on. Called once.
    void start();
    /// Takes over an answer that has already come. Never waits.
    void settle();
    /// What the desktop tells, from here on.
    void follow(const DesktopAppearance& desktop);

    bool isDark() const { return m_isDark; }
    /// The desktop's accent colour; none where it has none.
    std::optional<QColor> accent() const { return m_accent; }
    /// Whether animations are unwanted.
    bool reducesMotion() const { return m_reducesMotion; }
    /// Whether a higher contrast is wanted.
    bool increasesContrast() const { return m_increasesContrast; }
    /// Which buttons title bars have, before and after a colon: "appmenu:minimize,maximize,close".
    QString windowButtons() const { return m_windowButtons; }
    /// The font of the desktop's own texts: what it tells or, without that, what Qt found.
    QFont font() const { return m_font; }
    /// The desktop's font for code, if it tells one.
    std::optional<QFont> monospacedFont() const { return m_monospacedFont; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void readPalette();
    void update();

    std::unique_ptr<SettingsPortal> m_portal;
    DesktopAppearance m_desktop;
    Palette m_readPalette;
    DesktopAppearance m_palette;
    Observed<bool> m_isDark{false};
    Observed<std::optional<QColor>> m_accent;
    Observed<bool> m_reducesMotion{false};
    Observed<bool> m_increasesContrast{false};
    Observed<QString> m_windowButtons;
    Observed<QFont> m_font;
    Observed<std::optional<QFont>> m_monospacedFont;
};

} // namespace platform
