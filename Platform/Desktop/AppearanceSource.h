// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>

#include <functional>
#include <memory>
#include <optional>

namespace platform {

/// The user's wishes about how programs look, as far as the desktop tells them: a field is none
/// where it says nothing.
struct DesktopAppearance {
    std::optional<bool> isDark{};
    std::optional<QColor> accent{};
    std::optional<bool> reducesMotion{};
    std::optional<bool> increasesContrast{};

    friend bool operator==(const DesktopAppearance&, const DesktopAppearance&) = default;
};

/// Where the wishes are asked for.
///
/// A contract: each operating system has an implementation in a folder of its own. Main thread
/// only.
class AppearanceSource {
public:
    using Changed = std::function<void(const DesktopAppearance&)>;

    /// The source of the desktop that the program runs on.
    static std::unique_ptr<AppearanceSource> ofThisDesktop();

    AppearanceSource() = default;
    AppearanceSource(const AppearanceSource&) = delete;
    AppearanceSource& operator=(const AppearanceSource&) = delete;
    /// Nothing is told any more.
    virtual ~AppearanceSource();

    /// Asks, without waiting for the answer, and tells `changed` the answer and every change after
    /// it. Where there is nobody to ask, `changed` is never called. Called once.
    virtual void start(Changed changed) = 0;

    /// Tells at once, without waiting, an answer that has already come and would otherwise be told
    /// by a later turn of the event loop.
    virtual void settle() {}
};

} // namespace platform
