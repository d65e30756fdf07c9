// SPDX-License-Identifier: MIT
#include "Platform/Store/StoreError.h"

namespace platform {

StoreError::StoreError(Reason reason, QByteArray detail)
    : m_reason(reason)
    , m_detail(std::move(detail)) {}

} // namespace platform
