#include "DemoNode.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr auto peerId = "12D3KooWAGok5BHR3zQCMcfB5a5ntgco7JCLFwtEFB229Awz5eC3"_L1;
constexpr auto agentVersion = "kubo/0.43.0"_L1;

/// As a node writes JSON: one line, "<", ">" and "&" escaped.
QByteArray jsonText(const QString& text)
{
    QByteArray out = QJsonDocument(QJsonObject {{u"t"_s, text}}).toJson(QJsonDocument::Compact);
    out = out.sliced(5, out.size() - 6);
    return out.replace('<', "\\u003c").replace('>', "\\u003e").replace('&', "\\u0026");
}

QByteArray jsonLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

/// A base other than base58btc lifts version 0 to 1, for show.
QByteArray shownCid(Cid cid, const FakeRequest& request)
{
    const QString base = request.value(u"cid-base"_s);
    if (!base.isEmpty() && base != "base58btc"_L1 && request.value(u"upgrade-cidv0-in-output"_s) != "false"_L1)
        cid.version = 1;
    return encodeCid(cid).toLatin1();
}

/// The keys in a node's order, empty ones left out.
QByteArray pinLine(const QByteArray& cid, const QString& name, QByteArrayView type)
{
    QByteArray line = "{\"Cid\":\"" + cid + '"';
    if (!name.isEmpty())
        line += ",\"Name\":" + jsonText(name);
    return line + ",\"Type\":\"" + type.toByteArray() + "\"}\n";
}

struct ListedPin
{
    Cid cid {};
    QString name {};
    QByteArrayView type {};
};

/// Everything below the recursive pins that is not pinned by itself.
QList<ListedPin> indirectPins(const DemoStore& store, const QList<DemoPin>& pins)
{
    QSet<QByteArray> seen;
    QList<Cid> open;
    for (const DemoPin& pin : pins) {
        seen.insert(pin.cid.multihash);
        if (pin.recursive)
            open.append(pin.cid);
    }
    QList<ListedPin> found;
    while (!open.isEmpty()) {
        const DemoObject* object = store.find(open.takeFirst());
        for (const DemoLink& link : object ? object->links : QList<DemoLink>()) {
            open.append(link.cid);
            if (!seen.contains(link.cid.multihash)) {
                seen.insert(link.cid.multihash);
                found.append({.cid = link.cid, .type = "indirect"});
            }
        }
    }
    return found;
}

} // namespace

DemoNode::DemoNode(const DemoOptions& newOptions, QObject* parent)
    : FakeNode(parent)
    , options(newOptions)
    , pins(demoPins(store, newOptions.pins))
{
    listen(options.port);
    keepRequests(false);
    addRoute("/pin/ls", [this](const FakeRequest& request) { return pinLs(request); });
    addRoute("/id", [this](const FakeRequest&) { return id(); });
    addRoute("/version", [this](const FakeRequest&) { return version(); });
}

void DemoNode::addRoute(const QByteArray& path, Handler handler)
{
    route(path, [this, handler = std::move(handler)](const FakeRequest& request) {
        FakeAnswer answer = handler(request);
        answer.latency = options.latency;
        return answer;
    });
}

FakeAnswer DemoNode::stream(std::function<std::optional<QByteArray>()> next) const
{
    FakeAnswer answer {.headers = {{"Content-Type", "application/json"}, {"X-Chunked-Output", "1"}}};
    answer.source = [next = std::move(next), size = options.chunkBytes, pause = options.chunkPause,
                     rest = QByteArray()]() mutable -> std::optional<FakeChunk> {
        while (rest.isEmpty() || rest.size() < size) {
            const auto line = next();
            if (!line)
                break;
            rest += *line;
        }
        if (rest.isEmpty())
            return std::nullopt;
        const qsizetype taken = size > 0 ? std::min<qsizetype>(size, rest.size()) : rest.size();
        FakeChunk chunk {.bytes = rest.first(taken), .pause = pause};
        rest.remove(0, taken);
        return chunk;
    };
    return answer;
}

FakeAnswer DemoNode::pinLs(const FakeRequest& request)
{
    const QString asked = request.value(u"type"_s);
    const QString type = asked.isEmpty() ? u"all"_s : asked;
    const bool all = type == "all"_L1;
    if (!all && type != "recursive"_L1 && type != "direct"_L1 && type != "indirect"_L1)
        return FakeAnswer::error("invalid type '" + type.toUtf8() + "', must be one of {direct, indirect, recursive, all}");
    const auto listed = std::make_shared<QList<ListedPin>>();
    for (const bool recursive : {true, false}) {
        if (!all && type != (recursive ? "recursive"_L1 : "direct"_L1))
            continue;
        for (const DemoPin& pin : std::as_const(pins)) {
            if (pin.recursive == recursive)
                listed->append({pin.cid, pin.name, recursive ? "recursive" : "direct"});
        }
    }
    if (all || type == "indirect"_L1)
        listed->append(indirectPins(store, pins));
    const bool names = request.value(u"names"_s) == "true"_L1;
    return stream([listed, request, names, row = 0]() mutable -> std::optional<QByteArray> {
        if (row >= listed->size())
            return std::nullopt;
        const ListedPin& pin = listed->at(row++);
        return pinLine(shownCid(pin.cid, request), names ? pin.name : QString(), pin.type);
    });
}

FakeAnswer DemoNode::id() const
{
    return FakeAnswer::json(jsonLine({{u"ID"_s, peerId}, {u"AgentVersion"_s, agentVersion}}));
}

FakeAnswer DemoNode::version() const
{
    return FakeAnswer::json(jsonLine({{u"Version"_s, u"0.43.0"_s}, {u"Repo"_s, u"18"_s}}));
}
