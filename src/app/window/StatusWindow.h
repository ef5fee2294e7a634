// SPDX-License-Identifier: MIT
#pragma once

#include <QMainWindow>
#include <QStringList>

#include <chrono>

class NoticeArea;
class QLabel;
class QTimer;

/// A window that reports: a status line, the notices above its content, and the two logs of what was asked and said.
class StatusWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit StatusWindow(QWidget* parent = nullptr);

    /// Every request that left in this run, a line each, oldest first.
    QStringList rpcLog() const { return rpcLogLines; }
    /// Every status message of this run, a line each, oldest first.
    QStringList statusLog() const { return statusLogLines; }
    /// Empty the list; nothing is emitted.
    void clearRpcLog() { rpcLogLines.clear(); }
    void clearStatusLog() { statusLogLines.clear(); }

signals:
    /// A line has come to the log; it is in the list already.
    void rpcLogAppended(QString line);
    void statusLogAppended(QString line);

protected slots:
    void onRpcRequestIssued(const QString& requestDescription);
    /// Comes before the signals of the call that failed.
    void onNodeSaid(const QString& path, const QString& words);

protected:
    /// Shows and logs a message. One that replaces another ends the other's time as well.
    void setStatusMessage(const QString& text);
    /// Shows a message that goes back to "Ready" after `time`, unless another has replaced it.
    void showStatusFor(std::chrono::milliseconds time, const QString& text);
    /// What the status line goes back to from here on, in place of "Ready"; empty for "Ready".
    void setIdleStatus(const QString& text) { idleStatus = text; }
    /// Shows how far something is, which is not logged.
    void showProgress(const QString& text);
    /// Shows a line above the content until it is hidden or replaced.
    void showNotification(const QString& text, bool warning);
    void hideNotification();
    /// Shows what went wrong, above the content and for eight seconds in the status line.
    void showError(const QString& message);
    /// The notices, for a layout of the window.
    QWidget* noticeWidget() const;

private:
    void appendToStatusLog(const QString& text);

    NoticeArea* notices;
    QLabel* statusLabel;
    QTimer* statusResetTimer; ///< runs while the status shows a message for a time
    QString idleStatus {};
    QStringList rpcLogLines;
    QStringList statusLogLines;
};
