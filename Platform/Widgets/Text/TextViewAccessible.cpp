// SPDX-License-Identifier: MIT
// A TextView as assistive technology meets it.
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Text/TextView.h"

#include <QAccessibleWidget>

namespace platform {
namespace {

int narrowed(qsizetype value) {
    return static_cast<int>(value);
}

/// The text of a view as assistive technology reads it. Its name is the one that the view was
/// given, or else the text.
class TextViewAccessible final : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    explicit TextViewAccessible(TextView* view)
        : QAccessibleWidget(view, QAccessible::StaticText) {}

    QString text(QAccessible::Text type) const override {
        if (type == QAccessible::Name && view().accessibleName().isEmpty())
            return content();
        return QAccessibleWidget::text(type);
    }

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.readOnly = true;
        state.multiLine = true;
        state.selectableText = true;
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    void selection(int index, int* start, int* end) const override {
        const bool known = index == 0 && view().hasSelection();
        *start = known ? narrowed(view().selection().start) : 0;
        *end = known ? narrowed(view().selection().end) : 0;
    }
    int selectionCount() const override { return view().hasSelection() ? 1 : 0; }
    void addSelection(int start, int end) override { view().select({start, end}); }
    void setSelection(int index, int start, int end) override {
        if (index == 0)
            view().select({start, end});
    }
    void removeSelection(int index) override {
        if (index == 0)
            view().clearSelection();
    }

    int cursorPosition() const override { return narrowed(view().selection().end); }
    void setCursorPosition(int position) override { view().select({position, position}); }

    int characterCount() const override { return narrowed(content().size()); }
    QString text(int start, int end) const override { return content().mid(start, end - start); }

    QRect characterRect(int offset) const override {
        const QRect rect = view().flow().characterRect(offset).toAlignedRect();
        return rect.translated(view().mapToGlobal(QPoint(0, 0)));
    }
    int offsetAtPoint(const QPoint& point) const override {
        return narrowed(view().flow().characterAt(view().mapFromGlobal(QPointF(point))));
    }

    void scrollToSubstring(int, int) override {} // a view shows all of its text

    QString attributes(int offset, int* start, int* end) const override {
        const auto& ranges = view().content().ranges;
        const std::size_t next = view().content().firstRangeEndingAfter(offset);
        const bool isLast = next == ranges.size();
        if (isLast || ranges[next].start > offset) { // no style from one range to the next
            *start = next == 0 ? 0 : narrowed(ranges[next - 1].end());
            *end = isLast ? characterCount() : narrowed(ranges[next].start);
            return {};
        }
        const AttributedString::Range& range = ranges[next];
        *start = narrowed(range.start);
        *end = narrowed(range.end());
        QString out;
        if (range.styles & AttributedString::Strong)
            out += QStringLiteral("font-weight:bold;");
        if (range.styles & AttributedString::Emphasis)
            out += QStringLiteral("font-style:italic;");
        if (range.styles & AttributedString::Strikethrough)
            out += QStringLiteral("text-line-through-type:single;");
        if (range.styles & AttributedString::Link)
            out += QStringLiteral("text-underline-style:solid;");
        return out;
    }

private:
    TextView& view() const { return *static_cast<TextView*>(widget()); }
    QString content() const { return speakable(view().content().text); }
};

} // namespace

QAccessibleInterface* TextView::makeAccessible(const QString&, QObject* object) {
    auto* view = qobject_cast<TextView*>(object);
    return view ? new TextViewAccessible(view) : nullptr;
}

} // namespace platform
