// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class QTextEdit;

/// Shows a long text in a QTextEdit without holding up the window: its beginning at once, the rest in turns of the
/// event loop. Nothing else may change the view's text.
class GradualText : public QObject
{
    Q_OBJECT

public:
    /// Lives as long as `newView`, which is made read-only.
    explicit GradualText(QTextEdit* newView);

    /// Shows another text, from its top.
    void setText(const QString& newText);
    /// All of it, whether or not the view has it yet.
    QString text() const { return whole; }
    /// Whether the view has all of it.
    bool isComplete() const { return shown == whole.size(); }

private:
    void appendPart();

    QTextEdit* view;
    QTimer turns {};
    QString whole {};
    qsizetype shown = 0; ///< characters of it
};
