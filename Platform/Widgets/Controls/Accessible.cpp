// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Accessible.h"

#include <QAccessibleWidget>
#include <QWidget>

namespace platform {

namespace {

class ElementInterface final : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QString text(QAccessible::Text kind) const override {
        auto text = QAccessibleWidget::text(kind);
        if (text.isEmpty() && kind == QAccessible::Name)
            text = element().accessibleText();
        else if (text.isEmpty() && kind == QAccessible::Description)
            text = element().accessibleDetail();
        // Without a description, a tool tip stands in for it: one that says the name again is
        // noise.
        if (kind == QAccessible::Description && text == this->text(QAccessible::Name))
            text.clear();
        return speakable(text);
    }

    QAccessible::Role role() const override { return element().accessibleRole(); }

    QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        element().addAccessibleState(state);
        return state;
    }

    QStringList actionNames() const override {
        return element().accessibleActions() + QAccessibleWidget::actionNames();
    }

    void doAction(const QString& name) override {
        if (element().accessibleActions().contains(name)) {
            if (widget()->isEnabled())
                element().performAccessibleAction();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    AccessibleElement& element() const { return dynamic_cast<AccessibleElement&>(*object()); }
};

QAccessibleInterface* elementInterface(const QString&, QObject* object) {
    const bool isElement = dynamic_cast<AccessibleElement*>(object) != nullptr;
    return isElement ? new ElementInterface(static_cast<QWidget*>(object)) : nullptr;
}

} // namespace

QString speakable(QString text) {
    return text.replace(QChar(0), QChar(QChar::ReplacementCharacter));
}

void AccessibleElement::install() {
    QAccessible::installFactory(elementInterface);
}

void tellChanged(QWidget* widget, QAccessible::State changed) {
    QAccessibleStateChangeEvent event(widget, changed);
    QAccessible::updateAccessibility(&event);
}

void announce(QWidget* widget, const QString& text) {
    if (!QAccessible::isActive())
        return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(widget, text);
#else
    static_cast<void>(text);
    QAccessibleEvent event(widget, QAccessible::NameChanged);
#endif
    QAccessible::updateAccessibility(&event);
}

} // namespace platform
