// SPDX-License-Identifier: MIT
#include "LsParser.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

constexpr auto lsNameKey = "Name"_L1;
constexpr auto objectsKey = "Objects"_L1;
constexpr auto entriesKey = "Entries"_L1;

void appendLinks(const QJsonArray& links, const QString& objectName, QList<LsEntry>& entries)
{
    for (const auto& value : links) {
        if (!value.isObject())
            continue;
        const QJsonObject link = value.toObject();
        entries.append({.name = link[lsNameKey].toString(),
                        .objectName = objectName,
                        .hash = link["Hash"_L1].toString(),
                        .size = link["Size"_L1].toVariant().toLongLong(),
                        .type = link["Type"_L1].toInt()});
    }
}

} // namespace

Listing parseLs(const QByteArray& body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        return {.error = QCoreApplication::translate("LsParser", "Invalid JSON from ls")};
    const QJsonObject object = document.object();
    Listing listing;
    if (object.contains(objectsKey)) {
        for (const auto& listed : object[objectsKey].toArray())
            appendLinks(listed["Links"_L1].toArray(), listed[lsNameKey].toString(), listing.entries);
    } else if (object.contains(entriesKey)) {
        appendLinks(object[entriesKey].toArray(), {}, listing.entries);
    } else {
        listing.error = QCoreApplication::translate("LsParser", "Unexpected ls response format");
    }
    return listing;
}
