// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "PinListParser.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

/// Any line reads as it would by way of a JSON document, whichever road it takes.
void checkInput(const QByteArray& line)
{
    const auto entry = parsePinLine(line);
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    const QJsonObject facts = object.contains("PinLsObject"_L1) ? object["PinLsObject"_L1].toObject() : object;
    const QString cid = facts["Cid"_L1].toString();
    abortIf(entry.has_value() == cid.isEmpty());
    abortIf(entry
            && (entry->cid != cid || entry->type != facts["Type"_L1].toString()
                || entry->name != facts["Name"_L1].toString()));
}
