// SPDX-License-Identifier: MIT
#include "NodeWords.h"

#include "IpfsClient.h"

#include <utility>

NodeWords::NodeWords(const IpfsClient* client, const QString& newPath, QObject* parent)
    : QObject(parent)
    , path(newPath)
{
    connect(client, &IpfsClient::nodeSaid, this, [this](const QString& itsPath, const QString& itsWords) {
        if (itsPath == path)
            words = itsWords;
    });
}

QString NodeWords::takeBelow(const QString& message)
{
    const QString said = std::exchange(words, {});
    return said.isEmpty() ? message : message + u'\n' + tr("The node says: %1").arg(said);
}
