// SPDX-License-Identifier: MIT
#include "RemoteParser.h"

#include "FirstText.h"
#include "NdJson.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array nameKeys {"Service"_L1, "Name"_L1, "service"_L1, "name"_L1};
constexpr std::array endpointKeys {"ApiEndpoint"_L1, "Endpoint"_L1, "apiEndpoint"_L1, "endpoint"_L1};

/// The array `key` of an answer or of the object `wrapper` in it; undefined if there is none.
QJsonValue arrayIn(const QJsonObject& answer, QLatin1StringView key, QLatin1StringView wrapper)
{
    for (const QJsonValue& value : {answer.value(key), answer.value(wrapper).toObject().value(key)}) {
        if (value.isArray())
            return value;
    }
    return QJsonValue::Undefined;
}

QJsonArray servicesOf(const QJsonObject& answer)
{
    const QJsonValue services = arrayIn(answer, "RemoteServices"_L1, "RemoteServiceLsOutput"_L1);
    return (services.isArray() ? services : answer.value("Services"_L1)).toArray();
}

QString statedError(const QJsonObject& answer)
{
    return answer.value("Error"_L1).toString().trimmed();
}

/// The pins of an answer: the objects of its array, or itself where it is one.
QList<QJsonObject> pinsOf(const QJsonObject& answer)
{
    const QJsonValue array = arrayIn(answer, "Pins"_L1, "RemotePinLsOutput"_L1);
    if (!array.isArray())
        return {answer};
    QList<QJsonObject> pins;
    const QJsonArray values = array.toArray();
    pins.reserve(values.size());
    for (const auto& value : values)
        pins.append(value.toObject());
    return pins;
}

/// As objects: all of the body, or each of its lines.
QList<QJsonObject> objectsOf(const QByteArray& body)
{
    if (const QJsonDocument whole = QJsonDocument::fromJson(body); whole.isObject())
        return {whole.object()};
    QList<QJsonObject> objects;
    forEachLine(body, [&objects](QByteArrayView line) {
        if (const auto object = parseJsonLine(line))
            objects.append(*object);
    });
    return objects;
}

QString cidOfPin(const QJsonObject& pin)
{
    const QJsonValue cid = pin.value("Cid"_L1);
    return (cid.isObject() ? cid.toObject().value("/"_L1) : cid).toString().trimmed();
}

QString statusOfPin(const QJsonObject& pin)
{
    const QString status = firstText(pin, std::array {"Status"_L1, "status"_L1}).toLower();
    return status.isEmpty() ? u"unknown"_s : status;
}

} // namespace

QList<RemoteServiceEntry> ServiceList::entries() const
{
    QList<RemoteServiceEntry> all;
    all.reserve(services.size());
    for (const ListedService& service : services)
        all.append(service.entry);
    return all;
}

ServiceList parseServiceList(const QByteArray& body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        return {.error
                = QCoreApplication::translate("RemoteParser", "Remote service request failed: invalid JSON response.")};
    const QJsonObject answer = document.object();
    ServiceList list {.error = statedError(answer)};
    if (!list.error.isEmpty())
        return list;
    const QJsonArray services = servicesOf(answer);
    for (const auto& value : services) {
        const QJsonObject service = value.toObject();
        const QString name = firstText(service, nameKeys);
        if (!name.isEmpty())
            list.services.append({.entry = {.name = name, .endpoint = firstText(service, endpointKeys)},
                                  .status = service.value("Stat"_L1).toObject().value("Status"_L1).toString()});
    }
    return list;
}

RemotePinState parseRemotePinState(const QByteArray& body, const QString& cid)
{
    const auto failed = [&cid](const QString& why) {
        return RemotePinState {
            .error = QCoreApplication::translate("RemoteParser", "Remote pin status failed for %1: %2").arg(cid, why)};
    };
    const QList<QJsonObject> objects = objectsOf(body);
    if (objects.isEmpty() && !body.trimmed().isEmpty())
        return failed(QCoreApplication::translate("RemoteParser", "invalid JSON response."));
    RemotePinState state {.status = u"not-found"_s};
    for (const QJsonObject& object : objects) {
        if (const QString error = statedError(object); !error.isEmpty())
            return failed(error);
        for (const QJsonObject& pin : pinsOf(object)) {
            if (cid.isEmpty() || cidOfPin(pin) != cid)
                continue;
            if (const QString status = statusOfPin(pin); state.status == "not-found"_L1 || status == "pinned"_L1)
                state.status = status;
        }
    }
    return state;
}
