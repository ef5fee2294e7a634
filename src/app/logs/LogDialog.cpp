// SPDX-License-Identifier: MIT
#include "LogDialog.h"

#include "DialogSizing.h"
#include "LogLayout.h"
#include "StatusWindow.h"

#include <QPushButton>
#include <QScrollBar>
#include <QTextEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int logPointSize = 14;

QTextEdit* newLogView(QWidget* parent)
{
    auto* view = new QTextEdit(parent);
    view->setReadOnly(true);
    view->setUndoRedoEnabled(false); // else the document keeps a command for every line
    QFont font(u"Monospace"_s, logPointSize);
    font.setStyleHint(QFont::Monospace); // where no family has that name
    view->setFont(font);
    // Wrapped by Qt's own layout, a line costs 40 µs before anything is shown, and a million of them never open.
    view->setLineWrapMode(QTextEdit::NoWrap);
    view->document()->setDocumentLayout(new LogLayout(view->document()));
    return view;
}

QTextCursor endOf(const QTextEdit* view)
{
    QTextCursor cursor(view->document());
    cursor.movePosition(QTextCursor::End);
    return cursor;
}

/// Moves down to the last line and leaves the columns in view as they are.
void followEnd(QTextEdit* view)
{
    const int left = view->horizontalScrollBar()->value();
    view->setTextCursor(endOf(view));
    view->horizontalScrollBar()->setValue(left);
    view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum());
}

} // namespace

LogDialog::LogDialog(StatusWindow* newWindow, const Source& newSource, const QString& settingsKey, QWidget* parent)
    : QDialog(parent)
    , statusWindow(newWindow)
    , source(newSource)
    , textEdit(newLogView(this))
{
    DialogSizing::attach(this,
                         {.settingsKey = settingsKey,
                          .minimumSize = {640, 400},
                          .preferredSize = {1200, 760},
                          .maxWidthRatio = 0.9,
                          .maxHeightRatio = 0.7});
    auto* clearButton = new QPushButton(tr("Clear"), this);
    clearButton->setAutoDefault(false); // a stray Enter is not to empty the log
    connect(clearButton, &QPushButton::clicked, this, &LogDialog::onClearClicked);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(clearButton);
    auto* column = new QVBoxLayout(this);
    column->addWidget(textEdit, 1);
    column->addLayout(row);
}

void LogDialog::setPlaceholder(const QString& text)
{
    textEdit->setPlaceholderText(text);
    textEdit->setAccessibleName(windowTitle());
}

void LogDialog::showEvent(QShowEvent* event)
{
    refreshLog();
    if (statusWindow)
        follow(statusWindow);
    QDialog::showEvent(event);
}

void LogDialog::refreshLog()
{
    if (!statusWindow)
        return;
    // The document's own; the view's goes over all lines a second time.
    textEdit->document()->setPlainText((statusWindow->*source.lines)().join(u'\n'));
    followEnd(textEdit);
    DialogSizing::requestRefit(this);
}

void LogDialog::appendLogLine(const QString& line)
{
    if (line.isEmpty())
        return;
    // QTextEdit::append would take a line with a tag in it for markup.
    endOf(textEdit).insertText(textEdit->document()->isEmpty() ? line : u'\n' + line);
    followEnd(textEdit);
    DialogSizing::requestRefit(this);
}

void LogDialog::onClearClicked()
{
    if (statusWindow)
        (statusWindow->*source.clear)();
    textEdit->clear();
}
