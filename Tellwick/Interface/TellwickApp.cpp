// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/TellwickApp.h"

#include "Platform/Desktop/FontWarmUp.h"
#include "Platform/Desktop/OwnFrame.h"
#include "Platform/Desktop/PathTexts.h"
#include "Platform/Desktop/SingleInstance.h"
#include "Platform/Desktop/WindowActivation.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"
#include "Platform/Observation/Observer.h"
#include "Tellwick/Backends/OllamaBackend.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Core/AppConfig.h"
#include "Tellwick/Interface/AppIcon.h"

#include <QApplication>
#include <QShortcut>
#include <QToolTip>
#include <QWindow>

#include <cmath>
#include <cstdio>

namespace tellwick {

using namespace Qt::StringLiterals;

static constexpr auto applicationFolder = "tellwick";

/// The window round the window's content; null where the desktop draws one.
static std::unique_ptr<platform::WindowFrame> windowFrame(const platform::Theme& theme) {
    auto setMargins = platform::ownFrame();
    return setMargins ? std::make_unique<platform::WindowFrame>(theme, std::move(setMargins))
                      : nullptr;
}

static QPalette toolTipPalette(const platform::Theme& theme) {
    QPalette palette = QToolTip::palette();
    for (const auto role : {QPalette::ToolTipBase, QPalette::Window})
        palette.setColor(role, theme.color(platform::ColorRole::Popover));
    for (const auto role : {QPalette::ToolTipText, QPalette::WindowText})
        palette.setColor(role, theme.color(platform::ColorRole::Label));
    return palette;
}

TellwickApp::TellwickApp(QApplication& application)
    : m_directories(platform::UserDirectories::ofThisUser(applicationFolder))
    , m_systemModel(platform::makeSystemLanguageModel(m_network, m_directories,
                                                      QCoreApplication::applicationDirPath()))
    , m_container(conversationStore(platform::toText(m_directories.dataHome())))
    , m_context(m_container)
    , m_frame(windowFrame(m_theme))
    , m_window({m_theme, m_urlOpener, m_windowButtons}, [this] { return makeViewModel(); })
    , m_terminationSignals([] { QCoreApplication::quit(); }) {
    m_appearance.start();
    platform::observe(&m_observers, [this] {
        m_theme.setDark(m_appearance.isDark());
        m_theme.setAccent(m_appearance.accent());
        m_theme.setIncreasedContrast(m_appearance.increasesContrast());
        m_theme.motion().setEnabled(!m_appearance.reducesMotion());
        m_theme.setMonospacedFont(m_appearance.monospacedFont());
        m_theme.setBodyFont(m_appearance.font());
        if (m_frame)
            m_windowButtons = platform::WindowButtonLayout::parsed(m_appearance.windowButtons());
    });
    platform::observe(
        &m_observers,
        [this] {
            QToolTip::setFont(m_theme.font(platform::TextStyle::Caption));
            QToolTip::setPalette(toolTipPalette(m_theme));
        });
    QObject::connect(&application, &QGuiApplication::fontDatabaseChanged, &m_observers,
                     [this] { m_theme.setBodyFont(m_appearance.font()); });
    makeShortcuts(application);
    m_window.resize(defaultWidth, defaultHeight);
    if (m_frame)
        m_frame->setContent(m_window);
    setAppIcon(m_window, m_theme.icons());
}

void TellwickApp::makeShortcuts(QApplication& application) {
    const auto on = [this](QKeyCombination keys, auto action) {
        auto* shortcut = new QShortcut(QKeySequence(keys), &m_window);
        QObject::connect(shortcut, &QShortcut::activated, &m_window, action);
    };
    on(
        Qt::CTRL | Qt::Key_Q, [&application] { application.quit(); });
    on(
        Qt::CTRL | Qt::Key_W, [this] { m_window.window()->close(); });
    const auto zoomBy = [this](int steps) {
        m_theme.setZoom(m_theme.zoom() * std::pow(1.1, steps));
    };
    m_window.onZoom(zoomBy);
    for (const auto plus : {Qt::Key_Plus, Qt::Key_Equal})
        on(
            Qt::CTRL | plus, [zoomBy] { zoomBy(1); });
    on(
        Qt::CTRL | Qt::Key_Minus, [zoomBy] { zoomBy(-1); });
    on(Qt::CTRL | Qt::Key_0, [this] { m_theme.setZoom(1); });
}

std::unique_ptr<ChatViewModel> TellwickApp::makeViewModel() {
    const ModelManager::Sources models{*m_systemModel, m_network.scope(),
                                       [this] { return OllamaBackend::discover(m_network); },
                                       [this](const OllamaModelEntry& entry) {
                                           return std::make_shared<OllamaBackend>(entry, m_network);
                                       }};
    return std::make_unique<ChatViewModel>(m_context, models, m_mainExecutor);
}

void TellwickApp::openWindow(const QByteArray& activationToken) {
    m_appearance.settle();
    platform::flushObservers(&m_observers);
    QWidget& window = *m_window.window();
    if (window.isVisible())
        platform::activateWindow(*window.windowHandle(), activationToken);
    else
        window.show();
}

int TellwickApp::main(int argc, char** argv) {
    const QByteArray token = platform::activationToken();
    platform::SingleInstance instance(platform::toTexts(
        platform::UserDirectories::ofThisUser(applicationFolder).runtimeFolders()));
    using Claim = platform::SingleInstance::Claim;
    const auto claim = instance.claim(token);
    if (claim == Claim::HandedOver)
        return 0;
    if (claim == Claim::Unanswered) {
        std::fputs("Tellwick is already running and does not answer.\n", stderr);
        return 1;
    }

    const std::jthread fonts = platform::warmUpFonts();
    QCoreApplication::setApplicationName(AppConfig::appName());
    QCoreApplication::setApplicationVersion(QStringLiteral(TELLWICK_VERSION));
    QGuiApplication::setDesktopFileName(u"tellwick"_s);
    QApplication application(argc, argv);
    TellwickApp tellwick(application);
    instance.onActivated([&tellwick](const QByteArray& given) { tellwick.openWindow(given); });
    tellwick.openWindow({});
    return application.exec();
}

} // namespace tellwick
