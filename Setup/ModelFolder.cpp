// SPDX-License-Identifier: MIT
#include "Setup/ModelFolder.h"

#include "Platform/Desktop/PathTexts.h"
#include "Platform/Desktop/UserDirectories.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerFiles.h"
#include "Setup/ModelList.h"
#include "Setup/SetupError.h"

#include <QtEndian>

#include <fcntl.h>
#include <sys/file.h>

#include <array>
#include <cstring>

namespace setup {

using namespace Qt::StringLiterals;
using platform::toText;
using platform::UniqueFd;

namespace {

/// Tells why the engine would not read this file as a model.
void requireModel(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        throw SetupError(u"There is no file at %1."_s.arg(toText(path)));
    if (!std::filesystem::is_regular_file(path, error))
        throw SetupError(u"%1 is not a file."_s.arg(toText(path)));
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        throw SetupError(u"The file %1 cannot be read."_s.arg(toText(path)));
    constexpr size_t nameSize = 4;
    std::array<char, nameSize + sizeof(quint32)> head{};
    if (read(file.get(), head.data(), head.size()) != static_cast<ssize_t>(head.size()) ||
        std::memcmp(head.data(), "GGUF", nameSize) != 0)
        throw SetupError(u"%1 is not a model: its format is not GGUF."_s.arg(toText(path)));
    const auto version = qFromLittleEndian<quint32>(head.data() + nameSize);
    if (version != 2 && version != 3)
        throw SetupError(
            u"The engine cannot read %1: it reads GGUF of the versions 2 and 3, and not %2."_s.arg(
                toText(path), QString::number(version)));
}

} // namespace

ModelFolder::ModelFolder(const platform::UserDirectories& directories)
    : m_path((directories.dataHome() / platform::modelFileName).parent_path())
    , m_modelPath(directories.dataHome() / platform::modelFileName) {}

ModelFolder::Path ModelFolder::partPath(const ModelOffer& offer) const {
    return m_path / ('.' + offer.sha256.left(16).toStdString() + ".part");
}

qint64 ModelFolder::sizeOfPart(const ModelOffer& offer) const {
    std::error_code error;
    const auto size = std::filesystem::file_size(partPath(offer), error);
    return error || size > static_cast<quint64>(offer.size) ? 0 : static_cast<qint64>(size);
}

qint64 ModelFolder::room() const {
    // What is not there yet will be made in the folder above it.
    std::error_code error;
    Path folder = m_path;
    while (!std::filesystem::exists(folder, error) && folder.has_relative_path())
        folder = folder.parent_path();
    const auto space = std::filesystem::space(folder, error);
    return error ? 0 : static_cast<qint64>(space.available);
}

std::optional<ModelFolder::Path> ModelFolder::linkedFile() const {
    std::error_code error;
    Path file = std::filesystem::read_symlink(m_modelPath, error);
    return error ? std::nullopt : std::optional(m_path / file);
}

UniqueFd ModelFolder::lock() const {
    std::error_code error;
    std::filesystem::create_directories(m_path, error);
    constexpr mode_t forTheUser = 0600;
    UniqueFd lock(open((m_path / ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, forTheUser));
    if (!lock)
        throw SetupError(
            u"The on-device model cannot be kept: the folder %1 cannot be written."_s.arg(
                toText(m_path)));
    if (flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        throw SetupError(u"Another set-up is already fetching the on-device model."_s);
    return lock;
}

void ModelFolder::link(const Path& file) const {
    requireModel(file);
    const UniqueFd lock = this->lock();
    std::error_code error;
    // Never a link to itself, by whatever way the file was named.
    const Path target = std::filesystem::canonical(file, error);
    if (!error &&
        target == std::filesystem::weakly_canonical(m_path, error) / m_modelPath.filename())
        return;
    const Path link = m_path / ".link";
    std::filesystem::remove(link, error);
    std::filesystem::create_symlink(target, link, error);
    if (!error)
        std::filesystem::rename(link, m_modelPath, error);
    if (error)
        throw SetupError(u"The folder %1 cannot be written."_s.arg(toText(m_path)));
}

qsizetype firstOffer(const QList<ModelOffer>& offers, const ModelFolder& folder,
                     quint64 machineMemory) {
    const qsizetype recommended = recommendedOffer(offers, machineMemory);
    if (folder.sizeOfPart(offers.at(recommended)) > 0)
        return recommended;
    for (qsizetype index = 0; index < offers.size(); ++index)
        if (folder.sizeOfPart(offers.at(index)) > 0)
            return index;
    return recommended;
}

} // namespace setup
