// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/TaskScope.h"
#include "Platform/Desktop/UserDirectories.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerPaths.h"
#include "Setup/EngineInstaller.h"
#include "Setup/ModelDownload.h"
#include "Setup/ModelFolder.h"
#include "Setup/ProgramPaths.h"
#include "Setup/SetupState.h"
#include "Setup/TransferRate.h"

#include <QStringList>
#include <QTimer>

#include <memory>

namespace setup {

/// What the set-up works with.
struct SetupSurroundings {
    platform::UserDirectories directories;
    ProgramPaths programs;
    quint64 machineMemory = 0; ///< in bytes
    ModelDownload::Limits limits;

    /// The user's folders, and what lies beside the running program, which is in
    /// libexec/tellwick. Asked after the application object has been made.
    static SetupSurroundings ofThisProgram();
};

/// Does what the user asks of the set-up, and keeps the state that its window shows. Main thread.
///
/// What is under way ends with it; what has come of the model is kept.
class SetupController {
public:
    /// Throws a SetupError where the list of models cannot be read.
    ///
    /// @param tellwickArguments what Tellwick is started with.
    SetupController(platform::MainExecutor& executor, const SetupSurroundings& surroundings,
                    QStringList tellwickArguments = {});
    SetupController(const SetupController&) = delete;
    SetupController& operator=(const SetupController&) = delete;
    ~SetupController();

    const SetupState& state() const { return m_state; }
    /// They call this, which outlives them.
    SetupActions actions();

private:
    void choose(qsizetype index);
    void download();
    void pause();
    void useFile(const QString& path);
    void installEngine();
    void openTellwick() const;
    void notNow() const;

    platform::Task<void> fetch(ModelOffer offer);
    platform::Task<void> install();
    /// Looks what is there while no model is being fetched.
    void look();
    void stopFetching();
    void askAgain() const;
    void follow(ModelPhase phase, qint64 received);
    void tick();
    const ModelOffer& chosenOffer() const;
    bool isFetching() const;

    platform::MainExecutor& m_executor;
    SetupSurroundings m_surroundings;
    QStringList m_tellwickArguments;
    platform::LlamaServerPaths m_paths;
    ModelFolder m_folder;
    ModelDownload m_download;
    EngineInstaller m_installer;
    SetupState m_state;
    bool m_wantsChosen = false; ///< the user has chosen an offer, whatever is there already
    TransferRate m_rate;
    QTimer m_everySecond;
    std::unique_ptr<platform::TaskScope> m_fetching; ///< what is under way goes with its scope
    std::unique_ptr<platform::TaskScope> m_installing;
};

} // namespace setup
