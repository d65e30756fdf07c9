// SPDX-License-Identifier: MIT
#include "Tellwick/Core/AppConfig.h"
#include "tests/support/TestMain.h"

#include <thread>
#include <vector>

using namespace tellwick;
using namespace Qt::StringLiterals;

class AppConfigTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void textsHaveTheirExactValues_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("utf8");
        QTest::addColumn<int>("characters");
        const auto row = [](const char* name, const QString& text, const QByteArray& utf8,
                            int characters) { QTest::newRow(name) << text << utf8 << characters; };
        row("appName", AppConfig::appName(), "Tellwick", 8);
        row("tagline", AppConfig::tagline(), "Private \xC2\xB7 Offline \xC2\xB7 On-device", 29);
        row("welcomeMessage", AppConfig::welcomeMessage(),
            "Hi! I'm your on-device AI assistant, running entirely on this device via Apple "
            "Intelligence. Ask me anything \xE2\x80\x94 nothing leaves your device.",
            138);
        row("modelLabel", AppConfig::modelLabel(), "Apple Intelligence \xC2\xB7 On-device", 30);
        row("website", AppConfig::website(), "https://tellwick.example", 24);
        row("copyright", AppConfig::copyright(), "\xC2\xA9 2026 The Tellwick makers", 26);
        row("appDescription", AppConfig::appDescription(),
            "Tellwick is a private AI chat assistant powered entirely by Apple Intelligence. "
            "Everything runs on your device \xE2\x80\x94 no internet connection or account is "
            "needed, and no data ever leaves your device.",
            194);
        row("disclaimer", AppConfig::disclaimer(),
            "This app is for personal research and exploration only. Responses may be "
            "incomplete, outdated, or declined due to model guardrails. Do not rely on it for "
            "professional, medical, legal, or financial decisions.",
            207);
        row("defaultSystemPrompt", AppConfig::defaultSystemPrompt(),
            "You are an on-device AI assistant running via Apple Intelligence directly on the "
            "user's device. All processing happens locally \xE2\x80\x94 you have no internet "
            "access and cannot retrieve real-time information. You work entirely from your "
            "pre-trained knowledge. Never claim to have internet access, live data, or the "
            "ability to look things up.",
            332);

        const auto modes = AppConfig::writingModes();
        QCOMPARE(modes.size(), 4);
        const auto mode = [&](qsizetype i, const QByteArray& label, const QByteArray& icon,
                              const QByteArray& prompt, int characters) {
            QTest::addRow("label %d", int(i)) << modes[i].label << label << int(label.size());
            QTest::addRow("id %d", int(i)) << modes[i].id() << label << int(label.size());
            QTest::addRow("icon %d", int(i)) << modes[i].icon << icon << int(icon.size());
            QTest::addRow("prompt %d", int(i)) << modes[i].systemPrompt << prompt << characters;
        };
        mode(0, "Proofread", "checkmark.circle",
             "You are a careful editor. Correct grammar, spelling, punctuation, and clarity in "
             "the text the user provides. Return the corrected text, then briefly list the "
             "changes made.",
             171);
        mode(1, "Summarise", "text.alignleft",
             "You are a concise summariser. When the user gives you text, return a clear, "
             "well-structured summary that captures the key points.",
             129);
        mode(2, "Explain Simply", "lightbulb",
             "Explain things simply, as if to someone completely new to the topic. Use plain "
             "language, short sentences, and helpful analogies. Avoid jargon.",
             142);
        mode(3, "Rewrite", "pencil.and.outline",
             "Rewrite the user's text to improve clarity, flow, and conciseness. Preserve the "
             "original meaning and intended tone.",
             115);
    }

    void textsHaveTheirExactValues() {
        QFETCH(QString, text);
        QFETCH(QByteArray, utf8);
        QFETCH(int, characters);
        QCOMPARE(text.toUtf8(), utf8);
        QCOMPARE(text.size(), characters);
    }

    void aModeIsIdentifiedByItsLabelAlone() {
        const AppConfig::WritingMode a{u"Same"_s, u"x"_s, u"one prompt"_s};
        const AppConfig::WritingMode b{u"Same"_s, u"y"_s, u"another prompt"_s};
        const AppConfig::WritingMode c{u"Other"_s, u"x"_s, u"one prompt"_s};
        QVERIFY(a == b);
        QVERIFY(!(a == c));
    }

    void theSystemPromptOfATurn() {
        const QByteArray plain = AppConfig::defaultSystemPrompt().toUtf8();
        QCOMPARE(AppConfig::systemPrompt(std::nullopt).toUtf8(), plain);
        const auto proofread = AppConfig::writingModes().constFirst();
        const QByteArray composed = AppConfig::systemPrompt(proofread).toUtf8();
        QCOMPARE(composed.size(), 334 + 2 + 171);
        QCOMPARE(composed, plain + "\n\n" + proofread.systemPrompt.toUtf8());
    }

    void readingTwiceGivesEqualValues() {
        QCOMPARE(AppConfig::tagline(), AppConfig::tagline());
        QCOMPARE(AppConfig::website(), AppConfig::website());
        QCOMPARE(AppConfig::copyright(), AppConfig::copyright());
        QVERIFY(AppConfig::writingModes() == AppConfig::writingModes());
    }

    void firstReadsFromSeveralThreadsAgree() {
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
};

TELLWICK_TEST(AppConfigTests, EventLoop)
#include "AppConfigTests.moc"
