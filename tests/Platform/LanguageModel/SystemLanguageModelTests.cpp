// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/SystemLanguageModel.h"
#include "tests/support/TestMain.h"

using namespace platform;
using enum SystemLanguageModel::Availability::UnavailableReason;
using namespace Qt::StringLiterals;

class SystemLanguageModelTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachReasonHasItsNameAsText() {
        QCOMPARE(toText(deviceNotEligible), u"deviceNotEligible"_s);
        QCOMPARE(toText(appleIntelligenceNotEnabled), u"appleIntelligenceNotEnabled"_s);
        QCOMPARE(toText(modelNotReady), u"modelNotReady"_s);
    }
};

TELLWICK_TEST(SystemLanguageModelTests, Nothing)
#include "SystemLanguageModelTests.moc"
