// SPDX-License-Identifier: MIT
#include "tests/support/TestEngine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

namespace tests {

using namespace Qt::StringLiterals;

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    // A new file each time: a running engine keeps the old one.
    QFile::remove(path);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s cannot be written", qPrintable(path));
}

QByteArray processStatus(qint64 process) {
    QFile file(u"/proc/%1/stat"_s.arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2); // the name may hold anything
}

} // namespace

std::optional<QString> engineProgram() {
    const QString chosen = qEnvironmentVariable("TELLWICK_TEST_ENGINE");
    if (!chosen.isEmpty())
        return chosen;
    const QString name = platform::LlamaServerPaths::programName();
    QString found = QStandardPaths::findExecutable(name, {QStringLiteral(ENGINE_FOLDER)});
    if (found.isEmpty())
        found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? std::nullopt : std::optional(found);
}

std::optional<QString> reasonToSkipEngineTests() {
    if (engineProgram() || qEnvironmentVariable("TELLWICK_REQUIRE_ENGINE") == u"1")
        return std::nullopt;
    return u"llama-server is not installed (scripts/get-engine gets it)"_s;
}

EngineFolders::EngineFolders() {
    for (const QString& folder : {u"data/models"_s, u"bin"_s, u"prompts"_s})
        QDir().mkpath(path(folder));
    if (const auto program = engineProgram())
        QFile::link(*program, path(u"bin/llama-server"_s));
}

platform::LlamaServerPaths EngineFolders::paths() const {
    platform::LlamaServerPaths paths;
    paths.dataFolders = {path(u"data"_s)};
    paths.programFolders = {path(u"bin"_s)};
    paths.runtimeFolders = {path(u"run"_s)};
    paths.machineMemory = 8'000'000'000;
    return paths;
}

void EngineFolders::setModelFile(const QByteArray& bytes) const {
    writeFile(path(u"data/models/on-device.gguf"_s), bytes);
}

void EngineFolders::setEngineScript(const QByteArray& script) const {
    const QString file = path(u"bin/llama-server"_s);
    writeFile(file, "#!/bin/sh\nENGINE='" + engineProgram().value_or(QString()).toUtf8() + "'\n" +
                        script);
    QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void EngineFolders::recordPrompts() const {
    setEngineScript("exec \"$ENGINE\" \"$@\" --log-prompts-dir '" + path(u"prompts"_s).toUtf8() +
                    "'\n");
}

QByteArrayList EngineFolders::recordedPrompts() const {
    QByteArrayList prompts;
    const QFileInfoList files = QDir(path(u"prompts"_s)).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& info : files) {
        QFile file(info.filePath());
        if (file.open(QIODevice::ReadOnly))
            prompts.append(file.readAll());
    }
    return prompts;
}

QString EngineFolders::socketPath() const {
    return path(u"run/engine.sock"_s);
}

QList<qint64> childrenOf(qint64 process) {
    QList<qint64> children;
    const QStringList processes = QDir(u"/proc"_s).entryList(QDir::Dirs);
    for (const QString& entry : processes) {
        bool isNumber = false;
        const qint64 candidate = entry.toLongLong(&isNumber);
        if (!isNumber || !isRunning(candidate))
            continue;
        if (processStatus(candidate).split(' ').value(1).toLongLong() == process)
            children.append(candidate);
    }
    return children;
}

bool isRunning(qint64 process) {
    const QByteArray status = processStatus(process);
    return !status.isEmpty() && !status.startsWith('Z');
}

} // namespace tests
