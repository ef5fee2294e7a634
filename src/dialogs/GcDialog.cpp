// SPDX-License-Identifier: MIT
#include "GcDialog.h"

#include "DialogSizing.h"
#include "FlowLayout.h"
#include "GcReportText.h"
#include "IpfsClient.h"
#include "LogTime.h"
#include "NodeWords.h"
#include "StatusLabel.h"

#include <QFontDatabase>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto statPath = "/repo/stat"_L1;
constexpr auto gcPath = "/repo/gc"_L1;

} // namespace

GcDialog::GcDialog(IpfsClient* newClient, QWidget* parent)
    : QDialog(parent)
    , client(newClient)
{
    setWindowTitle(tr("Repo stats"));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/GcDialog"_s,
                          .minimumSize = {560, 360},
                          .preferredSize = {860, 560},
                          .maxWidthRatio = 0.6,
                          .maxHeightRatio = 0.6});
    setupUi();
    connectClient();
}

void GcDialog::setupUi()
{
    statusLabel = new StatusLabel(this);
    statusLabel->showHint(tr("Repo stats"));
    statsButton = new QPushButton(tr("Repo &stats"), this);
    gcButton = new QPushButton(tr("Run &garbage collection"), this);
    for (QPushButton* button : {statsButton, gcButton})
        button->setAutoDefault(false); // a stray Return is not to remove blocks
    connect(statsButton, &QPushButton::clicked, this, &GcDialog::onRepoStatsClicked);
    connect(gcButton, &QPushButton::clicked, this, &GcDialog::onRunGcClicked);
    textView = new LineView(this);
    textView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont)); // CIDs are compared by eye
    textView->setAccessibleName(windowTitle());

    auto* row = new FlowLayout;
    row->addWidgets({statusLabel, statsButton, gcButton});
    auto* column = new QVBoxLayout(this);
    column->addLayout(row);
    nodeWords = new NodeWords(client, {{.path = statPath}, {.path = gcPath}}, this);
    column->addWidget(nodeWords);
    column->addWidget(textView, 1);
}

void GcDialog::connectClient()
{
    connect(client, &IpfsClient::repoStatReceived, this, &GcDialog::onRepoStatReceived);
    connect(client, &IpfsClient::repoStatFailed, this, &GcDialog::onRepoStatFailed);
    connect(client, &IpfsClient::repoGcCompleted, this, &GcDialog::onRepoGcCompleted);
    connect(client, &IpfsClient::repoGcFailed, this, &GcDialog::onRepoGcFailed);
    connect(client, &IpfsClient::endpointChanged, this, &GcDialog::onEndpointChanged);
}

void GcDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!loading && textView->isBlank())
        onRepoStatsClicked();
}

/// The focus waits at the view, which is there to be read, while the buttons are disabled.
void GcDialog::setLoading(bool on)
{
    loading = on;
    if (on)
        textView->setFocus();
    statsButton->setEnabled(!on);
    gcButton->setEnabled(!on);
}

void GcDialog::start(const QString& progress, const QString& statusMessage)
{
    setLoading(true);
    textView->clearLines();
    nodeWords->forget();
    statusLabel->showProgress(progress);
    emit statusMessageRequested(statusMessage);
}

void GcDialog::onRepoStatsClicked()
{
    start(tr("Loading repo stats..."), tr("Fetching repo stats..."));
    client->fetchRepoStat();
}

void GcDialog::onRunGcClicked()
{
    start(tr("Running GC..."), tr("Running repo garbage collection..."));
    gcRuns = true;
    client->runRepoGc();
}

void GcDialog::showText(const QList<LinePart>& text)
{
    textView->setLines(text, LineView::From::Start);
    DialogSizing::requestRefit(this);
}

void GcDialog::showFailure(const QString& message)
{
    statusLabel->showFailure(message);
    showText({{.lines = {message}}});
}

void GcDialog::onRepoStatReceived(const QJsonObject& stat)
{
    showText({{.lines = repoStatLines(stat, logTime())}});
    statusLabel->showProgress(tr("Repo stats loaded"));
    nodeWords->showFor(statPath);
    emit statusMessageRequested(tr("Repo stats loaded"));
    setLoading(false);
}

void GcDialog::onRepoStatFailed(const QString& message)
{
    setLoading(false);
    showFailure(message);
    nodeWords->showFor(statPath);
    emit statusMessageRequested(tr("Repo stats error: %1").arg(message));
}

/// Whether the collection that has ended is one of a former node. Its result is shown, unless the present node is being
/// asked something; then the status line alone reports it.
bool GcDialog::takeFormerGc()
{
    if (std::exchange(gcRuns, false) || formerGcs == 0)
        return false;
    --formerGcs;
    return true;
}

void GcDialog::onRepoGcCompleted(const QStringList& collectedCids, const QStringList& errors)
{
    const bool isFormer = takeFormerGc();
    if (!isFormer || !loading) {
        setLoading(false);
        showText(gcReportParts(collectedCids, errors, logTime()));
        statusLabel->showProgress(isFormer ? tr("GC completed at the former node") : tr("GC completed"));
        nodeWords->showFor(gcPath);
    }
    emit statusMessageRequested(tr("Repo GC finished: %1 collected, %2 errors")
                                    .arg(QString::number(collectedCids.size()), QString::number(errors.size())));
}

void GcDialog::onRepoGcFailed(const QString& message)
{
    if (!takeFormerGc() || !loading) {
        setLoading(false);
        showFailure(message);
        nodeWords->showFor(gcPath);
    }
    emit statusMessageRequested(tr("Repo GC error: %1").arg(message));
}

/// What is shown belongs to the former node; a collection that runs there is reported when it ends.
void GcDialog::onEndpointChanged()
{
    formerGcs += std::exchange(gcRuns, false) ? 1 : 0;
    if (isVisible()) {
        onRepoStatsClicked();
        return;
    }
    setLoading(false);
    textView->clearLines();
    nodeWords->forget();
    statusLabel->showHint(tr("Repo stats"));
}
