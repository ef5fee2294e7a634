// SPDX-License-Identifier: MIT
#include "TextQuestion.h"

#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QScreen>

#include <algorithm>

namespace {

constexpr int labelWidth = 420;
constexpr int choiceLetters = 40;

/// A dialog's label guesses at markup, and gets as wide as its text.
void setPlainLabel(QInputDialog* dialog, const QString& text)
{
    dialog->setLabelText({});
    auto* label = dialog->findChild<QLabel*>();
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    dialog->setLabelText(text);
    const int widest = dialog->screen()->availableSize().width() * 3 / 4;
    label->setMinimumWidth(std::clamp(label->minimumSizeHint().width(), labelWidth, std::max(widest, labelWidth)));
}

void offer(QInputDialog* dialog, const QStringList& choices)
{
    dialog->setComboBoxItems(choices);
    dialog->setComboBoxEditable(true);
    auto* box = dialog->findChild<QComboBox*>();
    box->setCompleter(nullptr); // it would turn the start of a choice into that choice
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(choiceLetters);
}

} // namespace

QDialog* askForText(const TextQuestion& question, QWidget* parent, const std::function<void(const QString&)>& act)
{
    auto* dialog = new QInputDialog(parent);
    dialog->setWindowTitle(question.title);
    setPlainLabel(dialog, question.label);
    if (question.choices.isEmpty())
        dialog->setTextValue(question.initial);
    else
        offer(dialog, question.choices);
    QObject::connect(dialog, &QDialog::finished, dialog, [dialog, act](int result) {
        dialog->deleteLater();
        act(result == QDialog::Accepted ? dialog->textValue().trimmed() : QString());
    });
    dialog->open();
    return dialog;
}
