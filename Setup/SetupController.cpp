// SPDX-License-Identifier: MIT
#include "Setup/SetupController.h"

#include "Platform/Desktop/PathTexts.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerFiles.h"
#include "Platform/LanguageModel/LlamaServer/MachineMemory.h"
#include "Setup/ModelList.h"
#include "Setup/SetupError.h"

#include <QCoreApplication>
#include <QProcess>

#include <chrono>
#include <fstream>

namespace setup {

using namespace Qt::StringLiterals;
using platform::toPath;
using platform::toText;

SetupSurroundings SetupSurroundings::ofThisProgram() {
    const auto directories = platform::UserDirectories::ofThisUser(applicationFolder);
    const auto folder = toPath(QCoreApplication::applicationDirPath());
    return {.directories = directories,
            .programs = ProgramPaths(folder.parent_path().parent_path()),
            .machineMemory = platform::MachineMemory::now().total,
            .limits = {}};
}

SetupController::SetupController(platform::MainExecutor& executor,
                                 const SetupSurroundings& surroundings,
                                 QStringList tellwickArguments)
    : m_executor(executor)
    , m_surroundings(surroundings)
    , m_tellwickArguments(std::move(tellwickArguments))
    , m_paths(platform::LlamaServerPaths::of(surroundings.directories,
                                             toText(surroundings.programs.programs)))
    , m_folder(surroundings.directories)
    , m_download(m_folder, surroundings.limits)
    , m_installer(surroundings.programs.engineInstaller, surroundings.directories.ownPrograms()) {
    m_state.offers = readModelList(toText(surroundings.programs.modelList));
    m_state.chosen = firstOffer(m_state.offers.value(), m_folder, surroundings.machineMemory);
    m_state.folder = toText(m_folder.path());
    m_state.engineOffer = m_installer.offer();
    if (m_paths.program())
        m_state.engine = EnginePhase::Ready;
    m_everySecond.setInterval(std::chrono::seconds(1));
    QObject::connect(&m_everySecond, &QTimer::timeout, &m_everySecond, [this] { tick(); });
    look();
}

SetupController::~SetupController() = default;

SetupActions SetupController::actions() {
    return {.choose = [this](qsizetype index) { choose(index); },
            .download = [this] { download(); },
            .pause = [this] { pause(); },
            .useFile = [this](const QString& path) { useFile(path); },
            .installEngine = [this] { installEngine(); },
            .openTellwick = [this] { openTellwick(); },
            .notNow = [this] { notNow(); }};
}

const ModelOffer& SetupController::chosenOffer() const {
    return m_state.offers.value().at(m_state.chosen);
}

bool SetupController::isFetching() const {
    return m_state.model == ModelPhase::Fetching || m_state.model == ModelPhase::Checking;
}

void SetupController::look() {
    const auto file = platform::findModelFile(m_surroundings.directories.dataFolders());
    const auto link = m_folder.linkedFile();
    const bool isLink = file && file->path == m_folder.modelPath() && link;
    const bool isOwn = isLink || (file && file->path != m_folder.modelPath());
    const auto fetched = [&](const ModelOffer& offer) {
        return file && !isOwn && file->size == static_cast<std::uintmax_t>(offer.size);
    };
    const QList<ModelOffer>& offers = m_state.offers.value();
    for (qsizetype index = 0; index < offers.size() && !m_wantsChosen; ++index)
        if (fetched(offers.at(index)))
            m_state.chosen = index;
    const ModelOffer& offer = chosenOffer();
    const qint64 there = m_folder.sizeOfPart(offer);
    const bool serves = file && (!m_wantsChosen || fetched(offer));
    m_state.ownFile = isOwn ? toText(isLink ? *link : file->path) : QString();
    m_state.room = m_folder.room();
    m_state.received = fetched(offer) ? offer.size : there;
    m_state.modelProblem = QString();
    m_state.model = serves      ? ModelPhase::Ready
                    : there > 0 ? ModelPhase::Paused
                                : ModelPhase::Offered;
}

void SetupController::choose(qsizetype index) {
    if (isFetching() || index < 0 || index >= m_state.offers.value().size())
        return;
    m_wantsChosen = true;
    m_state.chosen = index;
    look();
}

void SetupController::download() {
    if (isFetching())
        return;
    askAgain();
    m_state.modelProblem = QString();
    m_state.model = ModelPhase::Fetching;
    m_rate.reset();
    m_everySecond.start();
    m_fetching = std::make_unique<platform::TaskScope>(m_executor);
    m_fetching->start(fetch(chosenOffer()));
}

platform::Task<void> SetupController::fetch(ModelOffer offer) {
    QString problem;
    try {
        co_await m_download.fetch(
            offer, [this](ModelPhase phase, qint64 received) { follow(phase, received); });
        m_wantsChosen = false;
    } catch (const platform::LocalizedError& error) {
        problem = error.errorDescription();
    }
    m_everySecond.stop();
    m_state.rate = 0;
    look();
    if (!problem.isEmpty()) {
        m_state.modelProblem = problem;
        m_state.model = ModelPhase::Failed;
    }
}

void SetupController::follow(ModelPhase phase, qint64 received) {
    m_state.received = received;
    m_state.model = phase;
}

void SetupController::tick() {
    m_rate.add(m_state.received);
    m_state.rate = m_rate.perSecond();
    m_state.room = m_folder.room();
}

void SetupController::stopFetching() {
    m_fetching.reset();
    m_everySecond.stop();
    m_state.rate = 0;
}

void SetupController::pause() {
    if (!isFetching())
        return;
    stopFetching();
    m_wantsChosen = true; // what is there already is not what was being fetched
    look();
}

void SetupController::useFile(const QString& path) {
    askAgain();
    stopFetching();
    QString problem;
    try {
        m_folder.link(toPath(path));
        m_wantsChosen = false;
    } catch (const SetupError& error) {
        problem = error.errorDescription();
    }
    look();
    if (!problem.isEmpty()) {
        m_state.modelProblem = problem;
        m_state.model = ModelPhase::Failed;
    }
}

void SetupController::installEngine() {
    if (m_state.engine == EnginePhase::Installing)
        return;
    askAgain();
    m_state.engineProblem = QString();
    m_state.engine = EnginePhase::Installing;
    m_installing = std::make_unique<platform::TaskScope>(m_executor);
    m_installing->start(install());
}

platform::Task<void> SetupController::install() {
    try {
        co_await m_installer.install();
        m_state.engine = EnginePhase::Ready;
    } catch (const platform::LocalizedError& error) {
        m_state.engineProblem = error.errorDescription();
        m_state.engine = EnginePhase::Failed;
    }
}

void SetupController::openTellwick() const {
    QProcess::startDetached(toText(m_surroundings.programs.tellwick), m_tellwickArguments);
}

void SetupController::notNow() const {
    std::error_code error;
    const auto file = notNowFile(m_surroundings.directories);
    std::filesystem::create_directories(file.parent_path(), error);
    std::ofstream{file};
    openTellwick();
}

/// Who sets something up wants to be told what is missing.
void SetupController::askAgain() const {
    std::error_code error;
    std::filesystem::remove(notNowFile(m_surroundings.directories), error);
}

} // namespace setup
