#pragma once

#include <QNetworkRequest>

/// Requests of one group share connections, and requests of other groups never wait for them. Without a name it is the
/// ordinary group, over which everything goes that a person waits for.
struct ConnectionGroup
{
    QString name {};
    int width = 0; ///< requests that are to be open at once

    /// How many of Qt's own groups are needed to be this wide.
    int lanes() const;
};

/// Sends the request over the `lane`th part of its group, 0 to lanes() - 1.
void useConnectionGroup(QNetworkRequest& request, const ConnectionGroup& group, int lane);
