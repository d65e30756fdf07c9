// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ContentView.h"

#include "Platform/Observation/Observer.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Core/AppConfig.h"
#include "Tellwick/Interface/ChatView.h"

#include <QWheelEvent>

namespace tellwick {

using platform::ColorRole;

ContentView::ContentView(const Services& services, MakeViewModel makeViewModel)
    : Surface(services.theme, ColorRole::Window)
    , m_makeViewModel(std::move(makeViewModel))
    , m_overlays(new platform::OverlayHost(services.theme, this))
    , m_environment{services, *m_overlays} {
    setWindowTitle(AppConfig::appName());
    setMinimumSize(360, 480);
    setAttribute(Qt::WA_OpaquePaintEvent);
    platform::observe(this, [this] {
        static_cast<void>(m_theme.color(ColorRole::Window));
        update();
    });
}

ContentView::~ContentView() {
    // The screens read the controller to their end.
    delete m_chat;
    delete m_overlays;
}

void ContentView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (m_vm)
        return;
    m_vm = m_makeViewModel();
    m_chat = new ChatView(m_environment, *m_vm, this);
    m_chat->setGeometry(rect());
    m_chat->show();
    m_overlays->raise();
    m_chat->focusField();
}

void ContentView::resizeEvent(QResizeEvent*) {
    if (m_chat)
        m_chat->setGeometry(rect());
}

void ContentView::wheelEvent(QWheelEvent* event) {
    if (!(event->modifiers() & Qt::ControlModifier) || !m_zoom) {
        event->ignore();
        return;
    }
    constexpr int notch = QWheelEvent::DefaultDeltasPerStep;
    m_turned += event->angleDelta().y();
    if (const int notches = m_turned / notch)
        m_zoom(notches);
    m_turned %= notch;
}

} // namespace tellwick
