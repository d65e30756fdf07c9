// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/ProgressBar.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QVariantAnimation>

using namespace Qt::StringLiterals;
using platform::ColorRole;
using platform::ProgressBar;

class ProgressBarTests final : public QObject {
    Q_OBJECT

    /// What the bar fills of its length.
    QRectF filled(ProgressBar& bar) const {
        const tests::PaintRecorder painted(bar);
        for (const auto& part : painted.all())
            if (part.color == m_theme.color(ColorRole::AccentFill))
                return part.rect;
        return {};
    }

    platform::Theme m_theme;

private Q_SLOTS:
    void theBarFillsFromItsLeadingEdge_data() {
        QTest::addColumn<double>("fraction");
        QTest::addColumn<int>("length");
        QTest::newRow("nothing") << 0.0 << 0;
        QTest::newRow("the first byte is seen") << 0.0001 << ProgressBar::thickness;
        QTest::newRow("half") << 0.5 << 100;
        QTest::newRow("all") << 1.0 << 200;
        QTest::newRow("more than all") << 1.5 << 200;
    }
    void theBarFillsFromItsLeadingEdge() {
        QFETCH(double, fraction);
        QFETCH(int, length);
        ProgressBar bar(m_theme, u"Model"_s);
        bar.resize(200, bar.sizeHint().height());
        bar.setFraction(fraction);
        QCOMPARE(filled(bar).width(), length);
        QCOMPARE(filled(bar).left(), 0);
        bar.setLayoutDirection(Qt::RightToLeft);
        QCOMPARE(filled(bar).left(), length > 0 ? 200 - length : 0);
    }

    void assistiveTechnologyIsToldOfWholePercents() {
        ProgressBar bar(m_theme, u"Model"_s);
        bar.show();
        auto* element = QAccessible::queryAccessibleInterface(&bar);
        QCOMPARE(element->role(), QAccessible::ProgressBar);
        QCOMPARE(element->text(QAccessible::Name), u"Model"_s);
        QVERIFY(element->valueInterface());
        const QSignalSpy told(&bar, &QProgressBar::valueChanged); // as assistive technology is
        for (int i = 0; i <= 300; ++i)
            bar.setFraction(i / 10000.0);
        QCOMPARE(told, (QList<QVariantList>{{1}, {2}, {3}}));
        QCOMPARE(element->valueInterface()->currentValue().toInt(), 3);
        QCOMPARE(element->valueInterface()->maximumValue().toInt(), 100);
    }

    void whereNobodyCanTellItMovesWhileItIsSeenAndMotionIsWanted() {
        platform::Theme theme;
        theme.motion().setEnabled(true);
        ProgressBar bar(theme, u"Model"_s);
        const auto isMoving = [&bar] {
            platform::flushObservers(&bar);
            return bar.findChild<QVariantAnimation*>() != nullptr;
        };
        bar.setFraction(std::nullopt);
        QVERIFY(!isMoving());
        bar.show();
        QVERIFY(isMoving());
        theme.motion().setEnabled(false);
        QVERIFY(!isMoving());
        theme.motion().setEnabled(true);
        QVERIFY(isMoving());
        bar.hide();
        QVERIFY(!isMoving());
        bar.show();
        bar.setFraction(0.5);
        QVERIFY(!isMoving());
        QCOMPARE(bar.value(), 50);
    }
};

TELLWICK_TEST(ProgressBarTests, Widgets)
#include "ProgressBarTests.moc"
