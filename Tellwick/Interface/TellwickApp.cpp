// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/TellwickApp.h"

#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Desktop/AppearanceSettings.h"
#include "Platform/Desktop/FontWarmUp.h"
#include "Platform/Desktop/SingleInstance.h"
#include "Platform/Desktop/TerminationSignals.h"
#include "Platform/Desktop/UrlOpener.h"
#include "Platform/Desktop/UserDirectories.h"
#include "Platform/Desktop/WindowActivation.h"
#include "Platform/Http/NetworkThread.h"
#include "Platform/LanguageModel/MakeSystemLanguageModel.h"
#include "Platform/Observation/Observer.h"
#include "Platform/Store/ModelContext.h"
#include "Platform/Widgets/Look/Theme.h"
#include "Tellwick/Backends/OllamaBackend.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Core/AppConfig.h"
#include "Tellwick/Interface/ContentView.h"

#include <QApplication>
#include <QShortcut>
#include <QWindow>

#include <cstdio>

namespace tellwick {

using namespace Qt::StringLiterals;

namespace {

constexpr auto applicationFolder = "tellwick"_L1;

} // namespace

/// Every object of the program, in the order of making; they end in the opposite order. The window
/// goes first, with the conversation and its tasks, then what those use.
struct TellwickApp::Parts {
    explicit Parts(QApplication& application);

    std::unique_ptr<ChatViewModel> makeViewModel();

    // The desktop.
    platform::AppearanceSettings appearance;
    platform::Theme theme;
    platform::UrlOpener urlOpener;
    platform::UserDirectories directories;
    QObject observers;

    // What the conversation stands on.
    platform::MainExecutor mainExecutor;
    platform::NetworkThread network;
    const std::unique_ptr<platform::SystemLanguageModel> systemModel;
    platform::ModelContainer container;
    platform::ModelContext context;

    ContentView window;
    platform::TerminationSignals terminationSignals;
};

TellwickApp::Parts::Parts(QApplication& application)
    : directories(platform::UserDirectories::ofThisUser(applicationFolder))
    , systemModel(platform::makeSystemLanguageModel(network, directories,
                                                    QCoreApplication::applicationDirPath()))
    , container(conversationStore(directories.dataHome()))
    , context(container)
    , window({theme, urlOpener}, [this] { return makeViewModel(); })
    , terminationSignals([] { QCoreApplication::quit(); }) {
    appearance.start();
    theme.setBodyFont(application.font());
    platform::observe(
        &observers,
        [this] {
            theme.setDark(appearance.isDark());
            theme.setAccent(appearance.accent());
            theme.motion().setEnabled(!appearance.reducesMotion());
        });
    QObject::connect(&application, &QGuiApplication::fontDatabaseChanged, &observers,
                     [this, &application] { theme.setBodyFont(application.font()); });
    auto* quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), &window);
    QObject::connect(quit, &QShortcut::activated, &application, &QCoreApplication::quit);
    window.resize(defaultWidth, defaultHeight);
}

std::unique_ptr<ChatViewModel> TellwickApp::Parts::makeViewModel() {
    const ModelManager::Sources models{*systemModel, network.scope(),
                                       [this] { return OllamaBackend::discover(network); },
                                       [this](const OllamaModelEntry& entry) {
                                           return std::make_shared<OllamaBackend>(entry, network);
                                       }};
    return std::make_unique<ChatViewModel>(context, models, mainExecutor);
}

TellwickApp::TellwickApp(QApplication& application)
    : m_parts(std::make_unique<Parts>(application)) {}

TellwickApp::~TellwickApp() = default;

void TellwickApp::openWindow(const QByteArray& activationToken) {
    m_parts->appearance.settle();
    platform::flushObservers(&m_parts->observers);
    if (m_parts->window.isVisible())
        platform::activateWindow(*m_parts->window.windowHandle(), activationToken);
    else
        m_parts->window.show();
}

int TellwickApp::main(int argc, char** argv) {
    const QByteArray token = platform::activationToken();
    platform::SingleInstance instance(
        platform::UserDirectories::ofThisUser(applicationFolder).runtimeFolders());
    switch (instance.claim(token)) {
    case platform::SingleInstance::Claim::First:
        break;
    case platform::SingleInstance::Claim::HandedOver:
        return 0;
    case platform::SingleInstance::Claim::Unanswered:
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
