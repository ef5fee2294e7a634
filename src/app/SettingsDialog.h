// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QSpinBox;
class StatusLabel;

/// Edits the endpoint, the pin filter and the options. It keeps nothing: the caller fills it and reads it after accept.
class SettingsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit SettingsDialog(QWidget* parent = nullptr);

    /// Trimmed; "127.0.0.1" if the field is empty.
    QString host() const;
    unsigned short port() const;
    /// As PinType names it.
    QString pinTypeFilter() const;
    int refreshIntervalSeconds() const;
    bool autoRefresh() const;
    bool loadMetadata() const;
    bool sendOrigin() const;
    /// As a header may hold it; the default value if the field is blank.
    QString originValue() const;

    void setHost(const QString& host);
    void setPort(unsigned short port);
    /// A value that is not among the items is ignored.
    void setPinTypeFilter(const QString& type);
    void setRefreshIntervalSeconds(int seconds);
    void setAutoRefresh(bool on);
    void setLoadMetadata(bool on);
    void setSendOrigin(bool on);
    void setOriginValue(const QString& text);
    /// In trial mode auto-refresh is off and can't be switched on.
    void setTrialMode(bool on);

    /// Touches the fields only.
    void restoreDefaults();

private:
    void setupUi();
    QGroupBox* newConnectionGroup();
    QGroupBox* newFilterGroup();
    QGroupBox* newOptionsGroup();
    void onHostChanged(const QString& text);
    void onSendOriginToggled(bool on);

    QLineEdit* hostEdit = nullptr;
    StatusLabel* hostHint = nullptr; ///< shown while the text can't be a host
    QSpinBox* portSpin = nullptr;
    QComboBox* pinTypeCombo = nullptr;
    QSpinBox* intervalSpin = nullptr;
    QCheckBox* autoRefreshCheck = nullptr;
    QCheckBox* loadMetadataCheck = nullptr;
    QCheckBox* sendOriginCheck = nullptr;
    QLineEdit* originEdit = nullptr;
    bool trialMode = false;
};
