// SPDX-License-Identifier: MIT
#include "tests/support/TestEngine.h"

#include "tests/support/Files.h"
#include "tests/support/HttpFixture.h"

#include <QStandardPaths>

#include <algorithm>

namespace tests {

using namespace Qt::StringLiterals;

namespace {

/// What the system tells of a process, behind its name; empty when it is not there.
QByteArrayList processStatus(qint64 process) {
    QFile file(u"/proc/%1/stat"_s.arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' '); // the name may hold anything
}

} // namespace

std::optional<QString> engineProgram() {
    const QString chosen = qEnvironmentVariable("TELLWICK_TEST_ENGINE");
    if (!chosen.isEmpty())
        return chosen;
    const QString name = u"llama-server"_s;
    QString found = QStandardPaths::findExecutable(name, {QStringLiteral(ENGINE_FOLDER)});
    if (found.isEmpty())
        found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? std::nullopt : std::optional(found);
}

QByteArray instructed(const QByteArray& text) {
    return "<|im_start|>system\n" + text + "<|im_end|>\n";
}

QByteArray turn(const QByteArray& prompt) {
    return "<|im_start|>user\n" + prompt + "<|im_end|>\n<|im_start|>assistant\n";
}

EngineFolders::EngineFolders() {
    for (const QString& folder : {u"bin"_s, u"prompts"_s})
        QDir().mkpath(path(folder));
    if (const auto program = engineProgram())
        QFile::link(*program, path(u"bin/llama-server"_s));
    setModel(TinyModel::sentence());
}

platform::LlamaServerPaths EngineFolders::pathsIn(const QString& folder) {
    return {.dataFolders = {folder + u"/data"_s},
            .programFolders = {folder + u"/bin"_s},
            .runtimeFolders = {folder + u"/run"_s},
            .memory =
                [] {
                    return platform::MachineMemory{8'000'000'000, 8'000'000'000};
                }};
}

void EngineFolders::setModelFile(const QByteArray& bytes) const {
    // A new file each time: a running engine keeps the old one.
    const QString file = path(u"data/models/on-device.gguf"_s);
    QFile::remove(file);
    writeBytes(file, bytes);
}

void EngineFolders::setEngineScript(const QByteArray& script) const {
    writeProgram(path(u"bin/llama-server"_s), "#!/bin/sh\nENGINE='" +
                                                  engineProgram().value_or(QString()).toUtf8() +
                                                  "'\n" + script);
}

void EngineFolders::recordPrompts() const {
    setEngineScript("exec \"$ENGINE\" \"$@\" --log-prompts-dir '" + path(u"prompts"_s).toUtf8() +
                    "'\n");
}

QByteArrayList EngineFolders::recordedPrompts() const {
    QByteArrayList prompts;
    for (const QFileInfo& info : QDir(path(u"prompts"_s)).entryInfoList(QDir::Files, QDir::Name))
        prompts.append(bytesOf(info.filePath()));
    return prompts;
}

QByteArray EngineFolders::get(const QByteArray& target) const {
    HttpFixture fixture;
    const platform::HttpClient client(*fixture.network,
                                      platform::HttpEndpoint::unixSocket(socketPath()));
    const auto outcome = fixture.run(client.data(platform::HttpRequest(target)));
    return outcome.value ? outcome.value->body : QByteArray();
}

int EngineFolders::tokensRead() const {
    const QByteArray metrics = get("/metrics");
    const QByteArray name = "\nllamacpp:prompt_tokens_total ";
    const qsizetype start = metrics.indexOf(name) + name.size();
    return metrics.mid(start, metrics.indexOf('\n', start) - start).toInt();
}

QString outcomeOf(const std::shared_ptr<Heard>& heard) {
    if (!QTest::qWaitFor([&] { return heard->hasEnded; }, processLimit))
        return u"no end"_s;
    if (heard->error)
        return u"Error: "_s + heard->errorText();
    return heard->elements.isEmpty() ? QString() : heard->elements.constLast().toString();
}

bool hasSaid(const std::shared_ptr<Heard>& heard, qsizetype snapshots) {
    return QTest::qWaitFor([&] { return heard->elements.size() >= snapshots; }, processLimit);
}

bool everGrew(const Heard& heard) {
    const auto doesNotGrow = [](const auto& earlier, const auto& later) {
        return later.size() <= earlier.size() || !later.continues(earlier);
    };
    return std::ranges::adjacent_find(heard.elements, doesNotGrow) == heard.elements.end();
}

qint64 engineProcess() {
    return childrenOf(QCoreApplication::applicationPid()).value(0);
}

QList<qint64> childrenOf(qint64 process) {
    QList<qint64> children;
    for (const QString& entry : QDir(u"/proc"_s).entryList({u"[1-9]*"_s}, QDir::Dirs)) {
        const qint64 candidate = entry.toLongLong();
        if (isRunning(candidate) && processStatus(candidate).value(1).toLongLong() == process)
            children.append(candidate);
    }
    return children;
}

bool isRunning(qint64 process) {
    const QByteArray state = processStatus(process).value(0);
    return !state.isEmpty() && state != "Z";
}

} // namespace tests
