// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// One file or folder that is to be added.
struct LocalPathSelection
{
    QString path {};          ///< absolute
    QString name {};          ///< at the top of the upload; empty for the file name of `path`
    bool isDirectory = false; ///< for show; the upload asks the file system again
    friend bool operator==(const LocalPathSelection&, const LocalPathSelection&) = default;
};

/// Whether what is added is to be pinned at a remote service as well, or there alone.
inline bool isRemoteDestination(const QString& destination)
{
    const QString word = destination.trimmed().toLower();
    return word == QLatin1StringView("both") || word == QLatin1StringView("remote");
}

/// How an add is to be done, and where its result is to be pinned.
struct AddOptions
{
    bool wrapWithDirectory = true;
    bool pin = true;
    bool onlyHash = false; ///< nothing is stored
    int cidVersion = 1;
    QString pinDestination = QStringLiteral("local"); ///< "local", "both" or "remote"
    QString remoteServiceNickname {};
    QString remotePinLabel {};
    bool unpinLocalAfterRemote = false;
    friend bool operator==(const AddOptions&, const AddOptions&) = default;
};

/// One object that a node has reported of an add.
struct AddEntry
{
    QString name {}; ///< relative to the top of the upload; empty for the directory that wraps it
    QString cid {};
    qint64 size = 0; ///< bytes, cumulative for a directory; 0 where the node gives none
    friend bool operator==(const AddEntry&, const AddEntry&) = default;
};
