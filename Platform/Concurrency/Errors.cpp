// SPDX-License-Identifier: MIT
#include "Platform/Concurrency/Errors.h"

namespace platform {

using namespace Qt::StringLiterals;

const char* LocalizedError::what() const noexcept {
    m_what = errorDescription().toUtf8();
    return m_what.constData();
}

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
    return u"The operation could not be completed."_s;
}

bool isCancellation(const std::exception_ptr& error) {
    try {
        if (error)
            std::rethrow_exception(error);
    } catch (const CancellationError&) {
        return true;
    } catch (...) {
    }
    return false;
}

} // namespace platform
