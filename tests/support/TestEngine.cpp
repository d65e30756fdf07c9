// SPDX-License-Identifier: MIT
#include "tests/support/TestEngine.h"

#include "Platform/Desktop/Linux/UniqueFd.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>

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
    setModel(TinyModel::sentence());
}

platform::LlamaServerPaths EngineFolders::pathsIn(const QString& folder) {
    return {.dataFolders = {folder + u"/data"_s},
            .programFolders = {folder + u"/bin"_s},
            .runtimeFolders = {folder + u"/run"_s},
            .machineMemory = 8'000'000'000};
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

QByteArray EngineFolders::get(const QByteArray& target) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(socketPath());
    std::copy(path.begin(), path.end(), address.sun_path);
    const platform::UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const QByteArray request = "GET " + target + " HTTP/1.0\r\n\r\n";
    QByteArray response;
    if (connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        send(socket.get(), request.constData(), static_cast<size_t>(request.size()),
             MSG_NOSIGNAL) != request.size())
        return response;
    std::array<char, 4096> bytes{};
    while (const ssize_t count = recv(socket.get(), bytes.data(), bytes.size(), 0)) {
        if (count < 0)
            break;
        response.append(bytes.data(), count);
    }
    return response;
}

QString outcomeOf(const std::shared_ptr<Heard>& heard) {
    constexpr int limit = 30'000; // milliseconds; the machine may be busy with other tests
    if (!QTest::qWaitFor([&] { return heard->hasEnded; }, limit))
        return u"no end"_s;
    return heard->error ? u"Error: "_s + *heard->error : heard->text();
}

bool hasSaid(const std::shared_ptr<Heard>& heard, int snapshots) {
    constexpr int limit = 30'000;
    return QTest::qWaitFor([&] { return heard->snapshots >= snapshots; }, limit);
}

qint64 engineProcess() {
    return childrenOf(QCoreApplication::applicationPid()).value(0);
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
