// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerError.h"

namespace platform {

using namespace Qt::StringLiterals;

QString LlamaServerError::errorDescription() const {
    switch (m_kind) {
    case Kind::PromptTooLong:
        return u"This message is longer than the on-device model can read at once. Shorten it, or "
               u"send it in parts."_s;
    case Kind::EngineHung:
        return u"The on-device model does not answer any more. Send your message again to restart "
               u"it."_s;
    case Kind::EngineStopped:
        return u"The on-device model stopped unexpectedly. Send your message again to restart "
               u"it."_s;
    case Kind::EngineUnusable:
        return u"The program that runs the on-device model could not be started."_s;
    case Kind::ModelDamaged:
        return u"The on-device model could not be loaded: its file is damaged or of a kind that "
               u"cannot be used here."_s;
    case Kind::ModelMissing:
        return u"The on-device model is not installed."_s;
    case Kind::OutOfMemory:
        return u"There is not enough free memory for the on-device model. Close other programs "
               u"and try again."_s;
    case Kind::NoAnswer:
        return u"The on-device model could not answer this message."_s;
    }
    Q_UNREACHABLE();
}

} // namespace platform
