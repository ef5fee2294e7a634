// SPDX-License-Identifier: MIT
#include "SettingsDialog.h"

#include "DialogSizing.h"
#include "OriginValue.h"
#include "PinEntry.h"
#include "StatusLabel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int defaultPort = 5001;
constexpr int defaultInterval = 30; // seconds
constexpr int shortestInterval = 5;
constexpr int longestInterval = 3600;
constexpr int groupSpacing = 12;

QString defaultHost()
{
    return u"127.0.0.1"_s;
}

/// Whether the text may be a host: a name, or an address, of which version 6 has two colons or more. It is a hint while
/// typing and no check; an empty text means the default.
bool isHost(const QString& text)
{
    const bool hasOtherLetters
        = std::ranges::any_of(text, [](QChar c) { return c == u'/' || c == u'\\' || c == u'@' || c.isSpace(); });
    return !hasOtherLetters && text.count(u':') != 1;
}

} // namespace

SettingsDialog::SettingsDialog(QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Settings — Norvo"));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/SettingsDialog"_s,
                          .minimumSize = {380, 320},
                          .preferredSize = {560, 560},
                          .maxWidthRatio = 0.6,
                          .maxHeightRatio = 0.85});
    setupUi();
}

void SettingsDialog::setupUi()
{
    auto* column = new QVBoxLayout(this);
    column->setSpacing(groupSpacing);
    column->addWidget(newConnectionGroup());
    column->addWidget(newFilterGroup());
    column->addWidget(newOptionsGroup());
    column->addStretch();

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    const auto* defaults = buttons->addButton(tr("Restore Defaults"), QDialogButtonBox::ResetRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(defaults, &QPushButton::clicked, this, &SettingsDialog::restoreDefaults);
    column->addWidget(buttons);
}

QGroupBox* SettingsDialog::newConnectionGroup()
{
    auto* group = new QGroupBox(tr("Kubo RPC Connection"), this);
    auto* form = new QFormLayout(group);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);

    hostEdit = new QLineEdit(group);
    hostEdit->setPlaceholderText(defaultHost());
    form->addRow(tr("&Host:"), hostEdit);
    hostHint = new StatusLabel(group);
    hostHint->setObjectName(u"hostHint"_s);
    hostHint->showFailure(tr("Enter the host's name or address alone, without \"http://\" and without a port."));
    hostHint->hide();
    form->addRow(hostHint);
    connect(hostEdit, &QLineEdit::textChanged, this, &SettingsDialog::onHostChanged);

    portSpin = new QSpinBox(group);
    portSpin->setRange(1, 65535);
    portSpin->setValue(defaultPort);
    form->addRow(tr("&Port:"), portSpin);

    auto* hint = new QLabel(tr("<small><i>Default Kubo RPC port is 5001. Never expose this port to the public "
                               "internet.</i></small>"),
                            group);
    hint->setWordWrap(true);
    form->addRow(hint);
    return group;
}

QGroupBox* SettingsDialog::newFilterGroup()
{
    auto* group = new QGroupBox(tr("Default pin filtering"), this);
    auto* form = new QFormLayout(group);
    pinTypeCombo = new QComboBox(group);
    pinTypeCombo->addItem(tr("Recursive+Direct"), QString(PinType::recursiveAndDirect));
    pinTypeCombo->addItem(tr("All pins"), QString(PinType::all));
    pinTypeCombo->addItem(tr("Recursive only"), QString(PinType::recursive));
    pinTypeCombo->addItem(tr("Direct only"), QString(PinType::direct));
    pinTypeCombo->addItem(tr("Indirect only"), QString(PinType::indirect));
    form->addRow(tr("Pin &type:"), pinTypeCombo);
    return group;
}

QGroupBox* SettingsDialog::newOptionsGroup()
{
    auto* group = new QGroupBox(tr("Options"), this);
    auto* form = new QFormLayout(group);

    autoRefreshCheck = new QCheckBox(tr("Enable &auto-refresh"), group);
    form->addRow(autoRefreshCheck);
    intervalSpin = new QSpinBox(group);
    intervalSpin->setRange(shortestInterval, longestInterval);
    intervalSpin->setValue(defaultInterval);
    intervalSpin->setSuffix(tr(" seconds"));
    intervalSpin->setEnabled(false);
    connect(autoRefreshCheck, &QCheckBox::toggled, intervalSpin, &QWidget::setEnabled);
    form->addRow(tr("&Interval:"), intervalSpin);

    loadMetadataCheck = new QCheckBox(tr("Load &metadata"), group);
    loadMetadataCheck->setChecked(true);
    form->addRow(loadMetadataCheck);

    sendOriginCheck = new QCheckBox(tr("&Send Origin header"), group);
    connect(sendOriginCheck, &QCheckBox::toggled, this, &SettingsDialog::onSendOriginToggled);
    form->addRow(sendOriginCheck);
    originEdit = new QLineEdit(defaultOriginValue(), group);
    originEdit->setPlaceholderText(defaultOriginValue());
    originEdit->setMaxLength(maximumOriginLength);
    originEdit->setEnabled(false);
    form->addRow(tr("O&rigin:"), originEdit);
    return group;
}

void SettingsDialog::onHostChanged(const QString& text)
{
    const bool wrong = !isHost(text.trimmed());
    if (wrong == !hostHint->isHidden())
        return;
    hostHint->setVisible(wrong);
    DialogSizing::requestRefit(this);
}

void SettingsDialog::onSendOriginToggled(bool on)
{
    originEdit->setEnabled(on);
    if (on && originEdit->text().trimmed().isEmpty())
        originEdit->setText(defaultOriginValue());
}

QString SettingsDialog::host() const
{
    const QString text = hostEdit->text().trimmed();
    return text.isEmpty() ? defaultHost() : text;
}

unsigned short SettingsDialog::port() const
{
    return static_cast<unsigned short>(portSpin->value());
}

QString SettingsDialog::pinTypeFilter() const
{
    return pinTypeCombo->currentData().toString();
}

int SettingsDialog::refreshIntervalSeconds() const
{
    return intervalSpin->value();
}

bool SettingsDialog::autoRefresh() const
{
    return autoRefreshCheck->isChecked();
}

bool SettingsDialog::loadMetadata() const
{
    return loadMetadataCheck->isChecked();
}

bool SettingsDialog::sendOrigin() const
{
    return sendOriginCheck->isChecked();
}

QString SettingsDialog::originValue() const
{
    return effectiveOriginValue(originEdit->text());
}

void SettingsDialog::setHost(const QString& host)
{
    hostEdit->setText(host);
}

void SettingsDialog::setPort(unsigned short port)
{
    portSpin->setValue(port);
}

void SettingsDialog::setPinTypeFilter(const QString& type)
{
    if (const int item = pinTypeCombo->findData(type); item >= 0)
        pinTypeCombo->setCurrentIndex(item);
}

void SettingsDialog::setRefreshIntervalSeconds(int seconds)
{
    intervalSpin->setValue(seconds);
}

void SettingsDialog::setAutoRefresh(bool on)
{
    const bool allowed = on && !trialMode;
    autoRefreshCheck->setChecked(allowed);
    intervalSpin->setEnabled(allowed);
}

void SettingsDialog::setLoadMetadata(bool on)
{
    loadMetadataCheck->setChecked(on);
}

void SettingsDialog::setSendOrigin(bool on)
{
    sendOriginCheck->setChecked(on);
    originEdit->setEnabled(on);
}

void SettingsDialog::setOriginValue(const QString& text)
{
    const QString value = text.trimmed();
    originEdit->setText(value.isEmpty() ? defaultOriginValue() : value);
}

void SettingsDialog::setTrialMode(bool on)
{
    trialMode = on;
    if (on)
        setAutoRefresh(false);
    autoRefreshCheck->setEnabled(!on);
}

void SettingsDialog::restoreDefaults()
{
    setHost(defaultHost());
    setPort(defaultPort);
    pinTypeCombo->setCurrentIndex(0);
    setRefreshIntervalSeconds(defaultInterval);
    setAutoRefresh(false);
    setLoadMetadata(true);
    setSendOrigin(false);
    setOriginValue({});
}
