#include "RefsParser.h"

#include "NdJson.h"

using namespace Qt::StringLiterals;

namespace {

/// The CID under "Ref", else under "Cid", there as a text or as a link `{"/": "…"}`.
QString refOf(const QJsonObject& line)
{
    if (const QJsonValue ref = line["Ref"_L1]; !ref.isUndefined())
        return ref.toString();
    const QJsonValue cid = line["Cid"_L1];
    return cid.isObject() ? cid["/"_L1].toString() : cid.toString();
}

} // namespace

QStringList parseRefs(const QByteArray& body)
{
    QStringList cids;
    forEachJsonLine(body, [&cids](const QJsonObject& line) {
        if (const QString cid = refOf(line); !cid.isEmpty())
            cids.append(cid);
    });
    return cids;
}
