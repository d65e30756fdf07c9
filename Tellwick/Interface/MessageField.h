// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/GrowingTextField.h"
#include "Tellwick/Interface/Environment.h"

namespace tellwick {

class ChatViewModel;

/// The field for the next message: it edits the controller's draft, Return sends it. What is typed
/// elsewhere in the screen, and of no use there, is the beginning of a message.
class MessageField final : public platform::GrowingTextField {
    Q_OBJECT

public:
    /// Both outlive the field.
    MessageField(const Environment& environment, ChatViewModel& vm);

    /// Takes what was typed elsewhere: letters, Backspace, a paste. Returns whether it was that.
    bool takeTyping(QKeyEvent& event);
    /// Takes what an input method begins to compose inside a widget that only shows text.
    void takeCompositionsFrom(const QWidget& area);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace tellwick
