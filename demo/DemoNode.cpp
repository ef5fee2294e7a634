#include "DemoNode.h"

#include "DemoWire.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto peerId = "12D3KooWAGok5BHR3zQCMcfB5a5ntgco7JCLFwtEFB229Awz5eC3"_L1;
constexpr auto agentVersion = "kubo/0.43.0"_L1;

struct ListedPin
{
    Cid cid {};
    QString name {};
    const char* type = "";
};

/// The keys in a node's order, empty ones left out.
void appendPinLine(QByteArray& body, const QByteArray& cid, const QString& name, const char* type)
{
    body.append("{\"Cid\":\"").append(cid).append('"');
    if (!name.isEmpty())
        body.append(",\"Name\":").append(jsonText(name));
    body.append(",\"Type\":\"").append(type).append("\"}\n");
}

/// Everything below the recursive pins that is not pinned by itself, under that very CID.
QList<ListedPin> indirectPins(const DemoStore& store, const QList<DemoPin>& pins)
{
    QSet<QByteArray> listed;
    QSet<QByteArray> walked;
    QList<Cid> open;
    for (const DemoPin& pin : pins) {
        listed.insert(cidBytes(pin.cid));
        if (pin.recursive)
            open.append(pin.cid);
    }
    QList<ListedPin> found;
    while (!open.isEmpty()) {
        const Cid parent = open.takeFirst();
        if (walked.contains(parent.multihash))
            continue;
        walked.insert(parent.multihash);
        const auto object = store.find(parent);
        for (const DemoLink& link : object ? object->links : QList<DemoLink>()) {
            open.append(link.cid);
            if (const QByteArray key = cidBytes(link.cid); !listed.contains(key)) {
                listed.insert(key);
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
    for (int i = 1; i <= options.looseBlocks; ++i)
        store.addNote(-i);
    if (options.treeEntries > 0)
        pins.append(bigTreePin(store, options.treeEntries));
    listen(options.port);
    keepRequests(false);
    for (const QString& type : {u"recursive"_s, u"direct"_s})
        pinListing(type, true, true); // what is asked for first is not to be held up by its making
    addPinRoutes();
    addRoute("/id", [this](const FakeRequest&) { return id(); });
    addRoute("/version", [this](const FakeRequest&) { return version(); });
    addContentRoutes();
    if (options.looseBlocks > 0)
        refsLocal();
}

void DemoNode::addRoute(const QByteArray& path, Handler handler)
{
    route(path, [this, handler = std::move(handler)](const FakeRequest& request) {
        FakeAnswer answer = handler(request);
        answer.latency = options.latency;
        return answer;
    });
}

FakeAnswer DemoNode::stream(std::shared_ptr<const QByteArray> body) const
{
    FakeAnswer answer {.headers = {{"Content-Type", "application/json"}, {"X-Chunked-Output", "1"}}};
    answer.source = [body = std::move(body), size = options.chunkBytes, pause = options.chunkPause,
                     start = qsizetype {0}]() mutable -> std::optional<FakeChunk> {
        if (start == body->size())
            return std::nullopt;
        const qsizetype rest = body->size() - start;
        const qsizetype taken = size > 0 ? std::min<qsizetype>(size, rest) : body->indexOf('\n', start) + 1 - start;
        start += taken;
        return FakeChunk {.bytes = body->sliced(start - taken, taken), .pause = pause};
    };
    return answer;
}

std::shared_ptr<const QByteArray> DemoNode::pinListing(const QString& type, bool names, bool lifted)
{
    auto& listing = listings[type + u'/' + QString::number(names) + QString::number(lifted)];
    if (listing)
        return listing;
    QByteArray body;
    const auto append = [&](const ListedPin& pin) {
        appendPinLine(body, shownCid(pin.cid, lifted), names ? pin.name : QString(), pin.type);
    };
    const bool all = type == "all"_L1;
    for (const bool recursive : {true, false}) {
        const char* word = recursive ? "recursive" : "direct";
        if (!all && type != QLatin1StringView(word))
            continue;
        for (const DemoPin& pin : std::as_const(pins)) {
            if (pin.recursive == recursive)
                append({pin.cid, pin.name, word});
        }
    }
    if (all || type == "indirect"_L1)
        std::ranges::for_each(indirectPins(store, pins), append);
    listing = std::make_shared<const QByteArray>(body);
    return listing;
}

FakeAnswer DemoNode::pinLs(const FakeRequest& request)
{
    const QString asked = request.value(u"type"_s);
    const QString type = asked.isEmpty() ? u"all"_s : asked;
    if (!QStringList {u"all"_s, u"recursive"_s, u"direct"_s, u"indirect"_s}.contains(type)) {
        return FakeAnswer::error("invalid type '" + type.toUtf8()
                                 + "', must be one of {direct, indirect, recursive, all}");
    }
    return stream(pinListing(type, request.value(u"names"_s) == "true"_L1, liftsVersion0(request)));
}

FakeAnswer DemoNode::id() const
{
    return FakeAnswer::json(jsonLine({{u"ID"_s, peerId}, {u"AgentVersion"_s, agentVersion}}));
}

FakeAnswer DemoNode::version() const
{
    return FakeAnswer::json(jsonLine({{u"Version"_s, u"0.43.0"_s}, {u"Repo"_s, u"18"_s}}));
}
