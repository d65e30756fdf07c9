// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/SystemLanguageModel.h"

namespace platform {

using namespace Qt::StringLiterals;

QString toText(SystemLanguageModel::Availability::UnavailableReason reason) {
    using enum SystemLanguageModel::Availability::UnavailableReason;
    switch (reason) {
    case deviceNotEligible:
        return u"this computer has too little memory for the model. Choose a smaller one in "
               "Tellwick Set-up, or another one in Models."_s;
    case appleIntelligenceNotEnabled:
        return u"the engine that runs the model is not installed. Open Tellwick Set-up to get "
               "it, or choose another model in Models."_s;
    case modelNotReady:
        return u"the model's file is not on this computer. Open Tellwick Set-up to get it, or "
               u"choose another model in Models."_s;
    }
    Q_UNREACHABLE();
}

} // namespace platform
