// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/// A dialog's one line of status. Shows every text as plain text.
class StatusLabel : public QLabel
{
    Q_OBJECT

public:
    explicit StatusLabel(QWidget* parent = nullptr);

    /// What to do first, in gray.
    void showHint(const QString& text);
    /// Progress and success, without a style.
    void showProgress(const QString& text);
    /// What went wrong, in dark red.
    void showFailure(const QString& text);

private:
    void show(const QString& text, const QString& style, const QColor& ground);
};
