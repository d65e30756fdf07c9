// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/GrowingTextField.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Look/Painting.h"
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"

#include <QAbstractTextDocumentLayout>
#include <QAccessibleWidget>
#include <QGuiApplication>
#include <QInputMethod>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocumentFragment>
#include <QWheelEvent>
#include <QtMath>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace platform {
namespace {

constexpr int longWord = 2000;

/// Whether a text holds a word that the editor would take far too long to break: it looks at the
/// whole rest of the word for each line of it.
bool hasLongWord(QStringView text) {
    qsizetype length = 0;
    for (const QChar character : text) {
        length = character.isSpace() ? 0 : length + 1;
        if (length > longWord)
            return true;
    }
    return false;
}

/// What the editor paints on. Assistive technology meets the field alone: there is the focus, which
/// Qt reports of this one as well.
class ViewportAccessible final : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.invisible = true;
        state.focusable = false;
        state.focused = false;
        return state;
    }
};

QAccessibleInterface* makeViewportAccessible(const QString&, QObject* object) {
    const auto* field = object ? qobject_cast<GrowingTextField*>(object->parent()) : nullptr;
    auto* widget = qobject_cast<QWidget*>(object);
    return field && widget == field->viewport() ? new ViewportAccessible(widget) : nullptr;
}

} // namespace

GrowingTextField::GrowingTextField(const Theme& theme)
    : m_theme(theme)
    , m_bar(new OverlayScrollBar(theme, this)) {
    QAccessible::installFactory(makeViewportAccessible); // once for all fields
    setFrameShape(QFrame::NoFrame);
    // The editor asks for one pixel more than its lines take, or else it scrolls.
    setViewportMargins(Theme::fieldPaddingX, Theme::fieldPaddingY, Theme::fieldPaddingX,
                       Theme::fieldPaddingY - 1);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(0);
    document()->clearUndoRedoStacks(); // of the margin
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    breakLinesFor({});
    setTabChangesFocus(true);
    setContextMenuPolicy(Qt::NoContextMenu); // of the toolkit's
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (document()->characterCount() < longWord)
            breakLinesFor({});
        alignText();
        fitHeight();
        if (m_isSetting)
            return;
        m_showsFocusRing = false; // the cursor tells, once there is something to write
        update();
        if (m_edited)
            m_edited(text());
    });
    QScrollBar* lines = verticalScrollBar();
    connect(lines, &QScrollBar::rangeChanged, this, [this, lines](int from, int to) {
        m_bar->setRange(from, to);
        m_bar->setPageStep(lines->pageStep());
    });
    connect(lines, &QScrollBar::valueChanged, this, [this](int value) {
        m_bar->setValue(value);
        m_bar->flash();
    });
    connect(m_bar, &QAbstractSlider::valueChanged, lines, &QScrollBar::setValue);
    theme.emojiFont().showIn(*document());
    observe(this, [this] {
        setPalette(fieldPalette(m_theme, palette()));
        setFont(m_theme.font(TextStyle::Body));
        fitHeight();
        update();
    });
}

// Text

QString GrowingTextField::text() const {
    // Not toPlainText(), which turns no-break spaces into blanks.
    QString text = document()->toRawText();
    text.replace(QChar::ParagraphSeparator, u'\n');
    text.replace(QChar::LineSeparator, u'\n');
    return text;
}

void GrowingTextField::setText(const QString& text) {
    if (text == this->text())
        return;
    if (!composition().isEmpty())
        QGuiApplication::inputMethod()->reset();
    m_isSetting = true;
    breakLinesFor(text);
    setPlainText(text);
    m_isSetting = false;
    moveCursor(QTextCursor::End);
}

bool GrowingTextField::canInsertFromMimeData(const QMimeData* source) const {
    return source->hasText() || source->hasHtml();
}

void GrowingTextField::insertFromMimeData(const QMimeData* source) {
    QString text = source->text();
    if (text.isEmpty() && source->hasHtml())
        text = QTextDocumentFragment::fromHtml(source->html()).toPlainText();
    text.replace("\r\n"_L1, "\n"_L1);
    text.replace(u'\r', u'\n');
    text.remove(QChar::Null);
    if (hasLongWord(text))
        breakLinesFor(text);
    textCursor().insertText(text);
    ensureCursorVisible();
}

/// Lines break between words, but anywhere in a text with a word of thousands of characters.
void GrowingTextField::breakLinesFor(QStringView text) {
    setWordWrapMode(hasLongWord(text) ? QTextOption::WrapAnywhere
                                      : QTextOption::WrapAtWordBoundaryOrAnywhere);
}

/// Text that begins in a script read from the right lies right.
void GrowingTextField::alignText() {
    QTextBlock block = document()->begin();
    while (block.isValid() && block.length() <= 1)
        block = block.next();
    const bool right = block.isValid() && block.text().isRightToLeft();
    QTextOption option = document()->defaultTextOption();
    const Qt::Alignment alignment = right ? Qt::AlignRight : Qt::AlignLeft;
    if (option.alignment() != alignment) {
        option.setAlignment(alignment);
        document()->setDefaultTextOption(option);
    }
}

// Size

/// How far the first lines reach; looks at no more of the text than these.
GrowingTextField::Extent GrowingTextField::extent() const {
    qreal height = 0;
    int room = maximumLines;
    const QAbstractTextDocumentLayout* layout = document()->documentLayout();
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        const qreal whole = layout->blockBoundingRect(block).height(); // lays it out, too
        const int lines = std::max(1, block.layout()->lineCount());
        if (lines > room) {
            const QTextLine last = room > 0 ? block.layout()->lineAt(room - 1) : QTextLine();
            return {last.isValid() ? height + last.y() + last.height() : height, false};
        }
        room -= lines;
        height += whole;
    }
    return {height, true};
}

int GrowingTextField::lineHeight() const {
    // The theme's font, not the widget's: a change reaches the widget in no particular order.
    const QFont body = m_theme.font(TextStyle::Body);
    return qCeil(QFontMetricsF(body).lineSpacing()) + 2 * Theme::fieldPaddingY;
}

QSize GrowingTextField::sizeHint() const {
    const qreal line = QFontMetricsF(font()).lineSpacing();
    return {200, qCeil(std::max(line, extent().height)) + 2 * Theme::fieldPaddingY};
}

QSize GrowingTextField::minimumSizeHint() const {
    return {80, sizeHint().height()};
}

void GrowingTextField::fitHeight() {
    const int height = sizeHint().height();
    if (height != m_height) {
        m_height = height;
        updateGeometry();
    }
}

void GrowingTextField::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    fitHeight();
    // A line that was added scrolled the first one away before there was room for it.
    if (extent().isWhole && height() >= m_height)
        verticalScrollBar()->setValue(0);
    const int inset = Theme::fieldPaddingY;
    const int barWidth = m_bar->sizeHint().width();
    m_bar->setGeometry(width() - barWidth, inset, barWidth, height() - 2 * inset);
}

// Keyboard

QString GrowingTextField::composition() const {
    return textCursor().block().layout()->preeditAreaText();
}

void GrowingTextField::inputMethodEvent(QInputMethodEvent* event) {
    QPlainTextEdit::inputMethodEvent(event);
    fitHeight();
}

void GrowingTextField::commitComposition() {
    QGuiApplication::inputMethod()->commit();
    if (composition().isEmpty())
        return;
    // The input method left it to the field.
    QInputMethodEvent commit;
    commit.setCommitString(composition());
    inputMethodEvent(&commit);
}

void GrowingTextField::handleReturn(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (modifiers == Qt::NoModifier) {
        if (!composition().isEmpty())
            commitComposition();
        else if (m_submit)
            m_submit();
    } else if (modifiers == Qt::ShiftModifier || modifiers == Qt::AltModifier) {
        commitComposition();
        textCursor().insertBlock();
        ensureCursorVisible();
    } else {
        event->ignore();
    }
}

void GrowingTextField::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const bool isPage = key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    const bool isEnd = key == Qt::Key_Home || key == Qt::Key_End;
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        handleReturn(event);
    else if ((isPage && verticalScrollBar()->maximum() == 0) ||
             (isEnd && event->modifiers() == Qt::ControlModifier))
        event->ignore();
    else
        QPlainTextEdit::keyPressEvent(event);
}

void GrowingTextField::focusInEvent(QFocusEvent* event) {
    QPlainTextEdit::focusInEvent(event);
    m_showsFocusRing = showsFocusRing(event->reason(), m_showsFocusRing);
    update();
}

void GrowingTextField::focusOutEvent(QFocusEvent* event) {
    QPlainTextEdit::focusOutEvent(event);
    update();
}

// The rest

bool GrowingTextField::event(QEvent* event) {
    if (event->type() != QEvent::Paint)
        return QPlainTextEdit::event(event);
    // What lies around the viewport, and under it.
    QPainter painter(this);
    paintField(painter, m_theme, rect(), Theme::fieldRadius, m_showsFocusRing && hasFocus());
    return true;
}

void GrowingTextField::wheelEvent(QWheelEvent* event) {
    if (event->modifiers() & Qt::ControlModifier)
        event->ignore(); // the window's
    else
        QPlainTextEdit::wheelEvent(event);
}

} // namespace platform
