// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/MessageField.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Overlays/Menu.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Tellwick/Conversations/ChatViewModel.h"

#include <QApplication>
#include <QKeyEvent>

namespace tellwick {

using namespace Qt::StringLiterals;

MessageField::MessageField(const Environment& environment, ChatViewModel& vm)
    : GrowingTextField(environment.theme)
    , m_environment(environment) {
    setPlaceholderText(u"Message"_s);
    setAccessibleName(u"Message"_s);
    onTextEdited([&vm](const QString& text) { vm.draft = text; });
    onSubmit([&vm] { vm.send(); });
    onContextMenu([this](QPoint position) { openMenu(position); });
    platform::observe(this, [this, &vm] { setText(vm.draft.value()); });
}

void MessageField::openMenu(QPoint globalPosition) {
    const bool hasSelection = textCursor().hasSelection();
    std::vector<platform::MenuEntry> entries{
        {u"Undo"_s, {}, [this] { undo(); }, document()->isUndoAvailable()},
        {u"Redo"_s, {}, [this] { redo(); }, document()->isRedoAvailable()},
        platform::MenuEntry::separator(),
        {u"Cut"_s, {}, [this] { cut(); }, hasSelection},
        {u"Copy"_s, {}, [this] { copy(); }, hasSelection},
        {u"Paste"_s, {}, [this] { paste(); }, canPaste()},
        {u"Select All"_s, {}, [this] { selectAll(); }, !document()->isEmpty()}};
    m_environment.overlays.present(std::make_unique<platform::Menu>(
        m_environment.theme, u"Edit"_s, std::move(entries), globalPosition));
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
