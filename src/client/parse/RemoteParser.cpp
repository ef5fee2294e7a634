// SPDX-License-Identifier: MIT
#include "RemoteParser.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array nameKeys {"Service"_L1, "Name"_L1, "service"_L1, "name"_L1};
constexpr std::array endpointKeys {"ApiEndpoint"_L1, "Endpoint"_L1, "apiEndpoint"_L1, "endpoint"_L1};

template <typename Keys> QString firstText(const QJsonObject& object, const Keys& keys)
{
    for (const QLatin1StringView key : keys) {
        if (const QString text = object.value(key).toString().trimmed(); !text.isEmpty())
            return text;
    }
    return {};
}

QJsonArray servicesOf(const QJsonObject& answer)
{
    constexpr auto services = "RemoteServices"_L1;
    if (answer.value(services).isArray())
        return answer.value(services).toArray();
    if (const QJsonValue inner = answer.value("RemoteServiceLsOutput"_L1).toObject().value(services); inner.isArray())
        return inner.toArray();
    return answer.value("Services"_L1).toArray();
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
    ServiceList list {.error = answer.value("Error"_L1).toString().trimmed()};
    if (!list.error.isEmpty())
        return list;
    const QJsonArray services = servicesOf(answer);
    for (const QJsonValue& value : services) {
        const QJsonObject service = value.toObject();
        const QString name = firstText(service, nameKeys);
        if (!name.isEmpty())
            list.services.append({.entry = {.name = name, .endpoint = firstText(service, endpointKeys)},
                                  .status = service.value("Stat"_L1).toObject().value("Status"_L1).toString()});
    }
    return list;
}
