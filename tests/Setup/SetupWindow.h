// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observer.h"
#include "Setup/SetupView.h"
#include "tests/support/ScreenReader.h"

#include <QDir>
#include <QTest>

#include <memory>

namespace tests {

/// The window of the set-up over a state that the test sets, with actions that are noted.
class SetupWindow {
public:
    SetupWindow() {
        using namespace Qt::StringLiterals;
        state.offers =
            QList<setup::ModelOffer>{{.name = u"Small 1.5B"_s,
                                      .licence = u"Apache-2.0"_s,
                                      .size = 1'100'000'000,
                                      .address = QUrl(u"https://models.example/small.gguf"_s),
                                      .sha256 = {},
                                      .machineMemory = 0},
                                     {.name = u"Large 4B"_s,
                                      .licence = u"MIT"_s,
                                      .size = 2'500'000'000,
                                      .address = QUrl(u"https://large.example/large.gguf"_s),
                                      .sha256 = {},
                                      .machineMemory = 12'000'000'000}};
        state.chosen = 1;
        state.folder = QDir::homePath() + u"/data/models"_s;
        state.room = 45'300'000'000;
        state.engine = setup::EnginePhase::Ready;
    }

    bool show() {
        view = std::make_unique<setup::SetupView>(theme, windowButtons, state, actions());
        flush();
        view->resize(view->sizeHint());
        view->show();
        return QTest::qWaitForWindowActive(view.get());
    }

    /// Brings the window up to date.
    void flush() const {
        platform::flushObservers(view.get());
        QCoreApplication::processEvents();
    }
    void set(setup::ModelPhase phase) {
        state.model = phase;
        flush();
    }
    void set(setup::EnginePhase phase) {
        state.engine = phase;
        flush();
    }

    ScreenReader screen() const { return ScreenReader(view.get()); }
    QStringList buttons() const { return screen().names(QAccessible::Button); }

    setup::SetupActions actions() {
        using namespace Qt::StringLiterals;
        const auto note = [this](const QString& name) { return [this, name] { done += name; }; };
        return {.choose = [this](qsizetype i) { done += u"choose %1"_s.arg(i); },
                .download = note(u"download"_s),
                .pause = note(u"pause"_s),
                .useFile = [this](const QString& path) { done += u"use "_s + path; },
                .installEngine = note(u"install"_s),
                .openTellwick = note(u"open"_s),
                .notNow = note(u"not now"_s)};
    }

    platform::Theme theme;
    setup::SetupView::WindowButtonsWished windowButtons;
    setup::SetupState state;
    QStringList done; ///< what the user has asked for
    std::unique_ptr<setup::SetupView> view;
};

} // namespace tests
