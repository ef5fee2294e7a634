// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QPointer>

class LineView;
class MainWindow;

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
        QStringList (MainWindow::*lines)() const;
        void (MainWindow::*clear)();
    };

    LogDialog(MainWindow* newWindow, const Source& newSource, const QString& settingsKey, QWidget* parent);
    /// What the empty log says.
    void setPlaceholder(const QString& text);
    /// Connects the log's signal to appendLogLine, once however often it is called.
    virtual void follow(MainWindow* window) = 0;

    void showEvent(QShowEvent* event) override;

private:
    QPointer<MainWindow> mainWindow;
    Source source;
    LineView* textEdit;
};
