// SPDX-License-Identifier: MIT
#include "AddProgress.h"

#include "ByteText.h"
#include "PlainText.h"

#include <QLabel>
#include <QProgressBar>
#include <QProgressDialog>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int dialogWidth = 460;
constexpr int nameWidth = 420;
constexpr qsizetype surelyShort = 20; ///< letters, of any width

/// The window keeps its width, however long a path is.
QString shortName(const QString& name, const QLabel& label)
{
    return name.size() <= surelyShort ? name
                                      : label.fontMetrics().elidedText(name.left(1000), Qt::ElideMiddle, nameWidth);
}

} // namespace

AddProgress::AddProgress(QWidget* newParent)
    : QObject(newParent)
    , parent(newParent)
{
}

void AddProgress::start()
{
    if (!addProgressDialog) {
        addProgressDialog = new QProgressDialog(parent);
        addProgressDialog->setWindowTitle(tr("Add to IPFS"));
        label = newPlainLabel({}, addProgressDialog);
        label->setAlignment(Qt::AlignCenter);
        addProgressDialog->setLabel(label);
        bar = new QProgressBar(addProgressDialog);
        addProgressDialog->setBar(bar);
        addProgressDialog->setCancelButton(nullptr);
        addProgressDialog->setAutoClose(false);
        addProgressDialog->setAutoReset(false);
        addProgressDialog->setMinimumDuration(0);
        addProgressDialog->setWindowModality(Qt::WindowModal);
        addProgressDialog->setMinimumWidth(dialogWidth);
    }
    objectText = tr("Preparing upload…");
    bytesText.clear();
    showTexts();
    bar->setRange(0, 0);
    bar->setValue(0);
    addProgressDialog->show();
}

/// A progress dialog that was closed would come back with its next value.
bool AddProgress::isShown() const
{
    return addProgressDialog && addProgressDialog->isVisible();
}

void AddProgress::showObject(const QString& name, int processed, int total)
{
    if (!isShown())
        return;
    if (total < 1) {
        objectText = tr("Uploading\n%1").arg(shortName(name, *label));
        bar->setRange(0, 0);
        showTexts();
        return;
    }
    const int done = std::min(processed, total);
    objectText
        = tr("Uploading %1 of %2\n%3").arg(QString::number(done), QString::number(total), shortName(name, *label));
    if (bar->maximum() != total)
        bar->setRange(0, total);
    bar->setValue(done);
    showTexts();
}

void AddProgress::showBytes(qint64 sent, qint64 total)
{
    bytesText = sent < total ? tr("%1 of %2 sent").arg(byteText(sent), byteText(total)) : QString();
    if (isShown())
        showTexts();
}

/// Setting the dialog's text measures it, ten thousand times for as many files; that is needed when it gets a new line.
void AddProgress::showTexts()
{
    const QString text = bytesText.isEmpty() ? objectText : objectText + u'\n' + bytesText;
    if (text.count(u'\n') == label->text().count(u'\n'))
        label->setText(text);
    else
        addProgressDialog->setLabelText(text);
}

void AddProgress::finish(bool well)
{
    if (!isShown())
        return;
    if (well && bar->maximum() > 0)
        bar->setValue(bar->maximum());
    addProgressDialog->hide();
}
