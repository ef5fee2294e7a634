// SPDX-License-Identifier: MIT
#include "EmptyTable.h"

#include "PlainText.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

/// Whether an error is a reply that a node's API does not give to a list, as that of a gateway or a web server.
bool isOfAnotherServer(const QString& error)
{
    return isNodesReply(error) && !error.endsWith("server replied: Internal Server Error"_L1);
}

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(EmptyTable)

public:
    static QString ofLoad(const EmptyTable& table)
    {
        switch (table.state) {
        case EmptyTable::NotAsked:
            return tr("The node has not been asked yet. Refresh (F5) asks for its list.");
        case EmptyTable::Loading:
            return tr("Loading the list from %1…").arg(table.address);
        case EmptyTable::NoNode:
            return tr("No node answers at %1.\n\nStart the node (\"ipfs daemon\"), or set its address in File, "
                      "Settings.\n\nThe user guide (F1) shows how to set up a node.")
                .arg(table.address);
        case EmptyTable::Refused:
            return tr("The node at %1 refuses requests (403).\n\nSwitch off \"Send Origin header\" in File, Settings, "
                      "or add the header's value to the node's API.HTTPHeaders.Access-Control-Allow-Origin and "
                      "restart it.")
                .arg(table.address);
        case EmptyTable::Failed:
            return tr("The list could not be loaded from %1.\n\n%2").arg(table.address, messageForLabel(table.reason))
                + (isOfAnotherServer(table.reason) ? ofAnotherServer() : QString());
        case EmptyTable::Loaded:
            break;
        }
        return ofList(table);
    }

private:
    static QString ofAnotherServer()
    {
        return tr("\n\nIf this is not the address of a Kubo node's RPC API, set it in File, Settings.");
    }

    static QString ofList(const EmptyTable& table)
    {
        if (table.unpinned)
            return tr("Every block in the node's store belongs to a pin.");
        return table.hasAnyType ? tr("The node has no pins.\n\nAdd to IPFS adds files and pins them. The user guide "
                                     "(F1) shows the first steps.")
                                : tr("The node has no pins of this type.\n\nFilter, All types, lists the others.");
    }

public:
    static QString ofSearch(int total) { return tr("None of the %1 row(s) matches the search.").arg(total); }
};

} // namespace

QString emptyTableText(const EmptyTable& table)
{
    if (table.shown > 0)
        return {};
    return table.total > 0 && table.searching ? Texts::ofSearch(table.total) : Texts::ofLoad(table);
}

bool isNodesReply(const QString& error)
{
    return error.contains("server replied:"_L1);
}

/// What a node replied ends in the words of its status line; all else comes from the network.
EmptyTable::State stateAfter(const QString& error)
{
    if (error.endsWith("server replied: Forbidden"_L1))
        return EmptyTable::Refused;
    for (const auto& words : {"refused"_L1, "not found"_L1, "timed out"_L1, "unreachable"_L1, "could not be made"_L1}) {
        if (!isNodesReply(error) && error.endsWith(words))
            return EmptyTable::NoNode;
    }
    return EmptyTable::Failed;
}
