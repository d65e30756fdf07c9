// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>

namespace bench {

/// The engine started by hand and asked by curl, with the options that the program gives it but in
/// the caller's own environment: what a turn costs without the program.
class DirectEngine {
public:
    /// Starts the engine and returns at once.
    DirectEngine(const QString& program, const QString& modelFile, const QString& socketPath);
    ~DirectEngine();

    /// Asks until the engine is ready, as one would in a script.
    void waitUntilReady();

    /// Milliseconds from the start of curl to the first word in its output.
    double firstWord();

private:
    QString m_socketPath;
    QProcess m_engine;
};

/// Tokens a second by the engine's own measuring program, without any server around it.
double ownTokensPerSecond(const QString& program, const QString& modelFile, int tokens);

} // namespace bench
