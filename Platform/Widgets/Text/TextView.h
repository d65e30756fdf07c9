// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/InlineMarkdown.h"
#include "Platform/Text/TextSnapshot.h"
#include "Platform/Widgets/Look/Theme.h"
#include "Platform/Widgets/Scrolling/DragScroll.h"
#include "Platform/Widgets/Text/TextFlow.h"
#include "Platform/Widgets/Text/TextLinks.h"
#include "Platform/Widgets/Text/TextSelection.h"

#include <QElapsedTimer>
#include <QWidget>
#include <QtMath>

#include <functional>
#include <optional>

class QAccessibleInterface;

namespace platform {

/// Text to read: plain or with inline Markdown, selected with the pointer, made for text that
/// grows.
///
/// Given longer and longer beginnings of one text, it lays out and repaints only what changed, and
/// keeps the user's selection. Drag, double click (word), triple click (paragraph) and Shift-click
/// select; Ctrl-A and Ctrl-C work while it has the focus; other keys are left to its parents, and
/// so is the context menu. Links to the web and to mail addresses look and act as links; with the
/// keyboard, Tab goes from link to link and Return opens one. Its only margins are those of
/// TextFormat; it paints no background but that of code.
class TextView : public QWidget {
    Q_OBJECT

public:
    /// What the text stands on decides its colours.
    enum class Background {
        Window, ///< or a light fill over it
        Accent, ///< the accent's fill
    };

    /// `theme` outlives the view.
    TextView(const Theme& theme, Background background, QWidget* parent = nullptr);

    /// Shows a text as it is.
    void setPlainText(const TextSnapshot& text) { setText(text, false); }
    /// Shows a text with its inline Markdown read (InlineMarkdown).
    void setMarkdown(const TextSnapshot& text) { setText(text, true); }

    /// What is shown.
    const AttributedString& content() const { return m_flow.content(); }

    /// The size that the text takes when its lines break at `maximumWidth`: as wide as its widest
    /// line. A view that is then made that wide keeps these lines.
    QSize sizeWithin(int maximumWidth);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override { return {qCeil(m_flow.usedWidth()), qCeil(m_flow.height())}; }
    QSize minimumSizeHint() const override { return {1, qCeil(m_flow.format().lineHeight())}; }

    bool hasSelection() const { return !selection().isEmpty(); }
    TextSpan selection() const { return m_selection.span(); }
    QString selectedText() const {
        return content().text.mid(selection().start, selection().length());
    }
    /// Selects what of a span lies in the text.
    void select(TextSpan span) { setSelection(TextSelection(span.within(content().text.size()))); }
    void selectAll() { select({0, content().text.size()}); }
    void clearSelection() { select({}); }

    /// Lights every place where a text stands, in letters of either case; an empty one stands
    /// nowhere. The place at `current`, if there is one, is lit the brightest.
    void setFound(const QString& text, std::optional<qsizetype> current);
    /// Where a character stands, in the view's coordinates.
    QRect characterRect(qsizetype position) const {
        return m_flow.characterRect(position).toAlignedRect();
    }

    /// Called when the user opens a link: an http, https or mailto address.
    void onLinkActivated(std::function<void(const QUrl&)> open) { m_openLink = std::move(open); }

    /// The text laid out, for the accessible interface.
    const TextFlow& flow() const { return m_flow; }

protected:
    bool event(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent*) override { setCursor(Qt::IBeamCursor); }
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    static QAccessibleInterface* makeAccessible(const QString& className, QObject* object);

    void setText(const TextSnapshot& text, bool isMarkdown);
    void replaceTail(qsizetype from, const AttributedString& tail);
    void fit(int width) const;
    void setSelection(const TextSelection& selection);
    void extendSelection(qsizetype position) {
        setSelection(m_selection.extended(content().text, position));
    }
    void updateSpan(TextSpan span);
    QList<TextFlow::Mark> marksWithin(const QRect& clip) const;
    TextLink linkUnder(const QPointF& point) const {
        return linkAt(content(), m_flow.characterAt(point));
    }
    void setFocusedLink(TextSpan link);

    mutable TextFlow m_flow; // its width is a cache of the last question about heights

    TextSnapshot m_source;
    bool m_isMarkdown = false;
    InlineMarkdown::Position m_done; // of the source; a plain text is as long as its result
    qsizetype m_firstLink = -1;

    TextSelection m_selection;
    bool m_isSelecting = false;
    DragScroll m_dragScroll;
    QElapsedTimer m_sinceDoubleClick;
    QPoint m_pressed;
    TextSpan m_pressedLink;
    TextSpan m_focusedLink;
    QString m_found;
    std::optional<qsizetype> m_currentFound;

    std::function<void(const QUrl&)> m_openLink;
};

} // namespace platform
