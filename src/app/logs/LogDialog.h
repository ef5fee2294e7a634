// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QPointer>

class LineView;
class StatusWindow;

/// Shows one of the main window's logs as it grows. Each log has its own class, which hands in what differs.
class LogDialog : public QDialog
{
    Q_OBJECT

public:
    /// Builds the text anew from the window's lines and shows its end. Does nothing once the window is gone.
    void refreshLog();

public slots:
    /// Shows one more line and follows it; an empty one is ignored.
    void appendLogLine(const QString& line);
    /// Empties the log, if its window is there, and the text.
    void onClearClicked();

protected:
    /// One of the window's logs.
    struct Source
    {
        QStringList (StatusWindow::*lines)() const;
        void (StatusWindow::*clear)();
    };

    LogDialog(StatusWindow* newWindow, const Source& newSource, const QString& settingsKey, QWidget* parent);
    /// What the empty log says.
    void setPlaceholder(const QString& text);
    /// Connects the log's signal to appendLogLine, once however often it is called.
    virtual void follow(StatusWindow* window) = 0;

    void showEvent(QShowEvent* event) override;

private:
    QPointer<StatusWindow> statusWindow;
    Source source;
    LineView* textEdit;
};
