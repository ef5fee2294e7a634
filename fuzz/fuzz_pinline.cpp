// SPDX-License-Identifier: MIT
#include "PinListParser.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdlib>

using namespace Qt::StringLiterals;

/// Any line reads as it would by way of a JSON document, whichever road it takes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray line(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto entry = parsePinLine(line);
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    const QJsonObject facts = object.contains("PinLsObject"_L1) ? object["PinLsObject"_L1].toObject() : object;
    const QString cid = facts["Cid"_L1].toString();
    if (entry.has_value() == cid.isEmpty())
        std::abort();
    if (entry
        && (entry->cid != cid || entry->type != facts["Type"_L1].toString()
            || entry->name != facts["Name"_L1].toString()))
        std::abort();
    return 0;
}
