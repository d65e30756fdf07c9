// SPDX-License-Identifier: MIT
#include "Platform/Store/PersistentModel.h"

#include "Platform/Store/ModelContext.h"

namespace platform {

PersistentModel::PersistentModel() = default;

PersistentModel::~PersistentModel() = default;

void PersistentModel::markChanged() {
    if (!m_context || m_hasChanges)
        return;
    m_hasChanges = true;
    m_context->recordChanged(*this);
}

QByteArrayList PersistentModel::state() const {
    QByteArrayList state;
    for (const Attribute* attribute : m_attributes)
        if (attribute->tellsState())
            state.append(attribute->encoded());
    return state;
}

} // namespace platform
