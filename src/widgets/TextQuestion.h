// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QDialog;
class QWidget;

/// A question that a line of text answers.
struct TextQuestion
{
    QString title {};
    QString label {};       ///< plain text, which wraps
    QString initial {};     ///< what is in the field at first; of `choices`, the first is
    QStringList choices {}; ///< offered, if there are any; another text can be typed
};

/// Opens a dialog that blocks `parent`, and returns it; once closed, it is deleted. `act` is called with the trimmed
/// answer, which is empty if the dialog was cancelled. It is not called if the dialog is deleted while it is open.
QDialog* askForText(const TextQuestion& question, QWidget* parent, const std::function<void(const QString&)>& act);
