// SPDX-License-Identifier: MIT
#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "Tellwick/Interface/ModelsView.h"
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/Tellwick/Interface/ModelsWindow.h"
#include "tests/Tellwick/Interface/TestWindow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QPointer>

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::Label;
using platform::TextStyle;
using tellwick::ModelRow;
using tellwick::ModelsView;
using Availability = platform::SystemLanguageModel::Availability;

namespace {

const QString appleIntelligence = u"Apple Intelligence"_s;

} // namespace

class ModelsViewTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ModelsWindow> m;

    /// What a row asks to be painted at its trailing end: a text in orange, or the checkmark, which
    /// is all that is in the accent.
    QString mark(const QString& name) const {
        auto* row = m->row(name);
        const tests::PaintRecorder painted(*row);
        QString mark;
        for (const auto& part : painted.all()) {
            const bool isAtTheEnd = part.rect.left() > row->width() / 2 &&
                                    part.rect.right() > row->width() - 30 &&
                                    part.rect.right() < row->width();
            if (isAtTheEnd && part.color == m->desktop.theme.color(ColorRole::Orange))
                mark += part.text;
            else if (isAtTheEnd && part.color == m->desktop.theme.color(ColorRole::Accent))
                mark += u"checkmark"_s;
        }
        return mark;
    }

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void withoutAServerThereIsTheNotice() {
        QVERIFY(m->openOver({}));
        const QList<int> roles{QAccessible::Heading, QAccessible::StaticText, QAccessible::ListItem,
                               QAccessible::Button};
        QStringList read;
        for (auto* element : m->screen().elements())
            if (roles.contains(element->role()))
                read.append(element->text(QAccessible::Name));
        QCOMPARE(
            read,
            (QStringList{u"Models"_s, u"Apple Intelligence"_s, appleIntelligence,
                         u"Default on-device model. Private, offline, no setup needed."_s,
                         u"Other Models"_s, u"Refresh"_s, u"No Ollama models found"_s,
                         u"Start Ollama and tap \u21BA to refresh."_s,
                         u"For advanced users. Manage and download models via the Ollama app."_s}));
        QVERIFY(std::ranges::any_of(m->view->findChildren<Label*>(), [](const Label* label) {
            return label->icon() == u"info.circle"_s;
        }));
        // The button stands at the heading's end.
        auto* heading = m->screen().widget(u"Other Models"_s, QAccessible::Heading);
        auto* button = m->refreshButton();
        QVERIFY(m->placeOf(button).left() > 300);
        QVERIFY(std::abs((m->placeOf(button).center() - m->placeOf(heading).center()).y()) <= 1);
    }

    void textsHaveTheirStyles() {
        QVERIFY(m->openOver({}));
        const auto label = [this](const QString& text) { return m->screen().widget<Label>(text); };
        for (const QString& footer :
             {u"Default on-device model. Private, offline, no setup needed."_s,
              u"For advanced users. Manage and download models via the Ollama app."_s}) {
            QVERIFY(
                m->desktop.isStyled(label(footer), TextStyle::Caption, ColorRole::SecondaryLabel));
            QVERIFY(label(footer)->heightForWidth(120) > label(footer)->heightForWidth(1000));
        }
        auto* first = label(u"No Ollama models found"_s);
        auto* second = label(u"Start Ollama and tap \u21BA to refresh."_s);
        QVERIFY(m->desktop.isStyled(first, TextStyle::Subheadline, ColorRole::Label));
        QVERIFY(m->desktop.isStyled(second, TextStyle::Caption, ColorRole::SecondaryLabel));
        QCOMPARE(m->placeOf(second).topLeft(), m->placeOf(first).bottomLeft() + QPoint(0, 1 + 2));
    }

    void theServersModelsAreListedInItsOrder() {
        QVERIFY(m->openOver({u"zephyr"_s, u"alpha"_s, u"mistral:7b"_s}));
        QCOMPARE(m->rows(),
                 (QStringList{appleIntelligence, u"zephyr"_s, u"alpha"_s, u"mistral:7b"_s}));
        QVERIFY(!m->screen().shows(u"No Ollama models found"_s));
        int bottom = 0;
        for (const QString& name : m->rows()) {
            QVERIFY(m->placeOf(m->row(name)).top() > bottom);
            bottom = m->placeOf(m->row(name)).bottom();
        }
    }

    void aRowShowsTheDetailIfThereIsOne() {
        m->conversation.server.areAvailable = true;
        m->conversation.server.details.insert(u"llama"_s, u"Ollama · 2.0 GB"_s);
        QVERIFY(m->openOver({u"llama"_s, u"bare"_s}));
        QCOMPARE(m->description(appleIntelligence), u"On-device · Private, Selected"_s);
        QCOMPARE(m->description(u"llama"_s), u"Ollama · 2.0 GB"_s);
        QCOMPARE(m->description(u"bare"_s), QString());
        QVERIFY(m->row(u"bare"_s)->height() < m->row(u"llama"_s)->height());
    }

    void onlyTheSelectedModelsRowIsMarked() {
        m->conversation.server.areAvailable = true;
        QVERIFY(m->openOver({u"one"_s, u"two"_s}));
        const auto marked = [this] {
            QStringList marked;
            for (const QString& name : m->rows()) {
                const bool isMarked = mark(name) == u"checkmark"_s;
                if (isMarked != m->description(name).contains(u"Selected"_s) ||
                    isMarked !=
                        bool(m->screen().find(name, QAccessible::ListItem)->state().selected))
                    return QStringList{u"at odds: "_s + name};
                if (isMarked)
                    marked.append(name);
            }
            return marked;
        };
        QCOMPARE(marked(), QStringList{appleIntelligence});
        for (const QString& name : {u"two"_s, u"one"_s, appleIntelligence, u"two"_s}) {
            QVERIFY(m->screen().press(name, QAccessible::ListItem));
            m->flush();
            QCOMPARE(marked(), QStringList{name});
        }
        QVERIFY(m->refresh({u"one"_s, u"two"_s}));
        QCOMPARE(marked(), QStringList{u"two"_s});
    }

    void aClickAnywhereOnARowSelects() {
        QVERIFY(m->openOver({u"one"_s}));
        auto* row = m->row(u"one"_s);
        const QRect inside = row->rect().adjusted(2, 2, -2, -2);
        for (const QPoint at : {inside.topLeft(), inside.bottomRight(), inside.center()}) {
            m->manager().select(m->manager().aiBackend);
            m->screen().clickAt(row->mapTo(m->window.get(), at));
            QCOMPARE(m->manager().selectedID.value(), u"ollama-one"_s);
        }
    }

    void anUnavailableModelIsSelectedAndStaysMarkedUnavailable() {
        m->conversation.model.state =
            Availability::unavailable(Availability::UnavailableReason::modelNotReady);
        m->conversation.server.areAvailable = true;
        QVERIFY(m->openOver({u"one"_s}));
        QVERIFY(m->screen().press(u"one"_s, QAccessible::ListItem));
        QVERIFY(m->screen().click(appleIntelligence, QAccessible::ListItem));
        QCOMPARE(m->manager().selectedID.value(), u"apple-intelligence"_s);
        m->flush();
        QCOMPARE(mark(appleIntelligence), u"Unavailable"_s);
        QCOMPARE(mark(u"one"_s), QString());
        QCOMPARE(m->description(appleIntelligence), u"On-device · Private, Unavailable"_s);
        QCOMPARE(m->description(u"one"_s), QString());
        m->conversation.model.state = Availability::available();
        QVERIFY(m->refresh({u"one"_s})); // looks again
        QTRY_COMPARE(mark(appleIntelligence), u"checkmark"_s);
    }

    void theRefreshButtonShowsTheRefresh() {
        const auto shows = [this](const QString& icon, double opacity, bool isEnabled) {
            const auto* button = m->refreshButton();
            return button->icon() == icon && button->symbolOpacity() == opacity &&
                   m->isDisabled(u"Refresh"_s) != isEnabled;
        };
        QVERIFY(m->openOver({}));
        QVERIFY(shows(u"arrow.clockwise"_s, 1.0, true));
        m->conversation.server.holdsListings = true;
        QVERIFY(m->screen().click(u"Refresh"_s));
        QTRY_COMPARE(m->listingsAsked(), std::size_t(1));
        m->flush();
        QVERIFY(shows(u"arrow.clockwise.circle.fill"_s, 0.5, false));
        QVERIFY(m->screen().click(u"Refresh"_s));
        m->screen().press(u"Refresh"_s);
        QCoreApplication::processEvents();
        QCOMPARE(m->listingsAsked(), std::size_t(1));
        m->conversation.server.answerListing({u"llama"_s});
        QVERIFY(m->settle());
        QCOMPARE(m->rows(), (QStringList{appleIntelligence, u"llama"_s}));
        QVERIFY(shows(u"arrow.clockwise"_s, 1.0, true));
    }

    void everyAppearanceRefreshes() {
        m->conversation.server.holdsListings = true;
        QVERIFY(m->open());
        QTRY_COMPARE(m->listingsAsked(), std::size_t(2)); // the catalogue's first, and the screen's
        for (std::size_t asked = 3; asked < 6; ++asked) {
            m->view->hide();
            QCoreApplication::processEvents();
            QCOMPARE(m->listingsAsked(), asked - 1);
            m->view->show();
            QTRY_COMPARE(m->listingsAsked(), asked);
        }
    }

    void theButtonIsBackWithTheFirstOfTwoRefreshes() {
        m->conversation.server.holdsListings = true;
        QVERIFY(m->open());
        QTRY_COMPARE(m->listingsAsked(), std::size_t(2));
        m->flush();
        QVERIFY(m->isDisabled(u"Refresh"_s));
        m->conversation.server.answerListing({u"old"_s});
        QTRY_VERIFY(!m->isDisabled(u"Refresh"_s));
        QCOMPARE(m->rows().value(1), u"old"_s);
        m->conversation.server.answerListing({u"new"_s});
        QTRY_COMPARE(m->rows().value(1), u"new"_s);
        QVERIFY(m->refreshButton()->isEnabled());
    }

    void anotherNumberOfModelsMakesAnotherList() {
        QVERIFY(m->openOver({u"one"_s, u"two"_s}));
        const QPointer<ModelRow> onDevice = m->row(appleIntelligence);
        const QPointer<ModelRow> one = m->row(u"one"_s);
        const QPointer<Button> button = m->refreshButton();
        QVERIFY(m->refresh({u"one"_s, u"two"_s, u"three"_s}));
        QCOMPARE(m->rows(), (QStringList{appleIntelligence, u"one"_s, u"two"_s, u"three"_s}));
        QTRY_VERIFY(!one);
        QVERIFY(!onDevice);
        QVERIFY(!button);
        const QPointer<ModelRow> again = m->row(u"one"_s);
        QVERIFY(m->refresh({}));
        QCOMPARE(m->rows(), QStringList{appleIntelligence});
        QVERIFY(m->screen().shows(u"No Ollama models found"_s));
        QTRY_VERIFY(!again);
        QVERIFY(m->refresh({u"one"_s}));
        QVERIFY(m->row(u"one"_s));
        QVERIFY(!m->screen().shows(u"No Ollama models found"_s));
    }

    void theSameNumberOfModelsChangesTheRowsInPlace() {
        m->conversation.server.details.insert(u"four"_s, u"Ollama · 4.0 GB"_s);
        QVERIFY(m->openOver({u"one"_s, u"two"_s}));
        const QPointer<ModelRow> onDevice = m->row(appleIntelligence);
        const QPointer<ModelRow> first = m->row(u"one"_s);
        const QPointer<ModelRow> second = m->row(u"two"_s);
        const QPointer<Button> button = m->refreshButton();
        QVERIFY(m->refresh({u"three"_s, u"four"_s}));
        QCOMPARE(m->rows(), (QStringList{appleIntelligence, u"three"_s, u"four"_s}));
        QCOMPARE(m->row(appleIntelligence), onDevice.data());
        QCOMPARE(m->row(u"three"_s), first.data());
        QCOMPARE(m->row(u"four"_s), second.data());
        QCOMPARE(m->refreshButton(), button.data());
        QVERIFY(m->description(u"four"_s).startsWith(u"Ollama · 4.0 GB"_s));
        QTRY_COMPARE(second->height(), second->sizeHint().height());
        // Each row selects the model that it shows now.
        QVERIFY(m->screen().press(u"four"_s, QAccessible::ListItem));
        QCOMPARE(m->manager().selectedID.value(), u"ollama-four"_s);
        QVERIFY(m->manager().selected());
    }

    void aVanishedSelectionFallsBackToTheOnDeviceModel() {
        m->conversation.server.areAvailable = true;
        QVERIFY(m->openOver({u"one"_s, u"two"_s}));
        QVERIFY(m->screen().press(u"two"_s, QAccessible::ListItem));
        m->flush();
        QCOMPARE(m->description(u"two"_s), u"Selected"_s);
        QVERIFY(m->refresh({u"one"_s, u"three"_s}));
        QCOMPARE(m->description(appleIntelligence), u"On-device · Private, Selected"_s);
        QCOMPARE(m->description(u"three"_s), QString());
    }

    void strangeNamesAreShownAsTheyAre() {
        const QStringList names{u"hf.co/some one/model:Q4_K_M"_s,
                                u"🦊 & friends"_s,
                                u"<b>bold</b>"_s,
                                u"x"_s.repeated(500),
                                u"نموذج"_s,
                                u"twin"_s,
                                u"twin"_s};
        QVERIFY(m->openOver(names));
        QCOMPARE(m->rows(), QStringList{appleIntelligence} + names);
        for (const QString& name : names) {
            QVERIFY(m->row(name)->width() <= ModelsView::width);
            QVERIFY(m->screen().press(name, QAccessible::ListItem));
            QCOMPARE(m->manager().selectedID.value(), u"ollama-"_s + name);
        }
        QCOMPARE(m->view->size().width(), ModelsView::width);
    }

    void aListOfTwoThousandModelsIsShown() {
        QStringList names;
        for (int i = 0; i < 2000; ++i)
            names.append(u"model-%1"_s.arg(i));
        QVERIFY(m->openOver(names));
        // Not through the reader: it walks to each element from the first one on.
        const auto rows = m->view->findChildren<ModelRow*>();
        QCOMPARE(rows.size(), 2001);
        QCOMPARE(rows.last()->text(), u"model-1999"_s);
        QVERIFY(rows.last()->isVisible());
        rows.last()->click();
        QCOMPARE(m->manager().selectedID.value(), u"ollama-model-1999"_s);
    }

    void theScreenMayGoInTheMiddleOfARefresh() {
        m->conversation.server.holdsListings = true;
        QVERIFY(m->open());
        QTRY_COMPARE(m->listingsAsked(), std::size_t(2));
        delete m->window->findChild<platform::ScrollArea*>();
        m->conversation.server.answerListing({u"one"_s});
        m->conversation.server.answerListing({u"one"_s, u"two"_s});
        QTRY_COMPARE(m->manager().ollamaBackends.value().size(), 2);
        QVERIFY(!m->manager().isRefreshing.value());
    }
};

TELLWICK_TEST(ModelsViewTests, Widgets)
#include "ModelsViewTests.moc"
