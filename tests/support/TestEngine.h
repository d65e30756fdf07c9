// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Http/NetworkThread.h"
#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerModel.h"
#include "tests/support/ModelMaker.h"
#include "tests/support/TaskRunner.h"

#include <QTemporaryDir>

namespace tests {

/// The real engine's program: TELLWICK_TEST_ENGINE, else the one beside the build, else on PATH.
std::optional<QString> engineProgram();

// What the models' template makes of the instructions and of a turn.
QByteArray instructed(const QByteArray& text);
QByteArray turn(const QByteArray& prompt);

/// Folders of a test's own with a model in them and the way to the engine.
class EngineFolders {
public:
    /// A script that is the real engine.
    static constexpr auto realEngine = "exec \"$ENGINE\" \"$@\"\n";

    /// With the model of one sentence, and the real engine.
    EngineFolders();
    /// The folders that another process has made.
    static platform::LlamaServerPaths pathsIn(const QString& folder);

    /// As much memory as the models here need for the smallest context, of 2,048 tokens.
    static platform::MachineMemory littleMemory() {
        return {.total = 8'000'000'000, .available = 317'500'000};
    }

    platform::LlamaServerPaths paths() const { return pathsIn(m_folder.path()); }

    void setModel(const TinyModel& model) const { setModelFile(modelFile(model)); }
    void setModelFile(const QByteArray& bytes) const;

    /// Puts a shell script in the engine's place. "$ENGINE" in it is the real program.
    void setEngineScript(const QByteArray& script) const;
    /// Puts a script there that lets the engine write down each prompt that it gets.
    void recordPrompts() const;
    /// The prompts as the model got them, in order.
    QByteArrayList recordedPrompts() const;

    /// Where the engine's socket is while there is one.
    QString socketPath() const { return path(QStringLiteral("run/engine.sock")); }
    /// Asks the running engine by a connection of its own, and gives the response's body.
    QByteArray get(const QByteArray& target) const;

    /// The tokens of prompts that the engine, started with --metrics, has read so far, by its own
    /// count; 0 where it is not there yet.
    int tokensRead() const;

    QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};

/// What has come of a reply so far.
using Heard = Seen<platform::TextSnapshot>;

/// The on-device model as the program uses it, and a conversation with it that is heard on the
/// test's thread.
class EngineChat {
public:
    explicit EngineChat(const platform::LlamaServerPaths& paths,
                        const platform::EngineLimits& limits = {})
        : model(network, paths, limits) {}

    /// Begins another conversation, in which ask() goes on.
    void begin(const QString& instructions = QStringLiteral("Be kind.")) {
        session = model.makeSession(instructions);
    }
    std::shared_ptr<Heard> ask(const QString& prompt,
                               const platform::GenerationOptions& options = {}) {
        if (!session)
            begin();
        return hear(session->streamResponse(prompt, options));
    }
    std::shared_ptr<Heard> hear(platform::AsyncStream<platform::TextSnapshot> reply) {
        const auto heard = std::make_shared<Heard>();
        m_listeners->start(consume(std::move(reply), heard));
        return heard;
    }
    /// Nobody reads the replies any more that are under way.
    void stopHearing() { m_listeners.emplace(m_executor); }

private:
    platform::MainExecutor m_executor;

public:
    platform::NetworkThread network;

private:
    std::optional<platform::TaskScope> m_listeners{std::in_place, m_executor};

public:
    platform::LlamaServerModel model;
    std::shared_ptr<platform::LanguageModelSession> session;
};

/// Waits for the end of a reply and tells its text, or "Error: " and its error.
QString outcomeOf(const std::shared_ptr<Heard>& heard);
/// Waits for so many snapshots of a reply.
bool hasSaid(const std::shared_ptr<Heard>& heard, qsizetype snapshots = 1);
/// Whether each snapshot went on from the one before.
bool everGrew(const Heard& heard);

/// The children of a process, zombies not counted.
QList<qint64> childrenOf(qint64 process);

/// The engine's process, or the script in its place; 0 when there is none.
qint64 engineProcess();

/// Whether the process is there, and not only as a zombie.
bool isRunning(qint64 process);

} // namespace tests

/// Skips the whole program's tests where there is no engine; fails them where there has to be one.
/// The first thing in initTestCase().
#define REQUIRE_ENGINE()                                                                           \
    do {                                                                                           \
        if (!tests::engineProgram() && qEnvironmentVariable("TELLWICK_REQUIRE_ENGINE") != u"1")    \
            QSKIP("llama-server is not installed (scripts/get-engine gets it)");                   \
        QVERIFY2(tests::engineProgram(), "TELLWICK_REQUIRE_ENGINE is set and there is no engine"); \
    } while (false)
