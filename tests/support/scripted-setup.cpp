// SPDX-License-Identifier: MIT
// Usage: scripted-setup offered|fetching|paused|checking|ready|failed
// The set-up's real window over a set-up that is acted: nothing is fetched and nothing installed,
// and it looks the same each time. For the pictures of the documents.
#include "Platform/Desktop/PathTexts.h"
#include "Setup/EngineInstaller.h"
#include "Setup/SetupApp.h"

#include <QApplication>
#include <QDir>

using namespace Qt::StringLiterals;
using setup::EnginePhase;
using setup::ModelPhase;

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QString phase = QCoreApplication::arguments().value(1);
    const QMap<QString, ModelPhase> phases{
        {u"offered"_s, ModelPhase::Offered}, {u"fetching"_s, ModelPhase::Fetching},
        {u"paused"_s, ModelPhase::Paused},   {u"checking"_s, ModelPhase::Checking},
        {u"ready"_s, ModelPhase::Ready},     {u"failed"_s, ModelPhase::Failed}};
    if (!phases.contains(phase))
        return 2;

    const QString data = QDir::homePath() + u"/.local/share/tellwick"_s;
    setup::SetupState state;
    state.offers = QList<setup::ModelOffer>{{u"Qwen2.5 1.5B Instruct"_s,
                                             u"Apache-2.0"_s,
                                             1'117'320'736,
                                             QUrl(u"https://huggingface.co/small.gguf"_s),
                                             {},
                                             0},
                                            {u"Qwen3 4B Instruct (2507)"_s,
                                             u"Apache-2.0"_s,
                                             2'497'281'120,
                                             QUrl(u"https://huggingface.co/large.gguf"_s),
                                             {},
                                             12'000'000'000}};
    state.chosen = 1;
    state.folder = data + u"/models"_s;
    state.room = 45'300'000'000;
    state.model = phases.value(phase);
    state.modelProblem =
        u"The on-device model could not be fetched: its server cannot be reached. With a network, "
        "try again."_s;
    state.received = 1'240'000'000;
    state.rate = 11'000'000;
    state.engine = phase == u"offered" ? EnginePhase::Missing : EnginePhase::Ready;
    state.engineOffer =
        setup::EngineInstaller({}, platform::toPath(data + u"/engine/bin"_s)).offer();

    const auto nothing = [] {};
    setup::SetupApp setup(application, state,
                          {.choose = [](qsizetype) {},
                           .download = nothing,
                           .pause = nothing,
                           .useFile = [](const QString&) {},
                           .installEngine = nothing,
                           .openTellwick = nothing,
                           .notNow = nothing});
    setup.openWindow({});
    return QApplication::exec();
}
