// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Setup/ModelFolder.h"
#include "Setup/SetupState.h"

#include <QNetworkAccessManager>

#include <chrono>
#include <functional>

namespace setup {

class PartFile;

/// Fetches a model into its folder. Main thread.
///
/// What has come is kept when a task ends before the model is there, in whatever way, and the next
/// one goes on with it. The file gets the model's name only when its checksum is right.
class ModelDownload {
public:
    /// How long the server may take.
    struct Limits {
        std::chrono::milliseconds connecting{7'000};
        std::chrono::milliseconds silence{60'000};
    };
    /// Told how far the model is (`Fetching` or `Checking`) and how much of it is there.
    using Report = std::function<void(ModelPhase phase, qint64 received)>;

    explicit ModelDownload(ModelFolder folder)
        : ModelDownload(std::move(folder), Limits{}) {}
    ModelDownload(ModelFolder folder, const Limits& limits);

    /// Ends when the model is there; throws a SetupError where it cannot be had.
    platform::Task<void> fetch(ModelOffer offer, Report report);

private:
    /// How one request has ended: in a sentence, or with another address to ask.
    struct TransferEnd {
        QString sentence;
        QUrl sentOnTo;
    };
    platform::Task<TransferEnd> transfer(QUrl address, qint64 size, PartFile& part,
                                         const Report& report);

    ModelFolder m_folder;
    Limits m_limits;
    QNetworkAccessManager m_network;
};

} // namespace setup
