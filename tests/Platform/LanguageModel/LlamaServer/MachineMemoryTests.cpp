// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/MachineMemory.h"
#include "tests/support/TestMain.h"

using namespace platform;

class MachineMemoryTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void modelAndConversationFitWhatIsAvailable_data() {
        QTest::addColumn<double>("total"); // in 10^9 bytes, as all sizes here
        QTest::addColumn<double>("available");
        QTest::addColumn<double>("model");
        QTest::addColumn<int>("contextSize"); // 0: not even the smallest
        const auto row = [](const char* name, double total, double available, double model,
                            int contextSize) {
            QTest::newRow(name) << total << available << model << contextSize;
        };
        row("a large machine", 33, 28, 2.5, 16'384);
        row("16 GB", 16.6, 13, 2.5, 16'384);
        row("16 GB, much of it in use", 16.6, 5, 2.5, 8'192);
        row("16 GB, nearly all of it in use", 16.6, 3.2, 2.5, 2'048);
        row("16 GB, all of it in use", 16.6, 0.5, 2.5, 0);
        row("8 GB", 8.2, 6, 2.5, 8'192);
        row("8 GB keeps some for others", 8.2, 8.1, 0.4, 8'192);
        row("8 GB, much of it in use", 8.2, 3.5, 2.5, 4'096);
        row("8 GB, a larger model", 8.2, 7, 8.1, 0);
        row("4 GB, the small model", 4.1, 2.5, 1.1, 8'192);
        row("4 GB, in use", 4.1, 1.6, 1.1, 2'048);
        row("4 GB, too much of it", 4.1, 1.5, 1.1, 0);
        row("2 GB", 2.05, 1.2, 1.1, 0);
        row("nothing known of it", 0, 0, 1.1, 0);
    }
    void modelAndConversationFitWhatIsAvailable() {
        QFETCH(double, total);
        QFETCH(double, available);
        QFETCH(double, model);
        const auto bytes = [](double size) { return static_cast<quint64>(size * 1e9); };
        const MachineMemory memory{.total = bytes(total), .available = bytes(available)};
        QTEST(contextSizeFor(bytes(model), memory).value_or(0), "contextSize");
    }

    void theMachineTellsItsMemory() {
        const MachineMemory memory = MachineMemory::now();
        QVERIFY(memory.total > 100'000'000);
        QVERIFY(memory.available > 1'000'000);
        QVERIFY(memory.available < memory.total);
    }
};

TELLWICK_TEST(MachineMemoryTests, Nothing)
#include "MachineMemoryTests.moc"
