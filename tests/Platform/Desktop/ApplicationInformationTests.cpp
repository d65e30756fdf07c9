// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationInformation.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace Qt::StringLiterals;

class ApplicationInformationTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theVersionIsTheApplications() {
        QCoreApplication::setApplicationVersion(u"2.5.1"_s);
        const auto information = ApplicationInformation::ofThisProgram();
        QCOMPARE(information.text(u"CFBundleShortVersionString"_s), u"2.5.1"_s);
    }
    void theNameIsTheApplications() {
        QCoreApplication::setApplicationName(u"Example"_s);
        QCOMPARE(ApplicationInformation::ofThisProgram().text(u"CFBundleName"_s), u"Example"_s);
    }
    void aProgramWithoutVersionHasNone() {
        QCoreApplication::setApplicationVersion(QString());
        const auto information = ApplicationInformation::ofThisProgram();
        QVERIFY(!information.text(ApplicationInformation::versionKey()));
    }
    void anUnknownKeyHasNoText() {
        QVERIFY(!ApplicationInformation::ofThisProgram().text(u"CFBundleIcon"_s));
        QVERIFY(!ApplicationInformation().text(ApplicationInformation::versionKey()));
    }
    void textsMayBeGiven() {
        const ApplicationInformation information({{u"key"_s, u"text"_s}, {u"none"_s, u""_s}});
        QCOMPARE(information.text(u"key"_s), u"text"_s);
        QCOMPARE(information.text(u"none"_s), u""_s);
    }
};

TELLWICK_TEST(ApplicationInformationTests, EventLoop)
#include "ApplicationInformationTests.moc"
