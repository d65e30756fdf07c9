// SPDX-License-Identifier: MIT
#include "benchmarks/engine/DirectEngine.h"

#include "Platform/LanguageModel/LlamaServer/LlamaServer.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerCommand.h"
#include "benchmarks/engine/Conversation.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

namespace bench {

using namespace Qt::StringLiterals;

DirectEngine::DirectEngine(const QString& program, const QString& modelFile,
                           const QString& socketPath)
    : m_socketPath(socketPath) {
    constexpr int contextSize = 8'192;
    const platform::LlamaServerCommand command(platform::EngineLimits().idleTime);
    QFile::remove(socketPath);
    m_engine.setStandardErrorFile(QProcess::nullDevice());
    m_engine.setStandardOutputFile(QProcess::nullDevice());
    m_engine.start(program, command.arguments(modelFile, socketPath, contextSize));
}

DirectEngine::~DirectEngine() {
    m_engine.kill();
    m_engine.waitForFinished();
}

void DirectEngine::waitUntilReady() {
    for (;;) {
        QProcess curl;
        curl.start(u"curl"_s, {u"--silent"_s, u"--fail"_s, u"--unix-socket"_s, m_socketPath,
                               u"http://localhost/health"_s});
        curl.waitForFinished();
        if (curl.exitCode() == 0)
            return;
        if (m_engine.waitForFinished(0))
            throw std::runtime_error("the engine does not start");
        QThread::msleep(2);
    }
}

double DirectEngine::firstWord() {
    const Clock::time_point began = Clock::now();
    QProcess curl;
    curl.start(u"curl"_s, {u"--silent"_s, u"--no-buffer"_s, u"--unix-socket"_s, m_socketPath,
                           u"http://localhost/v1/chat/completions"_s, u"--header"_s,
                           u"Content-Type: application/json"_s, u"--data"_s,
                           uR"({"stream":true,"messages":[{"role":"system","content":"Be kind."},)"
                           uR"({"role":"user","content":"Hello"}]})"_s});
    QByteArray output;
    while (!output.contains("\"content\":\"")) {
        if (!curl.waitForReadyRead())
            throw std::runtime_error("the engine does not answer curl");
        output += curl.readAllStandardOutput();
    }
    const std::chrono::duration<double, std::milli> time = Clock::now() - began;
    curl.waitForFinished();
    return time.count();
}

double ownTokensPerSecond(const QString& program, const QString& modelFile, int tokens) {
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program,
                  {u"--model"_s, modelFile, u"--n-prompt"_s, u"0"_s, u"--n-gen"_s,
                   QString::number(tokens), u"--repetitions"_s, u"1"_s, u"--output"_s, u"json"_s});
    if (!process.waitForFinished(600'000))
        throw std::runtime_error("the engine's own measurement does not end");
    const QJsonArray results = QJsonDocument::fromJson(process.readAllStandardOutput()).array();
    const double rate = results.at(0)[u"avg_ts"].toDouble();
    if (rate <= 0)
        throw std::runtime_error("the engine's own measurement gives nothing");
    return rate;
}

} // namespace bench
