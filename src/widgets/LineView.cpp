// SPDX-License-Identifier: MIT
#include "LineView.h"

#include "LineLayout.h"
#include "WidgetBuilders.h"

#include <QElapsedTimer>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr qsizetype linesAtOnce = 10'000;
constexpr auto turnTime = 16ms;
// What is inserted in one go: the time is looked at between two of these.
constexpr qsizetype pieceLines = 200;
constexpr qsizetype pieceLetters = 50'000;

QTextCursor endOf(QTextDocument* document)
{
    QTextCursor cursor(document);
    cursor.movePosition(QTextCursor::End);
    return cursor;
}

qsizetype lineCount(const QList<LinePart>& parts)
{
    qsizetype count = 0;
    for (const LinePart& part : parts)
        count += part.lines.size();
    return count;
}

} // namespace

LineView::LineView(QWidget* parent)
    : QTextEdit(parent)
{
    setReadOnly(true);
    showFocusAtFrame(this);
    setLayoutDirection(Qt::LeftToRight); // logs and JSON, in every language
    setUndoRedoEnabled(false);           // else the document keeps a command for every line
    // Wrapped by Qt's own layout, a line costs 40 µs before anything is shown, and a million of them never open.
    setLineWrapMode(QTextEdit::NoWrap);
    document()->setDocumentLayout(new LineLayout(document()));
    turn.callOnTimeout(this, &LineView::fillForAWhile);
}

void LineView::setLines(const QList<LinePart>& newParts, From newFrom)
{
    clear();
    parts = newParts;
    from = newFrom;
    next = 0;
    end = lineCount(parts);
    const qsizetype later = qMax(end - linesAtOnce, 0);
    while (end - next > later)
        insertLines();
    if (from == From::End)
        followEnd();
    if (isFilling())
        turn.start(1ms); // two timers of 0 ms would starve all others
    else
        endFilling();
}

void LineView::appendLine(const QString& line)
{
    if (isFilling() && from == From::Start) {
        parts.append({.lines = {line}});
        ++end;
        return;
    }
    // QTextEdit::append would take a line with a tag in it for markup.
    endOf(document()).insertText(document()->isEmpty() ? line : u'\n' + line);
    followEnd();
}

bool LineView::isBlank() const
{
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (!block.text().trimmed().isEmpty())
            return false;
    }
    return true;
}

QMimeData* LineView::createMimeDataFromSelection() const
{
    const QTextCursor selection = textCursor();
    const int start = selection.selectionStart();
    const int length = selection.selectionEnd() - start;
    // A cursor copies a long selection letter by letter.
    QString text = length > document()->characterCount() / 2 ? document()->toRawText().mid(start, length)
                                                             : selection.selectedText();
    text.replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
    if (isFilling() && isAllSelected())
        text = from == From::Start ? text + u'\n' + waitingText() : waitingText() + u'\n' + text;
    auto* plain = new QMimeData;
    plain->setText(text);
    return plain;
}

QString LineView::lineAt(qsizetype index) const
{
    for (const LinePart& part : parts) {
        if (index < part.lines.size())
            return part.prefix + part.lines.at(index);
        index -= part.lines.size();
    }
    return {};
}

/// The next lines to be shown: some from the one end or the other of those that are still to come.
QString LineView::takeLines()
{
    QString text;
    for (qsizetype count = 0; count < pieceLines && text.size() < pieceLetters && isFilling(); ++count) {
        if (from == From::Start)
            text += count > 0 ? u'\n' + lineAt(next++) : lineAt(next++);
        else
            text.prepend(count > 0 ? lineAt(--end) + u'\n' : lineAt(--end));
    }
    return text;
}

QString LineView::waitingText() const
{
    QString text;
    for (qsizetype index = next; index < end; ++index)
        text += index > next ? u'\n' + lineAt(index) : lineAt(index);
    return text;
}

bool LineView::isAllSelected() const
{
    const QTextCursor cursor = textCursor();
    return cursor.hasSelection() && cursor.selectionStart() == 0
        && cursor.selectionEnd() == document()->characterCount() - 1;
}

void LineView::insertLines()
{
    const bool isFirst = next == 0 && end == lineCount(parts);
    const QString text = takeLines();
    if (isFirst)
        QTextCursor(document()).insertText(text);
    else if (from == From::Start)
        endOf(document()).insertText(u'\n' + text);
    else
        QTextCursor(document()).insertText(text + u'\n');
}

/// Moves down to the last line and leaves the columns in view as they are.
void LineView::followEnd()
{
    const int left = horizontalScrollBar()->value();
    setTextCursor(endOf(document()));
    horizontalScrollBar()->setValue(left);
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

/// Leaves in view what is in view, and a selection of everything one of everything.
void LineView::fillForAWhile()
{
    const bool allSelected = isAllSelected();
    QScrollBar* bar = verticalScrollBar();
    const int fromEnd = bar->maximum() - bar->value();
    QElapsedTimer time;
    time.start();
    do {
        insertLines();
    } while (isFilling() && time.elapsed() < turnTime.count());
    if (from == From::End)
        bar->setValue(bar->maximum() - fromEnd);
    if (allSelected)
        selectAll();
    if (!isFilling())
        endFilling();
}

void LineView::endFilling()
{
    turn.stop();
    parts.clear();
    next = 0;
    end = 0;
}
