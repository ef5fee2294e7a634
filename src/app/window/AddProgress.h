// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>

class QLabel;
class QProgressBar;
class QProgressDialog;
class QWidget;

/// The window that shows how far an upload has come. It is modal to its parent and can be closed, which leaves the
/// upload alone; then it stays away until the next start.
class AddProgress : public QObject
{
    Q_OBJECT

public:
    explicit AddProgress(QWidget* newParent);

    void start();
    /// An object has been added; `total`, the number of files, may be less than `processed`, or 0 if it is not known.
    void showObject(const QString& name, int processed, int total);
    /// Of the upload's body, in bytes.
    void showBytes(qint64 sent, qint64 total);
    /// Hides the window, with the bar at its end if all went well.
    void finish(bool well);

private:
    bool isShown() const;
    void showTexts();

    QWidget* parent;
    QProgressDialog* addProgressDialog = nullptr; ///< made at the first start
    QLabel* label = nullptr;
    QProgressBar* bar = nullptr; ///< its own: a modal progress dialog's setValue runs the event loop for each object
    QString objectText {};
    QString bytesText {};
};
