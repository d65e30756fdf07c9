// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/Transcript.h"
#include "tests/support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace platform;
using namespace Qt::StringLiterals;

namespace {

/// A turn that a transcript takes for 1,000 bytes.
AnsweredTurn turnOf(QChar name, qsizetype size = 1'000) {
    return {QString(size - 64 - 100, name), TextSnapshot(QString(100, u'-'))};
}

} // namespace

class TranscriptTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aRequestHoldsWhatIsRememberedAndWhatWasSaidOfTheNextReply() {
        Transcript transcript(u"Be kind."_s);
        QVERIFY(!transcript.hasTurns());
        transcript.append({u"one"_s, TextSnapshot(u"first")});
        QCOMPARE(messages(transcript, {u"two"_s, {}}),
                 (QStringList{u"system: Be kind."_s, u"user: one"_s, u"assistant: first"_s,
                              u"user: two"_s}));
        QCOMPARE(messages(transcript, {u"two"_s, TextSnapshot(u"sec")}).last(),
                 u"assistant: sec"_s);
    }

    void theOldestTurnsLeaveWhole_data() {
        QTest::addColumn<qsizetype>("nextSize"); // ten turns of 1,000 bytes precede it
        QTest::addColumn<qint64>("tokens");
        QTest::addColumn<qint64>("contextSize");
        QTest::addColumn<QString>("left");
        const auto row = [](const char* name, qsizetype nextSize, qint64 tokens, qint64 contextSize,
                            const QString& left) {
            QTest::newRow(name) << nextSize << tokens << contextSize << left;
        };
        const qsizetype usual = 1'000;
        row("a half stays free", usual, 2'750, 2'048, u"hij"_s);
        row("by its own measure of bytes to a token", usual, 11'000, 8'192, u"hij"_s);
        row("one leaves in any case", usual, 1'000, 8'192, u"bcdefghij"_s);
        row("one where nothing is known", usual, 0, 0, u"bcdefghij"_s);
        row("beside a long prompt a recent turn stays", 6'000, 4'000, 2'500, u"j"_s);
        row("beside a longer one none", 20'000, 7'500, 2'048, QString());
    }
    void theOldestTurnsLeaveWhole() {
        QFETCH(qsizetype, nextSize);
        QFETCH(qint64, tokens);
        QFETCH(qint64, contextSize);
        Transcript transcript({});
        for (const QChar name : u"abcdefghij"_s)
            transcript.append(turnOf(name));
        const AnsweredTurn next = turnOf(u'n', nextSize);
        transcript.letGo(next, tokens, contextSize);
        QString left;
        for (const QString& message : messages(transcript, {u"now"_s, {}}))
            if (message.startsWith(u"user: ") && message != u"user: now")
                left += message.at(6);
        QTEST(left, "left");
    }

private:
    static QStringList messages(const Transcript& transcript, const AnsweredTurn& next) {
        const QJsonObject request = QJsonDocument::fromJson(transcript.request(next, {})).object();
        QStringList messages;
        for (const auto& value : request[u"messages"].toArray())
            messages.append(value[u"role"].toString() + u": "_s + value[u"content"].toString());
        return messages;
    }
};

TELLWICK_TEST(TranscriptTests, EventLoop)
#include "TranscriptTests.moc"
