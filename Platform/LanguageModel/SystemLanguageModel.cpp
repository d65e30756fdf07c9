// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/SystemLanguageModel.h"

namespace platform {

using namespace Qt::StringLiterals;

QString toText(SystemLanguageModel::Availability::UnavailableReason reason) {
    using enum SystemLanguageModel::Availability::UnavailableReason;
    switch (reason) {
    case deviceNotEligible:
        return u"this computer has too little memory for the model. Choose a smaller one with "
               "get-model, or another one in Models."_s;
    case appleIntelligenceNotEnabled:
        return u"the engine that runs the model is not installed. Install it with get-engine, or "
               "choose another model in Models."_s;
    case modelNotReady:
        return u"the model's file is not on this computer. Get it with get-model, or choose "
               u"another "
               "model in Models."_s;
    }
    Q_UNREACHABLE();
}

} // namespace platform
