// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

/// The absolute paths in a list variable; relative ones do not count. The fallback stands in for an
/// unset or empty variable.
QStringList foldersIn(const char* variable, const QString& fallback) {
    QString value = qEnvironmentVariable(variable);
    if (value.isEmpty())
        value = fallback;
    QStringList folders;
    for (const QString& folder : value.split(u':', Qt::SkipEmptyParts))
        if (QDir::isAbsolutePath(folder))
            folders.append(QDir::cleanPath(folder));
    return folders;
}

/// The size of a file that can be read, or none.
std::optional<quint64> readableSize(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    struct stat status {};
    if (stat(name.constData(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0 ||
        access(name.constData(), R_OK) != 0)
        return std::nullopt;
    return static_cast<quint64>(status.st_size);
}

} // namespace

QString LlamaServerPaths::modelFileName() {
    return u"models/on-device.gguf"_s;
}

QString LlamaServerPaths::programName() {
    return u"llama-server"_s;
}

LlamaServerPaths LlamaServerPaths::fromEnvironment(const QString& applicationFolder,
                                                   const QString& programFolder) {
    LlamaServerPaths places;
    QStringList dataFolders = foldersIn("XDG_DATA_HOME", QDir::homePath() + u"/.local/share"_s);
    dataFolders += foldersIn("XDG_DATA_DIRS", u"/usr/local/share:/usr/share"_s);
    for (const QString& folder : std::as_const(dataFolders))
        places.dataFolders.append(folder + u'/' + applicationFolder);

    places.programFolders = QStringList{programFolder} + foldersIn("PATH", u"/usr/bin:/bin"_s);

    const QString owner = QString::number(getuid());
    for (const QString& folder : foldersIn("XDG_RUNTIME_DIR", QString()))
        places.runtimeFolders.append(folder + u'/' + applicationFolder);
    places.runtimeFolders.append(u"/tmp/"_s + applicationFolder + u'-' + owner);

    places.machineMemory =
        static_cast<quint64>(sysconf(_SC_PHYS_PAGES)) * static_cast<quint64>(sysconf(_SC_PAGESIZE));
    return places;
}

std::optional<QString> LlamaServerPaths::modelFile() const {
    for (const QString& folder : dataFolders) {
        const QString path = folder + u'/' + modelFileName();
        if (readableSize(path))
            return path;
    }
    return std::nullopt;
}

std::optional<QString> LlamaServerPaths::program() const {
    const QString path = QStandardPaths::findExecutable(programName(), programFolders);
    return path.isEmpty() ? std::nullopt : std::optional(path);
}

SystemLanguageModel::Availability LlamaServerPaths::availability() const {
    using Availability = SystemLanguageModel::Availability;
    using enum Availability::UnavailableReason;
    const std::optional<QString> file = modelFile();
    if (file && readableSize(*file).value_or(0) > machineMemory)
        return Availability::unavailable(deviceNotEligible);
    if (!program())
        return Availability::unavailable(appleIntelligenceNotEnabled);
    if (!file)
        return Availability::unavailable(modelNotReady);
    return Availability::available();
}

} // namespace platform
