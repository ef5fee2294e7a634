// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QLabel;
class QTimer;

/// The lines above the table: a notification, and below it the node's own words of a call that failed. It takes no
/// room while neither is shown. All texts are plain.
class NoticeArea : public QWidget
{
    Q_OBJECT

public:
    explicit NoticeArea(QWidget* parent = nullptr);

    /// Stays until it is hidden or replaced. Words that came in the same turn of the event loop belong to it.
    void showNotification(const QString& text, bool warning);
    /// Hides the notification and the words that belong to it.
    void hideNotification();
    /// Shows "The node says: …", at most 300 letters of `words`, and returns that line. Words that no notification
    /// follows at once go after eight seconds.
    QString showNodeWords(const QString& words);

private:
    QLabel* newLine(const QString& name);
    void hideNodeWords();
    void showIfFilled();

    QLabel* notificationLabel;
    QLabel* nodeWordsLabel;
    QTimer* wordsTimer; ///< runs while the words belong to no notification
    QTimer* turnTimer;  ///< runs until the turn is over in which the words came
    QString wordsOwner; ///< the notification of that turn that they belong to, which may be shown twice
};
