// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

namespace platform {

/// How a reply is generated. Whatever is left unset follows the model's own defaults.
struct GenerationOptions {
    /// How the next token is picked from those that the model finds likely.
    enum class Sampling {
        /// Always the likeliest: the same prompt gives the same reply.
        Greedy,
        /// By chance, weighted by likelihood.
        Random,
    };

    std::optional<Sampling> sampling;
    /// Spread of the likelihoods: 0 is the narrowest, 1 is as the model was trained.
    std::optional<double> temperature;
    /// The longest reply, in tokens of the model.
    std::optional<int> maximumResponseTokens;
};

} // namespace platform
