// SPDX-License-Identifier: MIT
#include "DhtStatsDialog.h"

#include "AppSettings.h"
#include "DhtGroups.h"
#include "DhtText.h"
#include "DialogSizing.h"
#include "FlowLayout.h"
#include "IpfsClient.h"
#include "NodeWords.h"
#include "StatusLabel.h"
#include "WidgetBuilders.h"

#include <QComboBox>
#include <QHideEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr auto dhtArgKey = "DhtStatsDialog/dhtArg"_L1;
constexpr auto dhtPath = "/stats/dht"_L1;
constexpr int comboWidth = 140;

} // namespace

DhtStatsDialog::DhtStatsDialog(IpfsClient* newClient, QWidget* parent)
    : QDialog(parent)
    , client(newClient)
{
    setWindowTitle(tr("DHT stats"));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/DhtStatsDialog"_s,
                          .minimumSize = {640, 400},
                          .preferredSize = {1100, 760},
                          .maxWidthRatio = 0.75,
                          .maxHeightRatio = 0.7});
    setupUi();
    connectClient();
}

void DhtStatsDialog::setupUi()
{
    auto* column = new QVBoxLayout(this);
    column->addLayout(newHeaderRow());
    nodeWords = new NodeWords(client, {{.path = dhtPath}}, this);
    column->addWidget(nodeWords);
    column->addWidget(newScrollArea(), 1);
}

QLayout* DhtStatsDialog::newHeaderRow()
{
    setupCombo();
    statusLabel = new StatusLabel(this);
    statusLabel->showHint(tr("Click Refresh to load /api/v0/stats/dht"));
    refreshButton = new QPushButton(tr("&Refresh"), this);
    refreshButton->setAutoDefault(false);
    connect(refreshButton, &QPushButton::clicked, this, &DhtStatsDialog::onRefreshClicked);

    auto* choice = new QHBoxLayout;
    choice->addWidget(newLabelFor(tr("&DHT:"), dhtCombo));
    choice->addWidget(dhtCombo);
    auto* row = new FlowLayout;
    row->addLayout(choice);
    row->addWidgets({statusLabel, refreshButton});
    return row;
}

/// Restores the choice before anything follows it.
void DhtStatsDialog::setupCombo()
{
    dhtCombo = new QComboBox(this);
    dhtCombo->setMinimumWidth(comboWidth);
    dhtCombo->addItem(tr("wan & lan (default)"), QString());
    for (const QString& view : {u"wan"_s, u"lan"_s, u"wanserver"_s, u"lanserver"_s})
        dhtCombo->addItem(view, view);
    const int stored = dhtCombo->findData(openAppSettings().value(dhtArgKey).toString(), Qt::UserRole,
                                          Qt::MatchExactly | Qt::MatchCaseSensitive);
    dhtCombo->setCurrentIndex(std::max(stored, 0));
    connect(dhtCombo, &QComboBox::currentIndexChanged, this, &DhtStatsDialog::onDhtChosen);
}

QScrollArea* DhtStatsDialog::newScrollArea()
{
    auto* area = new QScrollArea(this);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus); // it follows the tables' current cells
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    content = new QWidget(area);
    content->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::MinimumExpanding);
    contentLayout = new QVBoxLayout(content);
    contentLayout->setContentsMargins({});
    contentLayout->addStretch(1);
    area->setWidget(content);
    return area;
}

void DhtStatsDialog::connectClient()
{
    connect(client, &IpfsClient::dhtStatsReceived, this, &DhtStatsDialog::onDhtStatsReceived);
    connect(client, &IpfsClient::dhtStatsFailed, this, &DhtStatsDialog::onError);
    connect(client, &IpfsClient::endpointChanged, this, &DhtStatsDialog::onEndpointChanged);
}

void DhtStatsDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (isEmpty() && !loading)
        onRefreshClicked();
}

/// What is not built yet is not built for nobody; shown again, the dialog asks anew.
void DhtStatsDialog::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous() && groups)
        clearContent();
    QDialog::hideEvent(event);
}

/// While its widget is disabled, the focus waits at the dialog itself: one goes through the choices with the arrow
/// keys.
void DhtStatsDialog::setLoading(bool on)
{
    if (on && !loading) {
        focusBefore = focusWidget();
        if (focusBefore == dhtCombo || focusBefore == refreshButton)
            setFocus();
    }
    loading = on;
    refreshButton->setEnabled(!on);
    dhtCombo->setEnabled(!on);
    if (on)
        statusLabel->showProgress(tr("Loading…"));
    else if (focusWidget() == this && focusBefore)
        focusBefore->setFocus();
}

void DhtStatsDialog::onDhtChosen()
{
    QSettings settings = openAppSettings();
    settings.setValue(dhtArgKey, dhtCombo->currentData().toString());
    onRefreshClicked();
}

void DhtStatsDialog::onRefreshClicked()
{
    setLoading(true);
    nodeWords->forget();
    const QString dhtArg = dhtCombo->currentData().toString();
    emit statusMessageRequested(dhtArg.isEmpty() ? tr("Fetching DHT stats…")
                                                 : tr("Fetching DHT stats (%1)…").arg(dhtArg));
    client->fetchDhtStats(dhtArg);
}

void DhtStatsDialog::onDhtStatsReceived(const QJsonValue& answer)
{
    setLoading(false);
    clearContent();
    buildContentFromValue(answer);
    statusLabel->showProgress(tr("Loaded from /api/v0/stats/dht"));
    nodeWords->showFor(dhtPath);
    emit statusMessageRequested(tr("DHT stats loaded"));
    DialogSizing::requestRefit(this);
}

void DhtStatsDialog::onError(const QString& message)
{
    setLoading(false);
    clearContent();
    statusLabel->showFailure(message);
    nodeWords->showFor(dhtPath);
    emit statusMessageRequested(tr("DHT stats error: %1").arg(message));
    DialogSizing::requestRefit(this);
}

/// What is shown, and what is being waited for, belongs to the former node.
void DhtStatsDialog::onEndpointChanged()
{
    clearContent();
    if (isVisible()) {
        onRefreshClicked();
        return;
    }
    setLoading(false);
    nodeWords->forget();
    statusLabel->showHint(tr("Click Refresh to load /api/v0/stats/dht"));
}

bool DhtStatsDialog::isEmpty() const
{
    return contentLayout->count() == 1;
}

void DhtStatsDialog::clearContent()
{
    delete groups;
    while (!isEmpty()) {
        const std::unique_ptr<QLayoutItem> item(contentLayout->takeAt(0));
        deleteInTurns(item->widget());
    }
}

void DhtStatsDialog::buildContentFromValue(const QJsonValue& value)
{
    groups = new DhtGroups(dhtViews(value), contentLayout, content);
    connect(groups, &DhtGroups::completed, groups, &QObject::deleteLater);
    groups->start();
}
