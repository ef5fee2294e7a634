// SPDX-License-Identifier: MIT
#include "StatusWindow.h"

#include "LogTime.h"
#include "NoticeArea.h"
#include "PlainText.h"
#include "WidgetBuilders.h"

#include <QLabel>
#include <QStatusBar>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto errorMessageShown = 8000ms;
constexpr int statusMinimumWidth = 200;

} // namespace

StatusWindow::StatusWindow(QWidget* parent)
    : QMainWindow(parent)
    , notices(new NoticeArea(this))
    , statusLabel(newPlainLabel({}, this))
    , statusResetTimer(new QTimer(this))
{
    statusLabel->setObjectName(u"statusLabel"_s);
    statusLabel->setMinimumWidth(statusMinimumWidth);
    makeCopyable(statusLabel, tr("Copy status"));
    statusBar()->addWidget(statusLabel, 1);
    statusResetTimer->setSingleShot(true);
    connect(statusResetTimer, &QTimer::timeout, this,
            [this] { setStatusMessage(idleStatus.isEmpty() ? tr("Ready") : idleStatus); });
    setStatusMessage(tr("Ready"));
}

QWidget* StatusWindow::noticeWidget() const
{
    return notices;
}

void StatusWindow::setStatusMessage(const QString& text)
{
    showProgress(lineForLabel(text));
    appendToStatusLog(text);
}

void StatusWindow::showStatusFor(std::chrono::milliseconds time, const QString& text)
{
    setStatusMessage(text);
    statusResetTimer->start(time);
}

void StatusWindow::showProgress(const QString& text)
{
    statusResetTimer->stop();
    statusLabel->setText(text);
    setPlainToolTip(statusLabel, text); // there may be no room for all of it
}

void StatusWindow::showNotification(const QString& text, bool warning)
{
    notices->showNotification(text, warning);
}

void StatusWindow::hideNotification()
{
    notices->hideNotification();
}

void StatusWindow::showError(const QString& message)
{
    showNotification(message, true);
    showStatusFor(errorMessageShown, tr("Error: ") + message);
}

void StatusWindow::onNodeSaid(const QString& /*path*/, const QString& words)
{
    appendToStatusLog(notices->showNodeWords(words));
}

void StatusWindow::onRpcRequestIssued(const QString& requestDescription)
{
    rpcLogLines.append(requestDescription);
    emit rpcLogAppended(requestDescription);
}

void StatusWindow::appendToStatusLog(const QString& text)
{
    const QString line = logTime() + u"  "_s + text;
    statusLogLines.append(line);
    emit statusLogAppended(line);
}
