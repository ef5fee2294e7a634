// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QPushButton;

/// A button with a narrow second half: the first opens a thing, the second opens it in a window of its own.
class SplitActionButton : public QWidget
{
    Q_OBJECT

public:
    explicit SplitActionButton(const QString& text, QWidget* parent = nullptr);

    /// The tool tip of one half.
    void setPrimaryToolTip(const QString& text);
    void setSecondaryToolTip(const QString& text);

signals:
    /// One half was clicked.
    void primaryClicked();
    void secondaryClicked();

private:
    QPushButton* newButton(const QString& text, const QString& name);

    QPushButton* primaryButton = nullptr;
    QPushButton* secondaryButton = nullptr;
};
