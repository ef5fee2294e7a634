// SPDX-License-Identifier: MIT
#include "ConfigService.h"

#include "ConfigSchema.h"
#include "DemoWire.h"
#include "MultipartReader.h"
#include "PartHead.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QStringList privateKeyPath {u"Identity"_s, u"PrivKey"_s};

/// Whether what is at `path` is `secret`, has it in it or is in it; "*" is any name.
bool touches(const QStringList& path, const QStringList& secret)
{
    return std::equal(path.begin(), path.begin() + std::min(path.size(), secret.size()), secret.begin(),
                      [](const QString& name, const QString& other) { return other == "*"_L1 || name == other; });
}

/// Why a key is not shown and not changed; empty if nothing in it is secret.
QString concealment(const QStringList& path)
{
    if (touches(path, privateKeyPath))
        return u"cannot show or change private key through API"_s;
    if (touches(path, DemoConfig::servicesPath() + QStringList {u"*"_s, u"API"_s, u"Key"_s}))
        return u"cannot show or change pinning services credentials"_s;
    return {};
}

/// The value that a write's text is, or why it is none.
CheckedConfig valueOf(const NodeRequest& request, const QString& text)
{
    if (isSet(request, u"bool"_s))
        return {.value = text == "true"_L1};
    if (!isSet(request, u"json"_s))
        return {.value = text};
    QJsonParseError error;
    const QJsonArray list = QJsonDocument::fromJson('[' + text.toUtf8() + ']', &error).array();
    if (error.error != QJsonParseError::NoError)
        return {.fault = error.errorString()};
    if (list.size() != 1)
        return {.fault = list.isEmpty() ? u"unexpected end of JSON input"_s : u"invalid character ',' after value"_s};
    return {.value = list.first()};
}

NodeAnswer valueAnswer(const QStringList& path, const QJsonValue& value)
{
    return NodeAnswer::json("{\"Key\":" + jsonText(path.join(u'.')) + ",\"Value\":" + jsonValueText(value) + "}\n");
}

/// Nothing if the body has no part that can be read.
std::optional<QByteArray> firstPartOf(const NodeRequest& request)
{
    const auto type = parseMimeValue(request.header("Content-Type"));
    if (!type || type->type != "multipart/form-data")
        return std::nullopt;
    MultipartReader reader(type->parameters.value("boundary"));
    reader.append(request.body);
    reader.finish();
    QByteArray bytes;
    while (true) {
        const auto event = reader.next();
        if (event == MultipartReader::PartEnd)
            return bytes;
        if (event == MultipartReader::Piece)
            bytes += reader.piece();
        else if (event != MultipartReader::PartHead)
            return std::nullopt;
    }
}

} // namespace

QList<NodeCommand> ConfigService::commands()
{
    const auto show
        = [this](const NodeRequest&) { return NodeAnswer::json(jsonLine(withoutSecrets(config.document()))); };
    return {{.path = "/config",
             .argument = u"key"_s,
             .options = {{u"bool"_s, NodeOption::Bool}, {u"json"_s, NodeOption::Bool}},
             .run = [this](const NodeRequest& request) { return readOrWrite(request); }},
            {.path = "/config/show", .run = show},
            {.path = "/config/replace", .run = [this](const NodeRequest& request) { return replace(request); }}};
}

NodeAnswer ConfigService::readOrWrite(const NodeRequest& request)
{
    const QStringList arguments = request.values(u"arg"_s);
    const QStringList path = arguments.constFirst().split(u'.');
    if (const QString why = concealment(path); !why.isEmpty())
        return errorOf(why);
    if (arguments.size() > 1)
        return write(request, path);
    const QJsonValue value = config.value(path);
    return value.isUndefined() ? errorOf(u"failed to get config value: \"%1 not found\""_s.arg(arguments.constFirst()))
                               : valueAnswer(path, value);
}

NodeAnswer ConfigService::write(const NodeRequest& request, const QStringList& path)
{
    const CheckedConfig given = valueOf(request, request.values(u"arg"_s).at(1));
    if (!given.fault.isEmpty())
        return errorOf(u"failed to unmarshal json. "_s + given.fault);
    if (!isConfigPath(path))
        return errorOf(u"failed to set config value: %1 not found (maybe use --json?)"_s.arg(path.join(u'.')));
    const CheckedConfig checked = checkedConfig(path, given.value);
    if (!checked.fault.isEmpty())
        return errorOf(u"failed to set config value: "_s + checked.fault);
    config.setValue(path, checked.value);
    config.reload();
    return valueAnswer(path, checked.value);
}

NodeAnswer ConfigService::replace(const NodeRequest& request)
{
    const auto bytes = firstPartOf(request);
    if (!bytes)
        return badRequest(u"file argument 'config' is required"_s);
    const QJsonDocument parsed = QJsonDocument::fromJson(*bytes);
    CheckedConfig checked = checkedConfig({}, parsed.object());
    if (!parsed.isObject() || !checked.fault.isEmpty())
        return NodeAnswer::error("failed to decode file as config");
    QJsonObject document = checked.value.toObject();
    QJsonObject identity = document.value(privateKeyPath.first()).toObject();
    if (!identity.take(privateKeyPath.last()).toString().isEmpty())
        return NodeAnswer::error("setting private key with API is not supported");
    if (const QString fault = faultOfServices(document); !fault.isEmpty())
        return errorOf(fault);
    document.insert(privateKeyPath.first(), identity);
    config.setDocument(overlaid(config.document(), document));
    return NodeAnswer::json({});
}

/// An endpoint or a key that is left out stays as it is.
QString ConfigService::faultOfServices(const QJsonObject& document) const
{
    const QJsonObject pinning = document.value(DemoConfig::servicesPath().first()).toObject();
    if (!pinning.contains(DemoConfig::servicesPath().last()))
        return {};
    const QJsonObject services = pinning.value(DemoConfig::servicesPath().last()).toObject();
    const QJsonObject kept = config.value(DemoConfig::servicesPath()).toObject();
    if (services.keys() != kept.keys())
        return u"cannot add or remove remote pinning services with 'config replace'"_s;
    for (const QString& name : kept.keys()) {
        const QJsonObject api = services.value(name)["API"_L1].toObject();
        const QJsonObject keptApi = kept.value(name)["API"_L1].toObject();
        for (const QString& member : api.keys()) {
            if (api.value(member) != keptApi.value(member))
                return u"cannot change remote pinning services api info with 'config replace'"_s;
        }
    }
    return {};
}
