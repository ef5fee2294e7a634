// SPDX-License-Identifier: MIT
#include "ActivationDialog.h"

#include "DialogSizing.h"
#include "PlainText.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

ActivationDialog::ActivationDialog(QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Activation — Norvo"));
    DialogSizing::attach(this, {.minimumSize = {360, 140}});
    auto* column = new QVBoxLayout(this);
    QLabel* text = newPlainLabel(
        tr("Norvo %1 runs in full. It needs no activation.").arg(QCoreApplication::applicationVersion()), this);
    text->setWordWrap(true);
    column->addWidget(text, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    column->addWidget(buttons);
}
