// SPDX-License-Identifier: MIT
#include "LogDialog.h"

#include "DialogSizing.h"
#include "LineView.h"
#include "StatusWindow.h"

#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int logPointSize = 14;

LineView* newLogView(QWidget* parent)
{
    auto* view = new LineView(parent);
    QFont font(u"Monospace"_s, logPointSize);
    font.setStyleHint(QFont::Monospace); // where no family has that name
    view->setFont(font);
    return view;
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
    textEdit->setLines({{.lines = (statusWindow->*source.lines)()}}, LineView::From::End);
    DialogSizing::requestRefit(this);
}

void LogDialog::appendLogLine(const QString& line)
{
    if (line.isEmpty())
        return;
    textEdit->appendLine(line);
    DialogSizing::requestRefit(this);
}

void LogDialog::onClearClicked()
{
    if (statusWindow)
        (statusWindow->*source.clear)();
    textEdit->clearLines();
}
