// SPDX-License-Identifier: MIT
#include "Setup/SetupApp.h"

#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Desktop/FontWarmUp.h"
#include "Platform/Desktop/PathTexts.h"
#include "Platform/Desktop/SingleInstance.h"
#include "Platform/Desktop/UserDirectories.h"
#include "Platform/Desktop/WindowActivation.h"
#include "Platform/Observation/Observer.h"
#include "Setup/SetupController.h"
#include "Setup/SetupError.h"
#include "Setup/SetupTexts.h"

#include <QApplication>
#include <QProcess>
#include <QScreen>

#include <cstdio>

namespace setup {

using namespace Qt::StringLiterals;

namespace {

constexpr auto instanceFolder = "tellwick-setup"; // its place is not Tellwick's
constexpr auto windowName = "Tellwick Set-up";

} // namespace

SetupApp::SetupApp(QApplication& application, const SetupState& state, SetupActions actions)
    : m_app(application)
    , m_window(m_app.theme(), m_app.windowButtons(), state, std::move(actions))
    , m_terminationSignals([] { QCoreApplication::quit(); }) {
    m_app.settle();
    platform::flushObservers(&m_window);
    const auto* screen = QGuiApplication::primaryScreen();
    m_window.resize(screen ? m_window.sizeHint().boundedTo(screen->availableSize())
                           : m_window.sizeHint());
    m_app.setContent(m_window);
}

int SetupApp::main(int argc, char** argv) {
    const QByteArray token = platform::activationToken();
    platform::SingleInstance instance(
        platform::toTexts(platform::UserDirectories::ofThisUser(instanceFolder).runtimeFolders()));
    if (const auto status = platform::endForOther(instance, token, windowName))
        return *status;

    const std::jthread fonts = platform::warmUpFonts();
    QCoreApplication::setApplicationName(texts::windowTitle());
    QCoreApplication::setApplicationVersion(QStringLiteral(TELLWICK_VERSION));
    QGuiApplication::setDesktopFileName(u"tellwick-setup"_s);
    QStringList arguments; // behind --open; taken before the toolkit takes some of them for its own
    for (int i = 2; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const bool isOnTheWayToTellwick = argc > 1;
    QApplication application(argc, argv);
    const auto surroundings = SetupSurroundings::ofThisProgram();
    try {
        platform::MainExecutor executor;
        SetupController controller(executor, surroundings, arguments);
        SetupApp setup(application, controller.state(), controller.actions());
        instance.onActivated([&setup](const QByteArray& given) { setup.openWindow(given); });
        setup.openWindow({});
        return QApplication::exec();
    } catch (const SetupError& error) {
        std::fprintf(stderr, "%s: %s\n", windowName, qUtf8Printable(error.errorDescription()));
        if (isOnTheWayToTellwick) // which does without
            QProcess::startDetached(platform::toText(surroundings.programs.tellwick), arguments);
        return 1;
    }
}

} // namespace setup
