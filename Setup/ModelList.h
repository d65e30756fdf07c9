// SPDX-License-Identifier: MIT
#pragma once

#include "Setup/ModelOffer.h"

#include <optional>

namespace setup {

/// Reads the list of the models that can be fetched (`models.json`); the smallest comes first.
/// Throws SetupError, with a sentence that names the file, where it does not read or lists none.
QList<ModelOffer> readModelList(const QString& path);

/// The index of the largest offer that suits a machine of that memory; of the first where none
/// does.
qsizetype recommendedOffer(const QList<ModelOffer>& offers, quint64 machineMemory);

/// The index of the offer of that name, in any case; "small" and "large" are the first and the
/// last.
std::optional<qsizetype> findOffer(const QList<ModelOffer>& offers, const QString& name);

} // namespace setup
