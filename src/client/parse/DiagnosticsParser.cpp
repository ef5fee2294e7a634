// SPDX-License-Identifier: MIT
#include "DiagnosticsParser.h"

#include "NdJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

/// A removed block as a node writes it, `{"Key":{"/":"<CID>"}}`, many times as fast as by way of a JSON document.
bool takePlainRemoval(QByteArrayView line, QStringList& cids)
{
    if (!NdJson::take(line, R"({"Key":{"/":)"))
        return false;
    const auto cid = NdJson::takePlainString(line);
    if (!cid || cid->isEmpty() || line != "}}" || cid->trimmed().size() != cid->size())
        return false;
    cids.append(*cid);
    return true;
}

void takeReport(const QJsonObject& object, GcReport& report)
{
    if (const QString error = object.value("Error"_L1).toString().trimmed(); !error.isEmpty())
        report.errors.append(error);
    if (const QString cid = object.value("Key"_L1).toObject().value("/"_L1).toString().trimmed(); !cid.isEmpty())
        report.collectedCids.append(cid);
}

} // namespace

DhtStats parseDhtStats(const QByteArray& body)
{
    QJsonParseError error {};
    const QJsonDocument whole = QJsonDocument::fromJson(body.trimmed(), &error);
    if (error.error == QJsonParseError::NoError)
        return {.data = whole.isArray() ? QJsonValue(whole.array()) : QJsonValue(whole.object())};
    QJsonArray views;
    forEachLine(body, [&views](QByteArrayView line) {
        if (const auto view = parseJsonLine(line))
            views.append(*view);
    });
    if (views.isEmpty())
        return {.parserMessage = error.errorString()};
    return {.data = views.size() == 1 ? views.first() : QJsonValue(views)};
}

GcReport parseGcReport(const QByteArray& body)
{
    GcReport report;
    forEachLine(body, [&report](QByteArrayView line) {
        if (takePlainRemoval(line, report.collectedCids))
            return;
        if (const auto object = parseJsonLine(line))
            takeReport(*object, report);
    });
    if (report.collectedCids.isEmpty() && report.errors.isEmpty())
        takeReport(QJsonDocument::fromJson(body).object(), report);
    return report;
}
