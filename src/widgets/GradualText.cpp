// SPDX-License-Identifier: MIT
#include "GradualText.h"

#include <QTextCursor>
#include <QTextEdit>

namespace {

constexpr qsizetype partLength = 16 * 1024; // some ms each, and more than a screen

/// Where a part that begins at `begin` ends: after a line, unless that is far off.
qsizetype endOfPart(const QString& text, qsizetype begin)
{
    if (text.size() - begin <= partLength)
        return text.size();
    const qsizetype feed = text.lastIndexOf(u'\n', begin + partLength - 1);
    return feed < begin ? begin + partLength : feed + 1;
}

} // namespace

GradualText::GradualText(QTextEdit* newView)
    : QObject(newView)
    , view(newView)
{
    view->setReadOnly(true);
    view->setUndoRedoEnabled(false);
    connect(&turns, &QTimer::timeout, this, &GradualText::appendPart);
}

void GradualText::setText(const QString& newText)
{
    whole = newText;
    shown = endOfPart(whole, 0);
    view->setPlainText(whole.first(shown));
    if (isComplete())
        turns.stop();
    else
        turns.start();
}

/// The user's own cursor, and with it what is selected, stays.
void GradualText::appendPart()
{
    const qsizetype end = endOfPart(whole, shown);
    QTextCursor cursor(view->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(whole.sliced(shown, end - shown));
    shown = end;
    if (isComplete())
        turns.stop();
}
