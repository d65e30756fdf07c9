// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/SystemLanguageModel.h"

namespace platform {

using namespace Qt::StringLiterals;

QString toText(SystemLanguageModel::Availability::UnavailableReason reason) {
    using enum SystemLanguageModel::Availability::UnavailableReason;
    switch (reason) {
    case deviceNotEligible:
        return u"deviceNotEligible"_s;
    case appleIntelligenceNotEnabled:
        return u"appleIntelligenceNotEnabled"_s;
    case modelNotReady:
        return u"modelNotReady"_s;
    }
    Q_UNREACHABLE();
}

} // namespace platform
