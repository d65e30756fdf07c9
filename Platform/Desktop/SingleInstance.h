// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/PrivateFolder.h"

#include <QByteArray>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

QT_BEGIN_NAMESPACE
class QSocketNotifier;
QT_END_NAMESPACE

namespace platform {

/// Lets one instance of a program run for a user: the first claims the place, each later one asks
/// it to come to the front and ends.
///
/// The place is a lock that the kernel lets go with its process, so a crash leaves nothing to tidy,
/// and a socket beside it, both in a folder that other users cannot reach into. One thread, which
/// for onActivated() is the main one.
class SingleInstance {
public:
    enum class Claim {
        /// This is the first instance (or there is nowhere to tell): go on.
        First,
        /// Another instance runs and comes to the front: end.
        HandedOver,
        /// Another instance runs and did not answer in time: end, and say so.
        Unanswered,
    };

    /// @param folders the folders that may hold the place, the best first.
    explicit SingleInstance(const QStringList& folders);
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    /// Gives the place up.
    ~SingleInstance();

    /// Claims the place; waits for another instance's answer no longer than `limit`. Needs no
    /// application object, so a later start ends before it has cost anything. Called once.
    ///
    /// @param token given to the running instance; see activationToken().
    Claim claim(const QByteArray& token,
                std::chrono::milliseconds limit = std::chrono::milliseconds(3000));

    /// From here on, calls `activated` with the token of each later start since claim(), from the
    /// event loop. Needs the application object; this may outlive it, which keeps the place until
    /// everything else is closed. Called once, by the first instance. The callback must not destroy
    /// this.
    void onActivated(std::function<void(const QByteArray& token)> activated);

private:
    void listenForOthers();
    void accept();
    void read(QSocketNotifier& peer);

    std::optional<PrivateFolder> m_folder;
    UniqueFd m_lock;
    UniqueFd m_listener;
    std::function<void(const QByteArray&)> m_activated;
    std::unique_ptr<QSocketNotifier> m_notifier; ///< its children are those of other starts
};

} // namespace platform
