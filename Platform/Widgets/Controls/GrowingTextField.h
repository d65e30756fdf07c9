// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QPlainTextEdit>

#include <functional>

namespace platform {

class OverlayScrollBar;

/// A field for plain text that grows with what is typed, from one line to six, then scrolls.
///
/// It stands on a rounded background without a border. Return submits; Shift-Return and Alt-Return
/// make a new line; Return while an input method composes commits the composition and submits
/// nothing. Tab leaves the field. Ctrl-Return, Ctrl-Home and Ctrl-End are left to its parents, and
/// so are Page Up and Page Down as long as all lines are visible. Whatever is pasted becomes plain
/// text. Emoji are shown in the font for emoji.
class GrowingTextField : public QPlainTextEdit {
    Q_OBJECT

public:
    static constexpr int maximumLines = 6;

    explicit GrowingTextField(const Theme& theme);

    /// The text, its lines separated by LF; a composition that is not committed is none of it.
    QString text() const;

    /// Shows another text, the cursor at its end, nothing to undo. An equal text changes nothing,
    /// neither cursor nor selection nor composition, so an owner may hand back what it was told.
    /// The owner is not told of a text that it set itself.
    void setText(const QString& text);

    /// Called after every change that the user has made to the text.
    void onTextEdited(std::function<void(const QString&)> edited) { m_edited = std::move(edited); }
    void onSubmit(std::function<void()> submit) { m_submit = std::move(submit); }

    /// The height of a field of one line.
    int lineHeight() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    struct Extent {
        qreal height;
        bool isWhole; // there is nothing beyond
    };

    void alignText();
    void breakLinesFor(QStringView text);
    Extent extent() const;
    void fitHeight();
    /// What the input method shows in the text while it composes.
    QString composition() const;
    void commitComposition();
    void handleReturn(QKeyEvent* event);

    const Theme& m_theme;
    OverlayScrollBar* m_bar;
    std::function<void(const QString&)> m_edited;
    std::function<void()> m_submit;
    bool m_isSetting = false;
    bool m_showsFocusRing = false;
    int m_height = 0; // of the last size hint
};

} // namespace platform
