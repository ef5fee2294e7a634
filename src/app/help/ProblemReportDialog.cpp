// SPDX-License-Identifier: MIT
#include "ProblemReportDialog.h"

#include "DialogSizing.h"
#include "PlainText.h"
#include "ProductInfo.h"
#include "StatusLabel.h"
#include "WidgetBuilders.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

ProblemReportDialog::ProblemReportDialog(QWidget* parent)
    : QDialog(parent)
    , view(new QPlainTextEdit(this))
    , withAddresses(new QCheckBox(tr("&Include addresses and CIDs"), this))
    , status(new StatusLabel(this))
{
    setWindowTitle(tr("Report a problem — Norvo"));
    DialogSizing::attach(
        this,
        {.settingsKey = u"Dialogs/ProblemReportDialog"_s, .minimumSize = {460, 360}, .preferredSize = {820, 600}});
    QLabel* intro = newPlainLabel(tr("Write what you did, what you expected and what happened instead. Copy the text "
                                     "below into your message, and send it to:\n%1")
                                      .arg(ProductInfo::maintainer),
                                  this);
    intro->setWordWrap(true);
    intro->setTextInteractionFlags(Qt::TextSelectableByMouse);
    view->setReadOnly(true);
    showFocusAtFrame(view);
    view->setAccessibleName(tr("Report"));
    view->setTabChangesFocus(true);
    setPlainToolTip(withAddresses,
                    tr("Without them the report has no addresses, peers, CIDs, paths, names or access tokens."));
    connect(withAddresses, &QCheckBox::toggled, this, &ProblemReportDialog::updateText);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* copyButton = buttons->addButton(tr("&Copy"), QDialogButtonBox::ActionRole);
    copyButton->setDefault(true);
    connect(copyButton, &QPushButton::clicked, this, &ProblemReportDialog::copy);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* column = new QVBoxLayout(this);
    column->addWidget(intro);
    column->addWidget(view, 1);
    column->addWidget(withAddresses);
    column->addWidget(status);
    column->addWidget(buttons);
}

void ProblemReportDialog::showReport(const ProblemReport& newReport)
{
    report = newReport;
    updateText();
}

void ProblemReportDialog::updateText()
{
    view->setPlainText(report.text(withAddresses->isChecked()));
    status->showHint(tr("Norvo sends nothing by itself. Look through the text before you send it."));
}

void ProblemReportDialog::copy()
{
    QGuiApplication::clipboard()->setText(view->toPlainText());
    status->showProgress(tr("Copied."));
}
