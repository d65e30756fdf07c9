// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Platform/Widgets/Controls/WindowButtons.h"
#include "Setup/SetupState.h"

#include <optional>

namespace platform {
class Button;
class HeaderBar;
class ScrollArea;
} // namespace platform

namespace setup {

class ModelSection;
class StatusRow;

/// The window of the set-up: what is to be fetched and installed, how far that is, and the ways
/// out.
///
/// Return presses the default button: what brings the set-up further or, when nothing is left to
/// do, "Open Tellwick". Escape closes. What is being fetched when the window goes is paused.
class SetupView final : public platform::Surface, public platform::AccessibleElement {
    Q_OBJECT

public:
    static constexpr int defaultWidth = 480;

    using WindowButtonsWished = platform::Observed<std::optional<platform::WindowButtonLayout>>;

    /// @param windowButtons the buttons that the window's header has as its title bar; none: the
    /// desktop draws one.
    /// @param state has its offers, and outlives the view, as do theme and buttons.
    SetupView(const platform::Theme& theme, const WindowButtonsWished& windowButtons,
              const SetupState& state, SetupActions actions);
    ~SetupView() override;

    /// With everything in view.
    QSize sizeHint() const override;

    QAccessible::Role accessibleRole() const override {
        return isWindow() ? QAccessible::Window : QAccessible::Client;
    }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* content();
    QWidget* hero();
    QWidget* engineSection();
    QWidget* bottomBar();
    void showEngine(QWidget* section);

    bool isReady() const;
    bool isUnderWay() const;
    platform::Button* defaultButton() const;
    /// Does this, and leaves unless something is still to be seen here.
    void leaveBy(const std::function<void()>& action);

    const SetupState& m_state;
    const SetupActions m_actions;
    platform::HeaderBar* m_header;
    platform::ScrollArea* m_scroll;
    ModelSection* m_model;
    StatusRow* m_engine;
    platform::Button* m_notNow;
    platform::Button* m_open;
    QWidget* m_bottom;
    bool m_engineWasMissing = false;
};

} // namespace setup
