// SPDX-License-Identifier: MIT
#include "Tellwick/Core/AppConfig.h"

namespace tellwick::AppConfig {

using namespace Qt::StringLiterals;

// The literals are built into the program: handing one out neither copies nor initialises anything,
// which also makes a first use from several threads harmless.

QString appName() {
    return u"Tellwick"_s;
}

QString tagline() {
    return u"Private · Offline · On-device"_s;
}

QString welcomeMessage() {
    return u"Hi! I'm your on-device AI assistant, running entirely on this device via Apple "
           u"Intelligence. Ask me anything — nothing leaves your device."_s;
}

QString modelLabel() {
    return u"Apple Intelligence · On-device"_s;
}

QString website() {
    return u"https://tellwick.example"_s;
}

QString copyright() {
    return u"© 2026 The Tellwick makers"_s;
}

QString appDescription() {
    return u"Tellwick is a private AI chat assistant powered entirely by Apple Intelligence. "
           u"Everything runs on your device — no internet connection or account is needed, and no "
           u"data ever leaves your device."_s;
}

QString disclaimer() {
    return u"This app is for personal research and exploration only. Responses may be incomplete, "
           u"outdated, or declined due to model guardrails. Do not rely on it for professional, "
           u"medical, legal, or financial decisions."_s;
}

QString defaultSystemPrompt() {
    return u"You are an on-device AI assistant running via Apple Intelligence directly on the "
           u"user's device. All processing happens locally — you have no internet access and "
           u"cannot retrieve real-time information. You work entirely from your pre-trained "
           u"knowledge. Never claim to have internet access, live data, or the ability to look "
           u"things up."_s;
}

QList<WritingMode> writingModes() {
    static const QList<WritingMode> modes{
        {u"Proofread"_s, u"checkmark.circle"_s,
         u"You are a careful editor. Correct grammar, spelling, punctuation, and clarity in the "
         u"text the user provides. Return the corrected text, then briefly list the changes "
         u"made."_s},
        {u"Summarise"_s, u"text.alignleft"_s,
         u"You are a concise summariser. When the user gives you text, return a clear, "
         u"well-structured summary that captures the key points."_s},
        {u"Explain Simply"_s, u"lightbulb"_s,
         u"Explain things simply, as if to someone completely new to the topic. Use plain "
         u"language, short sentences, and helpful analogies. Avoid jargon."_s},
        {u"Rewrite"_s, u"pencil.and.outline"_s,
         u"Rewrite the user's text to improve clarity, flow, and conciseness. Preserve the "
         u"original meaning and intended tone."_s},
    };
    return modes;
}

QString systemPrompt(const std::optional<WritingMode>& activeMode) {
    if (!activeMode)
        return defaultSystemPrompt();
    return defaultSystemPrompt() + "\n\n"_L1 + activeMode->systemPrompt;
}

} // namespace tellwick::AppConfig
