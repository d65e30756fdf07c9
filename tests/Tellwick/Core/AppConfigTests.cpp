// SPDX-License-Identifier: MIT
#include "Tellwick/Core/AppConfig.h"
#include "tests/support/TestMain.h"

#include <QUrl>

#include <thread>
#include <vector>

using namespace tellwick;
using namespace Qt::StringLiterals;

class AppConfigTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void textsHaveTheirExactValues_data();
    void textsHaveTheirExactValues();
    void theWritingModesComeInOrderWithTheirTexts();
    void aModeIsIdentifiedByItsLabelAlone();
    void theSystemPromptOfATurn();
    void readingTwiceGivesEqualValues();
    void firstReadsFromSeveralThreadsAgree();
    void theWebsiteIsAnAddress();
};

void AppConfigTests::textsHaveTheirExactValues_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("utf8");
    QTest::addColumn<int>("characters");
    QTest::addColumn<int>("bytes");
    QTest::newRow("appName") << AppConfig::appName() << QByteArray("Tellwick") << 8 << 8;
    QTest::newRow("tagline") << AppConfig::tagline()
                             << QByteArray("Private \xC2\xB7 Offline \xC2\xB7 On-device") << 29
                             << 31;
    QTest::newRow("welcomeMessage")
        << AppConfig::welcomeMessage()
        << QByteArray(
               "Hi! I'm your on-device AI assistant, running entirely on this device via "
               "Apple Intelligence. Ask me anything \xE2\x80\x94 nothing leaves your device.")
        << 138 << 140;
    QTest::newRow("modelLabel") << AppConfig::modelLabel()
                                << QByteArray("Apple Intelligence \xC2\xB7 On-device") << 30 << 31;
    QTest::newRow("appDescription")
        << AppConfig::appDescription()
        << QByteArray("Tellwick is a private AI chat assistant powered entirely by Apple "
                      "Intelligence. Everything runs on your device \xE2\x80\x94 no internet "
                      "connection or account is needed, and no data ever leaves your device.")
        << 194 << 196;
    QTest::newRow("disclaimer")
        << AppConfig::disclaimer()
        << QByteArray("This app is for personal research and exploration only. Responses may be "
                      "incomplete, outdated, or declined due to model guardrails. Do not rely on "
                      "it for professional, medical, legal, or financial decisions.")
        << 207 << 207;
    QTest::newRow("defaultSystemPrompt")
        << AppConfig::defaultSystemPrompt()
        << QByteArray("You are an on-device AI assistant running via Apple Intelligence directly "
                      "on the user's device. All processing happens locally \xE2\x80\x94 you have "
                      "no internet access and cannot retrieve real-time information. You work "
                      "entirely from your pre-trained knowledge. Never claim to have internet "
                      "access, live data, or the ability to look things up.")
        << 332 << 334;
}

void AppConfigTests::textsHaveTheirExactValues() {
    QFETCH(QString, text);
    QFETCH(QByteArray, utf8);
    QFETCH(int, characters);
    QFETCH(int, bytes);
    QCOMPARE(text.toUtf8(), utf8);
    QCOMPARE(text.size(), characters);
    QCOMPARE(text.toUtf8().size(), bytes);
}

void AppConfigTests::theWritingModesComeInOrderWithTheirTexts() {
    const auto modes = AppConfig::writingModes();
    QCOMPARE(modes.size(), 4);
    const QStringList labels{u"Proofread"_s, u"Summarise"_s, u"Explain Simply"_s, u"Rewrite"_s};
    const QStringList icons{u"checkmark.circle"_s, u"text.alignleft"_s, u"lightbulb"_s,
                            u"pencil.and.outline"_s};
    const QList<int> lengths{171, 129, 142, 115};
    for (qsizetype i = 0; i < modes.size(); ++i) {
        QCOMPARE(modes[i].label, labels[i]);
        QCOMPARE(modes[i].id(), labels[i]);
        QCOMPARE(modes[i].icon, icons[i]);
        QCOMPARE(modes[i].systemPrompt.toUtf8().size(), lengths[i]);
    }
    QVERIFY(modes[0].systemPrompt.startsWith(u"You are a careful editor. Correct grammar,"));
    QVERIFY(modes[0].systemPrompt.endsWith(u"then briefly list the changes made."));
    QVERIFY(modes[1].systemPrompt.startsWith(u"You are a concise summariser. When the user"));
    QVERIFY(modes[1].systemPrompt.endsWith(u"summary that captures the key points."));
    QVERIFY(modes[2].systemPrompt.startsWith(u"Explain things simply, as if to someone"));
    QVERIFY(modes[2].systemPrompt.endsWith(u"and helpful analogies. Avoid jargon."));
    QVERIFY(modes[3].systemPrompt.startsWith(u"Rewrite the user's text to improve clarity,"));
    QVERIFY(modes[3].systemPrompt.endsWith(u"original meaning and intended tone."));
}

void AppConfigTests::aModeIsIdentifiedByItsLabelAlone() {
    const AppConfig::WritingMode a{u"Same"_s, u"x"_s, u"one prompt"_s};
    const AppConfig::WritingMode b{u"Same"_s, u"y"_s, u"another prompt"_s};
    const AppConfig::WritingMode c{u"Other"_s, u"x"_s, u"one prompt"_s};
    QVERIFY(a == b);
    QVERIFY(!(a == c));
}

void AppConfigTests::theSystemPromptOfATurn() {
    const QByteArray plain = AppConfig::defaultSystemPrompt().toUtf8();
    QCOMPARE(AppConfig::systemPrompt(std::nullopt).toUtf8(), plain);
    const auto proofread = AppConfig::writingModes().constFirst();
    const QByteArray composed = AppConfig::systemPrompt(proofread).toUtf8();
    QCOMPARE(composed.size(), 334 + 2 + 171);
    QCOMPARE(composed, plain + "\n\n" + proofread.systemPrompt.toUtf8());
}

void AppConfigTests::readingTwiceGivesEqualValues() {
    QCOMPARE(AppConfig::tagline(), AppConfig::tagline());
    QCOMPARE(AppConfig::website(), AppConfig::website());
    QCOMPARE(AppConfig::copyright(), AppConfig::copyright());
    QVERIFY(AppConfig::writingModes() == AppConfig::writingModes());
}

void AppConfigTests::firstReadsFromSeveralThreadsAgree() {
    std::vector<QList<AppConfig::WritingMode>> lists(8);
    {
        std::vector<std::jthread> threads;
        for (auto& list : lists)
            threads.emplace_back([&list] { list = AppConfig::writingModes(); });
    }
    for (const auto& list : lists) {
        QCOMPARE(list.size(), 4);
        QCOMPARE(list.constData(), lists.front().constData()); // one list, shared
    }
}

void AppConfigTests::theWebsiteIsAnAddress() {
    const QUrl url(AppConfig::website(), QUrl::StrictMode);
    QVERIFY(url.isValid());
    QCOMPARE(url.scheme(), u"https"_s);
    QVERIFY(!url.host().isEmpty());
    QVERIFY(!AppConfig::copyright().isEmpty());
}

TELLWICK_TEST(AppConfigTests, EventLoop)
#include "AppConfigTests.moc"
