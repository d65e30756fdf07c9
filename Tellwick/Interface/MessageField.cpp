// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/MessageField.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Overlays/Menu.h"
#include "Tellwick/Conversations/ChatViewModel.h"

#include <QApplication>
#include <QKeyEvent>

namespace tellwick {

using namespace Qt::StringLiterals;

MessageField::MessageField(const Environment& environment, ChatViewModel& vm)
    : GrowingTextField(environment.theme) {
    setPlaceholderText(u"Message"_s);
    setAccessibleName(u"Message"_s);
    onTextEdited([&vm](const QString& text) { vm.draft = text; });
    onSubmit([&vm] { vm.send(); });
    platform::addEditMenu(*this, environment.theme, environment.overlays);
    platform::observe(this, [this, &vm] { setText(vm.draft.value()); });
}

bool MessageField::takeTyping(QKeyEvent& event) {
    const bool isTyped = !event.text().isEmpty() && event.text().front().isPrint() &&
                         !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    const bool isEditing = event.key() == Qt::Key_Backspace || event.matches(QKeySequence::Paste);
    if (hasFocus() || !(isTyped || isEditing))
        return false;
    setFocus(Qt::OtherFocusReason);
    QCoreApplication::sendEvent(this, &event);
    return true;
}

void MessageField::takeCompositionsFrom(const QWidget& area) {
    connect(
        qApp, &QApplication::focusChanged, this,
        [this, &area](QWidget*, QWidget* now) {
            if (now && area.isAncestorOf(now)) {
                now->setAttribute(Qt::WA_InputMethodEnabled); // or it is not asked to compose there
                now->installEventFilter(this);
            }
        });
}

bool MessageField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::InputMethod || watched == viewport())
        return GrowingTextField::eventFilter(watched, event);
    setFocus(Qt::OtherFocusReason);
    QCoreApplication::sendEvent(this, event);
    return true;
}

} // namespace tellwick
