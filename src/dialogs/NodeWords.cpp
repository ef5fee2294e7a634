// SPDX-License-Identifier: MIT
#include "NodeWords.h"

#include "IpfsClient.h"
#include "PlainText.h"

#include <utility>

using namespace Qt::StringLiterals;

NodeWords::NodeWords(const IpfsClient* client, const QList<Call>& calls, QWidget* parent)
    : StatusLabel(parent)
{
    setObjectName(u"nodeWordsLabel"_s);
    rows.reserve(calls.size());
    for (const Call& call : calls)
        rows.append({.call = call});
    hide();
    connect(client, &IpfsClient::nodeSaid, this, &NodeWords::onNodeSaid);
}

void NodeWords::forget()
{
    for (Row& row : rows) {
        row.said.clear();
        row.shown.clear();
    }
    showRows();
}

void NodeWords::showFor(const QString& path, const QString& cause)
{
    for (Row& row : rows) {
        if (row.call.path != path)
            continue;
        const QString said = std::exchange(row.said, {});
        row.shown = said.isEmpty() ? cause : said;
    }
    showRows();
}

/// Comes before the call's own answer.
void NodeWords::onNodeSaid(const QString& path, const QString& words)
{
    for (Row& row : rows) {
        if (row.call.path == path)
            row.said = words;
    }
}

void NodeWords::showRows()
{
    QStringList lines;
    lines.reserve(rows.size());
    for (const Row& row : rows) {
        const QString line = row.call.line.isEmpty() ? tr("The node says: %1") : row.call.line;
        if (!row.shown.isEmpty())
            lines.append(line.arg(lineForLabel(row.shown)));
    }
    setText(lines.join(u'\n'));
    setVisible(!lines.isEmpty());
}
