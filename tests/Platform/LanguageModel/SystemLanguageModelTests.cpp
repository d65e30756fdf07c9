// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"
#include "tests/support/TestMain.h"

using namespace platform;
using Availability = SystemLanguageModel::Availability;
using Reason = Availability::UnavailableReason;
using namespace Qt::StringLiterals;

namespace {

class FixedModel final : public SystemLanguageModel {
public:
    explicit FixedModel(Availability availability)
        : m_availability(availability) {}
    Availability availability() const override { return m_availability; }
    std::shared_ptr<LanguageModelSession> makeSession(const QString&) override { return nullptr; }

private:
    Availability m_availability;
};

} // namespace

class SystemLanguageModelTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachReasonHasItsNameAsText() {
        QCOMPARE(toText(Reason::deviceNotEligible), u"deviceNotEligible"_s);
        QCOMPARE(toText(Reason::appleIntelligenceNotEnabled), u"appleIntelligenceNotEnabled"_s);
        QCOMPARE(toText(Reason::modelNotReady), u"modelNotReady"_s);
    }

    void anAvailableModelHasNoReason() {
        const FixedModel model(Availability::available());
        QVERIFY(model.isAvailable());
        QVERIFY(!model.availability().unavailableReason());
    }

    void anUnavailableModelTellsItsReason() {
        const FixedModel model(Availability::unavailable(Reason::modelNotReady));
        QVERIFY(!model.isAvailable());
        QVERIFY(model.availability().unavailableReason() == Reason::modelNotReady);
    }
};

TELLWICK_TEST(SystemLanguageModelTests, EventLoop)
#include "SystemLanguageModelTests.moc"
