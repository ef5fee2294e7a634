// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

class QSettings;

/// What the main window keeps from one run to the next: the values of its keys in the store.
struct WindowSettings
{
    QString host {};         ///< of the node's RPC; the client holds the one in use
    unsigned short port = 0; ///< likewise
    QString contentMode {};  ///< as ContentMode names it
    QString typeFilter {};   ///< as PinType names it
    bool autoRefresh = false;
    bool loadMetadata = true;
    bool sendOrigin = false;
    QString originValue {};
    int refreshIntervalSeconds = 30;
    std::optional<QByteArray> geometry {}; ///< nothing in a first run

    /// Reads all keys; one that is missing takes its default. Values are as the store has them, whatever they are.
    static WindowSettings load(const QSettings& store);
    void save(QSettings& store) const;
    /// Writes the two keys that each request reads, and flushes the store; all others wait for `save`.
    void saveOrigin(QSettings& store) const;
    /// Between automatic refreshes, as a timer takes it; 0 if there are to be none.
    int autoRefreshMs() const;
};
