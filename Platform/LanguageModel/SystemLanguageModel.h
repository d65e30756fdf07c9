// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace platform {

class LanguageModelSession;
class NetworkThread;
class UserDirectories;

/// The language model that this machine itself offers.
///
/// A contract: each operating system has an implementation in a folder of its own. The program
/// makes one object of it at its start and hands it to those who need it.
class SystemLanguageModel {
public:
    /// Whether the model can be used now, and if not, why.
    class Availability {
    public:
        enum class UnavailableReason {
            /// This machine cannot run the model, with the memory that it has left for it.
            deviceNotEligible,
            /// What runs the model is switched off or not installed.
            appleIntelligenceNotEnabled,
            /// The model itself is not there, or not there yet.
            modelNotReady,
        };

        static Availability available() { return Availability(std::nullopt); }
        static Availability unavailable(UnavailableReason reason) { return Availability(reason); }

        bool isAvailable() const { return !m_reason; }
        /// Why the model cannot be used; none when it can.
        std::optional<UnavailableReason> unavailableReason() const { return m_reason; }

        friend bool operator==(const Availability&, const Availability&) = default;

    private:
        explicit Availability(std::optional<UnavailableReason> reason)
            : m_reason(reason) {}

        std::optional<UnavailableReason> m_reason;
    };

    SystemLanguageModel() = default;
    SystemLanguageModel(const SystemLanguageModel&) = delete;
    SystemLanguageModel& operator=(const SystemLanguageModel&) = delete;
    virtual ~SystemLanguageModel() = default;

    /// The state of affairs at the moment of the call, never a remembered one. Any thread; costs
    /// well under a millisecond.
    virtual Availability availability() const = 0;

    /// Shorthand for `availability().isAvailable()`.
    bool isAvailable() const { return availability().isAvailable(); }

    /// Begins a conversation with the model, without tools. The instructions apply to every turn of
    /// it. Any thread; costs nothing until the session is used. A session may be made while the
    /// model is unavailable: its turns then fail. It keeps alive what it needs of the model object.
    virtual std::shared_ptr<LanguageModelSession> makeSession(const QString& instructions) = 0;
};

/// The reason and what to do about it, as the end of a sentence: "the model's file is not …".
QString toText(SystemLanguageModel::Availability::UnavailableReason reason);

/// The model of the system that the program was built for; the one function that the folder of each
/// implementation defines. Costs nothing: the model is touched when it is asked something.
///
/// @param network where replies are taken from the model; outlives every call of it.
/// @param programFolder the folder that the running program lies in.
std::unique_ptr<SystemLanguageModel> makeSystemLanguageModel(NetworkThread& network,
                                                             const UserDirectories& directories,
                                                             const QString& programFolder);

} // namespace platform
