// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

#include <optional>

/// The fixed texts of the application, in one place. Nothing here changes at run time, and there is
/// nothing for a user to configure. Each function gives the same value at every call; any thread.
namespace tellwick::AppConfig {

/// A preset writing task that the chat screen offers as a chip.
struct WritingMode {
    QString label;        ///< The title on the chip; also the mode's identity.
    QString icon;         ///< The name of the icon beside the label.
    QString systemPrompt; ///< The instruction that the mode adds to the default system prompt.

    /// What tells one mode from another: its label.
    const QString& id() const { return label; }

    /// Two modes are the same mode when their identities are equal, whatever else they hold.
    friend bool operator==(const WritingMode& a, const WritingMode& b) { return a.id() == b.id(); }
};

QString appName();
QString tagline();
/// The greeting of an empty conversation. Shown, never stored as a message.
QString welcomeMessage();
QString modelLabel();
/// The address of the maker's web site.
QString website();
QString copyright();
QString appDescription();
QString disclaimer();
/// Sent with every turn, whichever model answers it.
QString defaultSystemPrompt();
/// The four writing tasks in the order of their chips.
QList<WritingMode> writingModes();

/// The system prompt of a turn: the default prompt, followed by a blank line and the mode's own
/// prompt when a mode is active.
QString systemPrompt(const std::optional<WritingMode>& activeMode);

} // namespace tellwick::AppConfig
