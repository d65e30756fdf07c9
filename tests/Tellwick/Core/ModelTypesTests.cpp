// SPDX-License-Identifier: MIT
#include "Tellwick/Core/ModelBackend.h"
#include "tests/support/TestMain.h"

using namespace tellwick;
using namespace Qt::StringLiterals;
using platform::TextSnapshot;

class ModelTypesTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void messagesWithTheSameTextHaveDifferentIdentities() {
        const ChatMessage a(ChatMessage::Role::user, TextSnapshot(u"same"));
        const ChatMessage b(ChatMessage::Role::user, TextSnapshot(u"same"));
        QVERIFY(a.id() != b.id());
        QCOMPARE(a.id().version(), QUuid::Random);
    }

    void aCopyIsTheSameMessageAndItsContentMayChange() {
        const ChatMessage message(ChatMessage::Role::assistant, TextSnapshot());
        ChatMessage copy = message;
        copy.content = TextSnapshot(u"more");
        QCOMPARE(copy.id(), message.id());
        QVERIFY(copy.role() == ChatMessage::Role::assistant);
        QVERIFY(message.content.isEmpty());
        QCOMPARE(copy.content.toString(), u"more"_s);
    }

    void sourcesHaveTextForms() {
        QCOMPARE(rawValue(ModelSource::appleIntelligence), u"appleIntelligence"_s);
        QCOMPARE(rawValue(ModelSource::ollama), u"ollama"_s);
    }

    void onlyAnExactTextGivesASource() {
        QVERIFY(modelSourceFromRawValue(u"ollama") == ModelSource::ollama);
        QVERIFY(modelSourceFromRawValue(u"appleIntelligence") == ModelSource::appleIntelligence);
        QVERIFY(!modelSourceFromRawValue(u"Ollama"));
        QVERIFY(!modelSourceFromRawValue(u"AppleIntelligence"));
        QVERIFY(!modelSourceFromRawValue(u""));
        QVERIFY(!modelSourceFromRawValue(u"ollama "));
    }

    void descriptorsAreEqualByIdentifierAlone() {
        const ModelInfo plain(u"ollama-a"_s, u"a"_s, ModelSource::ollama);
        const ModelInfo detailed(u"ollama-a"_s, u"another name"_s, ModelSource::appleIntelligence,
                                 u"4.7 GB · Ollama"_s);
        const ModelInfo other(u"ollama-b"_s, u"a"_s, ModelSource::ollama);
        QVERIFY(plain == detailed);
        QVERIFY(!(plain == other));
    }

    void theDetailMayBeLeftOut() {
        QVERIFY(!ModelInfo(u"x"_s, u"x"_s, ModelSource::ollama).detail.has_value());
    }

    void theOnDeviceModelIsDescribed() {
        const ModelInfo info = ModelInfo::onDevice();
        QCOMPARE(info.id(), u"apple-intelligence"_s);
        QCOMPARE(info.name(), u"Apple Intelligence"_s);
        QVERIFY(info.source() == ModelSource::appleIntelligence);
        QCOMPARE(info.detail.value().toUtf8(), QByteArray("On-device \xC2\xB7 Private"));
    }

    void aServersModelNameStandsUnchangedInItsIdentifier() {
        QCOMPARE(ModelInfo::ollamaID(u"llama3:8b"_s), u"ollama-llama3:8b"_s);
        QCOMPARE(ModelInfo::ollamaID(u"Org/Name Ü:Tag"_s), u"ollama-Org/Name Ü:Tag"_s);
    }
};

TELLWICK_TEST(ModelTypesTests, EventLoop)
#include "ModelTypesTests.moc"
