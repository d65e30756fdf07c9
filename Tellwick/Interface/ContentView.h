// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Tellwick/Interface/Environment.h"

#include <functional>
#include <memory>

namespace tellwick {

class ChatView;
class ChatViewModel;

/// The root view of the window. It makes the window's one conversation controller when it first
/// appears, keeps it for its life, and shows the chat screen with it.
class ContentView final : public platform::Surface, public platform::AccessibleElement {
    Q_OBJECT

public:
    using MakeViewModel = std::function<std::unique_ptr<ChatViewModel>()>;

    /// @param services outlive the view, and so does all that the function refers to.
    ContentView(const Services& services, MakeViewModel makeViewModel);
    ~ContentView() override;

    /// Called when the wheel is turned with Ctrl held, with the notches: up makes text larger.
    void onZoom(std::function<void(int)> zoom) { m_zoom = std::move(zoom); }

    QAccessible::Role accessibleRole() const override {
        return isWindow() ? QAccessible::Window : QAccessible::Client;
    }

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    MakeViewModel m_makeViewModel;
    std::unique_ptr<ChatViewModel> m_vm;
    platform::OverlayHost* m_overlays;
    Environment m_environment;
    ChatView* m_chat = nullptr;
    std::function<void(int)> m_zoom;
    int m_turned = 0; // of a notch, in eighths of a degree
};

} // namespace tellwick
