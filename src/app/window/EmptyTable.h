// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Why the table has no rows to show.
struct EmptyTable
{
    enum State { NotAsked, Loading, NoNode, Refused, Failed, Loaded };

    State state = NotAsked;
    bool unpinned = false;   ///< the list is of blocks without a pin
    bool hasAnyType = false; ///< a node that has pins has some that this list was asked for
    bool searching = false;  ///< a search text narrows the list
    int total = 0;           ///< rows, those that the search hides included
    int shown = 0;
    QString address {}; ///< of the node's RPC
    QString reason {};  ///< the error of a load that failed
};

/// The latest load of the table's list, and what its rows came from.
struct ListLoad
{
    EmptyTable::State state = EmptyTable::NotAsked;
    QString error {};        ///< of the latest part of the list that failed
    bool isAnswered = false; ///< the node has answered a part of it
    QString rowsContent {};  ///< what the rows were asked for by: content and filter; empty while there are none
    QString rowsFilter {};
};

/// What to show in place of rows; empty if there are rows.
QString emptyTableText(const EmptyTable& table);

/// Whether an error is a node's reply, and not one of the network.
bool isNodesReply(const QString& error);

/// NoNode, Refused or Failed, by the error of a load.
EmptyTable::State stateAfter(const QString& error);
