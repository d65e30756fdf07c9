// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/SystemLanguageModel.h"
#include "tests/support/TestMain.h"

using namespace platform;
using enum SystemLanguageModel::Availability::UnavailableReason;
using namespace Qt::StringLiterals;

class SystemLanguageModelTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachReasonSaysWhatIsWrongAndWhatToDo() {
        QCOMPARE(toText(deviceNotEligible),
                 u"this computer has too little memory for the model. Choose a smaller one in "
                 "Tellwick Set-up, or another one in Models."_s);
        QCOMPARE(toText(appleIntelligenceNotEnabled),
                 u"the engine that runs the model is not installed. Open Tellwick Set-up to get "
                 "it, or choose another model in Models."_s);
        QCOMPARE(toText(modelNotReady),
                 u"the model's file is not on this computer. Open Tellwick Set-up to get it, or "
                 "choose another model in Models."_s);
    }
};

TELLWICK_TEST(SystemLanguageModelTests, Nothing)
#include "SystemLanguageModelTests.moc"
