// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <functional>
#include <optional>

namespace platform {
class Button;
class Label;
class ProgressBar;
class Theme;
} // namespace platform

namespace setup {

/// The row of a section that tells how far a thing is: a text, a bar above it while something is
/// under way, and the button that brings it further.
///
/// What is said changes less often than what is shown: assistive technology hears of it when it
/// does, without asking.
class StatusRow final : public QWidget {
    Q_OBJECT

public:
    enum class Kind { Plain, Done, Problem };

    struct Status {
        Kind kind = Kind::Plain;
        QString text{};
        QString spoken{}; ///< empty: the text
        bool hasBar = false;
        std::optional<double> fraction{}; ///< of the bar; none: nobody can tell
        QString button{};                 ///< empty: none
    };

    /// `name` says what the row is about.
    StatusRow(const platform::Theme& theme, const QString& name);

    void show(const Status& status);

    platform::Button* button() const { return m_button; }
    /// Called when the button goes while it has the focus, with the reason to give it on.
    void onFocusLost(std::function<void(Qt::FocusReason)> lost) { m_focusLost = std::move(lost); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void say(const QString& text);

    const QString m_name;
    platform::Label* m_done;
    platform::Label* m_problem;
    platform::Label* m_text;
    platform::ProgressBar* m_bar;
    platform::Button* m_button;
    std::function<void(Qt::FocusReason)> m_focusLost;
};

} // namespace setup
