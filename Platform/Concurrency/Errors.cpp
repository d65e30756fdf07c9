// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/Errors.h"

namespace platform {

QString localizedDescription(const std::exception_ptr& error) {
    try {
        if (error)
            std::rethrow_exception(error);
    } catch (const LocalizedError& localized) {
        return localized.errorDescription();
    } catch (const std::exception& other) {
        return QString::fromUtf8(other.what());
    } catch (...) {
    }
    return QStringLiteral("The operation could not be completed.");
}

} // namespace platform
