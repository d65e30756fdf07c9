// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/LanguageModel/LlamaServer/LlamaServerPaths.h"
#include "tests/support/ModelMaker.h"

#include <QTemporaryDir>

namespace tests {

/// The real engine's program: TELLWICK_TEST_ENGINE, else the one beside the build, else on PATH.
std::optional<QString> engineProgram();

/// Why tests of the real engine cannot run; nothing when they can, and nothing when they must.
std::optional<QString> reasonToSkipEngineTests();

/// Folders of a test's own with a model in them and the way to the engine.
class EngineFolders {
public:
    EngineFolders();

    platform::LlamaServerPaths paths() const;

    void setModel(const TinyModel& model) const { setModelFile(modelFile(model)); }
    void setModelFile(const QByteArray& bytes) const;

    /// Puts a shell script in the engine's place. "$ENGINE" in it is the real program.
    void setEngineScript(const QByteArray& script) const;
    /// Puts a script there that lets the engine write down each prompt that it gets.
    void recordPrompts() const;
    /// The prompts as the model got them, in order.
    QByteArrayList recordedPrompts() const;

    /// Where the engine's socket is while there is one.
    QString socketPath() const;

    QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};

/// The children of a process, zombies not counted.
QList<qint64> childrenOf(qint64 process);

/// Whether the process is there, and not only as a zombie.
bool isRunning(qint64 process);

} // namespace tests

/// Skips the whole program's tests where there is no engine; fails them where there has to be one.
/// The first thing in initTestCase().
#define REQUIRE_ENGINE()                                                                           \
    do {                                                                                           \
        if (const auto reason = tests::reasonToSkipEngineTests())                                  \
            QSKIP(qPrintable(*reason));                                                            \
        QVERIFY2(tests::engineProgram(), "TELLWICK_REQUIRE_ENGINE is set and there is no engine"); \
    } while (false)
