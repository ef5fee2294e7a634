// SPDX-License-Identifier: MIT
#include "PinService.h"

#include "DemoWire.h"

#include <QJsonArray>
#include <QSet>

#include <algorithm>
#include <map>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

struct ListedPin
{
    Cid cid {};
    QString name {};
    QByteArray type {};
};

struct Listing
{
    QList<ListedPin> pins {};
    QByteArray error {}; ///< why the walk broke off after them; empty if it did not
};

/// One line a pin, the keys in a node's order.
QByteArray linesOf(const QList<ListedPin>& pins, bool lifted)
{
    QByteArray body;
    for (const ListedPin& pin : pins) {
        body.append("{\"Cid\":\"").append(shownCid(pin.cid, lifted)).append("\",");
        if (!pin.name.isEmpty())
            body.append("\"Name\":").append(jsonText(pin.name)).append(',');
        body.append("\"Type\":\"").append(pin.type).append("\"}\n");
    }
    return body;
}

/// One document, sorted by key; two CIDs that are shown as one text are one entry.
QByteArray documentOf(const QList<ListedPin>& pins, bool lifted)
{
    std::map<QByteArray, QByteArray> entries;
    for (const ListedPin& pin : pins) {
        const QByteArray name = pin.name.isEmpty() ? QByteArray() : ",\"Name\":" + jsonText(pin.name);
        entries[shownCid(pin.cid, lifted)] = "{\"Type\":\"" + pin.type + '"' + name + '}';
    }
    QByteArray body;
    for (const auto& [cid, entry] : entries)
        body.append(body.isEmpty() ? "" : ",").append('"').append(cid).append("\":").append(entry);
    return body.isEmpty() ? "{}\n" : "{\"Keys\":{" + body + "}}\n";
}

QList<ListedPin> pinsOf(const DemoRepo& repo, const QString& type)
{
    QList<ListedPin> listed;
    for (const bool recursive : {true, false}) {
        const QByteArray word = recursive ? "recursive" : "direct";
        if (type != "all"_L1 && type != QLatin1StringView(word))
            continue;
        for (const DemoPin& pin : repo.pins()) {
            if (pin.recursive == recursive)
                listed.append({pin.cid, pin.name, word});
        }
    }
    return listed;
}

/// Everything below the recursive pins that is not pinned by itself, under that very CID.
void appendIndirectPins(const DemoRepo& repo, Listing& listing)
{
    QSet<QByteArray> listed;
    QList<Cid> roots;
    for (const DemoPin& pin : repo.pins()) {
        listed.insert(cidBytes(pin.cid));
        if (pin.recursive)
            roots.append(pin.cid);
    }
    const auto missing = repo.store().walk(roots, [&](const Cid& cid) {
        const QByteArray key = cidBytes(cid);
        if (listed.contains(key))
            return;
        listed.insert(key);
        listing.pins.append({.cid = cid, .type = "indirect"});
    });
    if (missing)
        listing.error = missingText(*missing);
}

/// How the node has pinned a CID, if it has it pinned in that way.
std::optional<ListedPin> findPin(const DemoRepo& repo, const Cid& cid, const QString& type)
{
    const QList<ListedPin> pins = repo.isPinned(cid) ? pinsOf(repo, type) : QList<ListedPin>();
    if (const auto pin = std::ranges::find(pins, cid, &ListedPin::cid); pin != pins.end())
        return *pin;
    if (type != "all"_L1 && type != "indirect"_L1)
        return std::nullopt;
    for (const DemoPin& pin : repo.pins()) {
        bool isBelow = false;
        if (pin.recursive)
            repo.store().walk({pin.cid}, [&](const Cid& child) { isBelow = isBelow || child == cid; });
        if (isBelow)
            return ListedPin {.cid = cid, .type = "indirect through " + encodeCid(pin.cid).toLatin1()};
    }
    return std::nullopt;
}

/// Looks at the text alone.
NodeAnswer formatCids(const NodeRequest& request)
{
    const QString version = request.value(u"v"_s);
    if (version != "0"_L1 && version != "1"_L1)
        return NodeAnswer::error("cid version must be 0 or 1");
    QByteArray body;
    for (const QString& text : request.values(u"arg"_s)) {
        auto cid = decodeCid(text);
        QString problem = cid ? QString() : u"invalid cid"_s;
        if (cid && version == "0"_L1 && cid->codec != Cid::dagPbCodec)
            problem = u"can't convert non-dag-pb nodes to cidv0"_s;
        if (cid)
            cid->version = version.toInt();
        body += jsonLine({{u"CidStr"_s, text},
                          {u"Formatted"_s, problem.isEmpty() ? encodeCid(*cid) : QString()},
                          {u"ErrorMsg"_s, problem}});
    }
    return NodeAnswer::json(body);
}

} // namespace

PinService::PinService(DemoRepo& newRepo)
    : repo(newRepo)
{
    const QByteArray usual = "names=true&stream=true&cid-base=base32";
    for (const QString& type : {u"recursive"_s, u"direct"_s})
        listAll({.rawQuery = usual}, type); // what is asked for first is not to be held up by its making
}

QList<NodeCommand> PinService::commands()
{
    return {{.path = "/pin/ls",
             .options = {{u"type"_s},
                         {u"names"_s, NodeOption::Bool},
                         {u"stream"_s, NodeOption::Bool},
                         {u"quiet"_s, NodeOption::Bool}},
             .run = [this](const NodeRequest& request) { return list(request); }},
            {.path = "/pin/rm",
             .argument = u"ipfs-path"_s,
             .options = {{u"recursive"_s, NodeOption::Bool}},
             .run = [this](const NodeRequest& request) { return remove(request); }},
            {.path = "/cid/format",
             .argument = u"cid"_s,
             .options = {{u"v"_s}, {u"b"_s}, {u"f"_s}, {u"mc"_s}},
             .run = formatCids}};
}

NodeAnswer PinService::list(const NodeRequest& request)
{
    const QString asked = request.value(u"type"_s);
    const QString type = asked.isEmpty() ? u"all"_s : asked;
    if (!QStringList {u"all"_s, u"recursive"_s, u"direct"_s, u"indirect"_s}.contains(type)) {
        return NodeAnswer::error("invalid type '" + type.toUtf8()
                                 + "', must be one of {direct, indirect, recursive, all}");
    }
    return request.values(u"arg"_s).isEmpty() ? listAll(request, type) : listNamed(request, type);
}

NodeAnswer PinService::listAll(const NodeRequest& request, const QString& type)
{
    const bool names = isSet(request, u"names"_s);
    const bool streams = isSet(request, u"stream"_s);
    const bool lifted = liftsVersion0(request);
    if (std::exchange(listingsRevision, repo.revision()) != repo.revision())
        listings.clear();
    const QString key
        = u"%1 %2%3%4"_s.arg(type, QString::number(names), QString::number(streams), QString::number(lifted));
    if (const auto known = listings.constFind(key); known != listings.constEnd())
        return *known;

    Listing listing {.pins = pinsOf(repo, type)};
    if (!names)
        std::ranges::for_each(listing.pins, [](ListedPin& pin) { pin.name.clear(); });
    if (type == "all"_L1 || type == "indirect"_L1)
        appendIndirectPins(repo, listing);
    NodeAnswer answer;
    if (!listing.error.isEmpty() && (!streams || listing.pins.isEmpty()))
        answer = NodeAnswer::error(listing.error);
    else if (streams)
        answer = streamOf(linesOf(listing.pins, lifted), repo.options(), listing.error);
    else
        answer = NodeAnswer::json(documentOf(listing.pins, lifted));
    listings.insert(key, answer);
    return answer;
}

/// The first that is not pinned fails the call.
NodeAnswer PinService::listNamed(const NodeRequest& request, const QString& type) const
{
    QList<ListedPin> found;
    for (const QString& path : request.values(u"arg"_s)) {
        const auto cid = cidOfPath(path);
        if (!cid)
            return invalidPath(path);
        const auto pin = findPin(repo, *cid, type);
        if (!pin)
            return errorOf(u"path '%1' is not pinned"_s.arg(path));
        found.append(*pin);
        if (!isSet(request, u"names"_s))
            found.last().name.clear();
    }
    const bool lifted = liftsVersion0(request);
    if (isSet(request, u"stream"_s))
        return streamOf(linesOf(found, lifted), repo.options());
    return NodeAnswer::json(documentOf(found, lifted));
}

/// One argument after the other; the first that fails ends the call, and those before it are gone without a word.
NodeAnswer PinService::remove(const NodeRequest& request)
{
    QSet<QByteArray> removed;
    QJsonArray reported;
    std::optional<NodeAnswer> failure;
    for (const QString& text : request.values(u"arg"_s)) {
        const auto cid = decodeCid(text);
        if (!cid)
            failure = invalidPath(text);
        else if (!repo.isPinned(*cid) || removed.contains(cidBytes(*cid)))
            failure = NodeAnswer::error("not pinned or pinned indirectly");
        if (failure)
            break;
        removed.insert(cidBytes(*cid));
        reported.append(encodeCid(*cid));
    }
    repo.unpin(removed);
    return failure ? *failure : NodeAnswer::json(jsonLine({{u"Pins"_s, reported}}));
}
