// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"
#include "Setup/ModelOffer.h"

#include <functional>

namespace setup {

/// How far the model is.
enum class ModelPhase {
    Offered,  ///< it is not there; nothing is under way
    Fetching, ///< it is being fetched
    Paused,   ///< a part of it is there; the rest can be fetched at any time
    Checking, ///< all of it is there and is being compared with its checksum
    Ready,    ///< the program can use it
    Failed,   ///< it could not be fetched; `modelProblem` says why
};

/// How far the engine is that runs the model.
enum class EnginePhase {
    Ready,      ///< it is there
    Missing,    ///< it is not there; nothing is under way
    Installing, ///< it is being installed
    Failed,     ///< it could not be installed; `engineProblem` says why
};

/// What the set-up shows: all that its views are functions of. Main thread.
struct SetupState {
    /// The models to choose from, the smallest first; never empty.
    platform::ObservedOnAssignment<QList<ModelOffer>> offers;
    /// Which of them is to be fetched; at first the one that suits this machine.
    platform::Observed<qsizetype> chosen{0};
    /// The folder that the model is kept in.
    platform::Observed<QString> folder;
    /// The room left in that folder, in bytes.
    platform::Observed<qint64> room{0};

    platform::Observed<ModelPhase> model{ModelPhase::Offered};
    /// Why the model could not be fetched, in a sentence; empty but with `ModelPhase::Failed`.
    platform::Observed<QString> modelProblem;
    /// How much of the chosen model is there, in bytes.
    platform::Observed<qint64> received{0};
    /// How fast it comes, in bytes a second, over the last seconds; 0 while that is not known.
    platform::Observed<qint64> rate{0};
    /// The path of the user's own file that serves as the model; empty where it is a fetched one.
    platform::Observed<QString> ownFile;

    platform::Observed<EnginePhase> engine{EnginePhase::Missing};
    /// What would be installed, and where, in a sentence.
    platform::Observed<QString> engineOffer;
    /// Why the engine could not be installed, in a sentence; empty but with `EnginePhase::Failed`.
    platform::Observed<QString> engineProblem;
};

/// What the user can do in the set-up. Each returns at once; what comes of it shows in the state.
/// Main thread.
struct SetupActions {
    /// Chooses the offer of that index; while a model is being fetched, nothing happens.
    std::function<void(qsizetype)> choose;
    /// Fetches the chosen model, or goes on where it was left.
    std::function<void()> download;
    /// Stops fetching and keeps what there is.
    std::function<void()> pause;
    /// Takes the file of that path as the model, where it is one.
    std::function<void(const QString&)> useFile;
    /// Installs the engine.
    std::function<void()> installEngine;
    /// Starts the program, or brings its window to the front; what is under way goes on beside it.
    std::function<void()> openTellwick;
    /// From now on the program opens without asking whether all is there, until it is set up by
    /// hand; opens the program.
    std::function<void()> notNow;
};

} // namespace setup
