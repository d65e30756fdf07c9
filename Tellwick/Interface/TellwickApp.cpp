// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/TellwickApp.h"

#include "Platform/Desktop/FontWarmUp.h"
#include "Platform/Desktop/PathTexts.h"
#include "Platform/Desktop/SingleInstance.h"
#include "Platform/Desktop/WindowActivation.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"
#include "Tellwick/Backends/OllamaBackend.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Core/AppConfig.h"

#include <QApplication>

namespace tellwick {

using namespace Qt::StringLiterals;

static constexpr auto applicationFolder = "tellwick";

TellwickApp::TellwickApp(QApplication& application)
    : m_app(application)
    , m_directories(platform::UserDirectories::ofThisUser(applicationFolder))
    , m_systemModel(platform::makeSystemLanguageModel(m_network, m_directories,
                                                      QCoreApplication::applicationDirPath()))
    , m_container(conversationStore(platform::toText(m_directories.dataHome())))
    , m_context(m_container)
    , m_window({m_app.theme(), m_urlOpener, m_app.windowButtons()},
               [this] { return makeViewModel(); })
    , m_terminationSignals([] { QCoreApplication::quit(); }) {
    m_window.onZoom([this](int steps) { m_app.zoomBy(steps); });
    m_window.resize(defaultWidth, defaultHeight);
    m_app.setContent(m_window);
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
    m_app.openWindow(activationToken);
}

int TellwickApp::main(int argc, char** argv) {
    const QByteArray token = platform::activationToken();
    platform::SingleInstance instance(platform::toTexts(
        platform::UserDirectories::ofThisUser(applicationFolder).runtimeFolders()));
    if (const auto status = platform::endForOther(instance, token, "Tellwick"))
        return *status;

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
