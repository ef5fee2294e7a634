// SPDX-License-Identifier: MIT
#include "KeyService.h"

#include "DemoPeers.h"
#include "DemoWire.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr int mostHops = 32; // from name to name

struct Key
{
    QLatin1StringView name;
    QLatin1StringView id;
};
constexpr std::array keys {Key {"self"_L1, "k51qzi5uqu5dgco0da1k97ov7wpeuywq1clp4ayqbassqybqz7jt1ycp4shjhg"_L1},
                           Key {"notes"_L1, "k51qzi5uqu5dkgc71rv6nsh9mp5s8m5xsblxqkjqp9r58q8s0afv54hs423oy1"_L1},
                           Key {"website"_L1, "k51qzi5uqu5dj33n5u5b71g8sic2rie6yuwm30ssskty7ttcrnrokmxem3lzpw"_L1}};

/// By name or ID; nothing if there is no such key.
const Key* keyOf(const QString& text)
{
    const auto* const key
        = std::ranges::find_if(keys, [&text](const Key& k) { return k.name == text || k.id == text; });
    return key == keys.end() ? nullptr : key;
}

NodeAnswer listKeys()
{
    QByteArray entries;
    for (const Key& key : keys)
        entries += (entries.isEmpty() ? "{\"Name\":" : ",{\"Name\":") + jsonText(key.name)
            + ",\"Id\":" + jsonText(key.id) + '}';
    return NodeAnswer::json("{\"Keys\":[" + entries + "]}\n");
}

/// Why the node cannot find what "/ipfs/<cid>/<name>…" leads to; empty if it can.
QString faultOf(const DemoStore& store, const QString& path)
{
    const QStringList names = path.split(u'/', Qt::SkipEmptyParts).mid(1);
    auto cid = path.startsWith("/ipfs/"_L1) ? decodeCid(names.value(0)) : std::nullopt;
    if (!cid)
        return u"invalid path \"%1\": path does not have enough components"_s.arg(path);
    auto object = store.find(*cid);
    for (qsizetype i = 1; object && i < names.size(); ++i) {
        const auto link = std::ranges::find(object->links, names.at(i).toUtf8(), &DemoLink::name);
        if (link == object->links.end())
            return u"no link named \"%1\" under %2"_s.arg(names.at(i), encodeCid(*cid));
        cid = link->cid;
        object = store.find(*cid);
    }
    return object ? QString() : QString::fromLatin1(missingText(*cid));
}

bool isNameOfKey(const QString& name)
{
    return isPeerId(name) || (name.startsWith("k51"_L1) && name.size() == keys.front().id.size());
}

} // namespace

QList<NodeCommand> KeyService::commands()
{
    return {{.path = "/key/list", .run = [](const NodeRequest&) { return listKeys(); }},
            {.path = "/name/publish",
             .argument = u"ipfs-path"_s,
             .options = {{u"key"_s},
                         {u"lifetime"_s},
                         {u"ttl"_s},
                         {u"resolve"_s, NodeOption::Bool},
                         {u"allow-offline"_s, NodeOption::Bool}},
             .run = [this](const NodeRequest& request) { return publish(request); }},
            {.path = "/name/resolve",
             .options = {{u"recursive"_s, NodeOption::Bool}, {u"nocache"_s, NodeOption::Bool}},
             .run = [this](const NodeRequest& request) { return resolve(request); }}};
}

NodeAnswer KeyService::publish(const NodeRequest& request)
{
    if (repo.options().isOffline && !isSet(request, u"allow-offline"_s))
        return NodeAnswer::error("can't publish while offline: pass `--allow-offline` to override or start the node "
                                 "with network access");
    QString path = request.value(u"arg"_s);
    if (!path.startsWith(u'/'))
        path.prepend("/ipfs/"_L1);
    const QString keyText = request.values(u"key"_s).value(0, u"self"_s);
    const Key* const key = keyOf(keyText);
    if (!key)
        return NodeAnswer::error("no key by the given name was found");
    const bool isName = path.startsWith("/ipns/"_L1);
    if (isName && !published.contains(path.section(u'/', 2, 2)))
        return NodeAnswer::error("could not resolve name");
    const QString fault = isName ? QString() : faultOf(repo.store(), path);
    if (!fault.isEmpty())
        return errorOf(fault);
    published.insert(key->id, path);
    NodeAnswer answer = NodeAnswer::json("{\"Name\":" + jsonText(key->id) + ",\"Value\":" + jsonText(path) + "}\n");
    answer.latency = repo.options().publishTime;
    return answer;
}

/// Names of keys mean nothing here: what is no key's ID is looked up as a domain, and no domain is found.
NodeAnswer KeyService::resolve(const NodeRequest& request) const
{
    QString path = request.values(u"arg"_s).value(0, keys.front().id);
    if (!path.startsWith("/ipns/"_L1))
        path.prepend("/ipns/"_L1);
    NodeAnswer answer = NodeAnswer::error("could not resolve name");
    for (int hop = 0; hop < mostHops && path.startsWith("/ipns/"_L1); ++hop) {
        const QString name = path.section(u'/', 2, 2);
        const QString id = name == selfPeerId ? QString(keys.front().id) : name;
        if (!isNameOfKey(name)) {
            answer = errorOf(u"DNSLink lookup for \"%1\" failed: lookup _dnslink.%1: no such host"_s.arg(name));
            break;
        }
        if (!published.contains(id))
            break;
        path = published.value(id) + path.sliced(6 + name.size());
    }
    if (path.startsWith("/ipfs/"_L1))
        answer = NodeAnswer::json("{\"Path\":" + jsonText(path) + "}\n");
    answer.latency = repo.options().publishTime;
    return answer;
}
