// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class IpfsClient;

/// What the node itself said of the last call to one path, kept until the call's own answer is shown.
class NodeWords : public QObject
{
    Q_OBJECT

public:
    NodeWords(const IpfsClient* client, const QString& newPath, QObject* parent);

    /// The message, with the node's words in a line below it if there are any; they are forgotten then.
    QString takeBelow(const QString& message);
    void forget() { words.clear(); }

private:
    QString path;
    QString words {};
};
