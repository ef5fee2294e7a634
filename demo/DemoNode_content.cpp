#include "DemoNode.h"

#include "DemoWire.h"

#include <QJsonArray>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

enum LsType { LsDirectory = 1, LsFile = 2, LsSymlink = 4 };

int lsTypeOf(const DemoObject& object)
{
    switch (object.kind) {
    case DemoObject::Directory:
        return LsDirectory;
    case DemoObject::Symlink:
        return LsSymlink;
    default:
        return LsFile;
    }
}

std::optional<Cid> argumentOf(const FakeRequest& request)
{
    QString path = request.value(u"arg"_s);
    if (path.startsWith("/ipfs/"_L1))
        path.remove(0, 6);
    return decodeCid(path);
}

FakeAnswer badPath(const FakeRequest& request)
{
    return invalidPath(request.value(u"arg"_s));
}

FakeAnswer missing(const Cid& cid)
{
    return FakeAnswer::error("block was not found locally (offline): ipld: could not find "
                             + encodeCid(cid).toLatin1());
}

QByteArray refLine(const QByteArray& ref, const QByteArray& error)
{
    return "{\"Ref\":\"" + ref + "\",\"Err\":\"" + error + "\"}\n";
}

} // namespace

void DemoNode::addContentRoutes()
{
    addRoute("/refs", [this](const FakeRequest& request) { return refs(request); });
    addRoute("/refs/local", [this](const FakeRequest&) { return refsLocal(); });
    addRoute("/dag/stat", [this](const FakeRequest& request) { return dagStat(request); });
    addRoute("/files/stat", [this](const FakeRequest& request) { return filesStat(request); });
    addRoute("/ls", [this](const FakeRequest& request) { return ls(request); });
    addRoute("/cat", [this](const FakeRequest& request) { return cat(request); });
}

/// Depth first in link order, a shared subtree once for each way to it. False once a block is missing.
bool DemoNode::appendRefs(const DemoObject& object, const FakeRequest& request, QByteArray& body) const
{
    for (const DemoLink& link : object.links) {
        body += refLine(shownCid(link.cid, liftsVersion0(request)), {});
        const auto child = store.find(link.cid);
        if (!child) {
            body += refLine(
                {}, "block was not found locally (offline): ipld: could not find " + encodeCid(link.cid).toLatin1());
            return false;
        }
        if (request.value(u"recursive"_s) == "true"_L1 && !appendRefs(*child, request, body))
            return false;
    }
    return true;
}

FakeAnswer DemoNode::refs(const FakeRequest& request) const
{
    const auto cid = argumentOf(request);
    if (!cid)
        return badPath(request);
    const auto root = store.find(*cid);
    auto body = std::make_shared<QByteArray>();
    if (root)
        appendRefs(*root, request, *body);
    else
        *body
            = refLine({}, "block was not found locally (offline): ipld: could not find " + encodeCid(*cid).toLatin1());
    return stream(body);
}

void DemoNode::forget(const Cid& cid)
{
    store.forget(cid);
    localRefs.reset();
}

/// Every block as a raw CID of version 1, whatever it was stored as.
FakeAnswer DemoNode::refsLocal()
{
    if (!localRefs) {
        QByteArray body;
        for (const QByteArray& multihash : store.multihashes())
            body += refLine(shownCid({.version = 1, .codec = Cid::rawCodec, .multihash = multihash}, true), {});
        localRefs = std::make_shared<const QByteArray>(body);
    }
    return stream(localRefs);
}

FakeAnswer DemoNode::dagStat(const FakeRequest& request) const
{
    const auto root = argumentOf(request);
    if (!root)
        return badPath(request);
    QSet<QByteArray> seen {root->multihash};
    QList<Cid> unvisited {*root};
    qint64 size = 0;
    while (!unvisited.isEmpty()) {
        const auto object = store.find(unvisited.takeLast());
        if (!object)
            return FakeAnswer::error("error traversing DAG: ipld: could not find " + encodeCid(*root).toLatin1());
        size += object->block.size();
        for (const DemoLink& link : object->links) {
            if (!seen.contains(link.cid.multihash)) {
                seen.insert(link.cid.multihash);
                unvisited.append(link.cid);
            }
        }
    }
    if (size == 0) {
        FakeAnswer answer = FakeAnswer::json({});
        answer.streamError = "json: unsupported value: NaN";
        return answer;
    }
    const auto blocks = static_cast<qint64>(seen.size());
    const QString cid = QString::fromLatin1(shownCid(*root, liftsVersion0(request)));
    return FakeAnswer::json(jsonLine(
        {{u"UniqueBlocks"_s, blocks},
         {u"TotalSize"_s, size},
         {u"Ratio"_s, 1},
         {u"DagStats"_s, QJsonArray {QJsonObject {{u"Cid"_s, cid}, {u"Size"_s, size}, {u"NumBlocks"_s, blocks}}}}}));
}

FakeAnswer DemoNode::filesStat(const FakeRequest& request) const
{
    const auto cid = argumentOf(request);
    if (!cid)
        return badPath(request);
    const auto object = store.find(*cid);
    if (!object)
        return missing(*cid);
    QJsonObject stat {{u"Hash"_s, encodeCid(*cid)},
                      {u"Size"_s, static_cast<qint64>(object->fileSize)},
                      {u"CumulativeSize"_s, static_cast<qint64>(object->cumulativeSize)},
                      {u"Blocks"_s, object->links.size()},
                      {u"Type"_s, object->kind == DemoObject::Directory ? u"directory"_s : u"file"_s}};
    if (object->kind == DemoObject::Symlink)
        stat.insert(u"Mode"_s, u"0777"_s);
    return FakeAnswer::json(jsonLine(stat));
}

FakeAnswer DemoNode::ls(const FakeRequest& request) const
{
    const auto cid = argumentOf(request);
    if (!cid)
        return badPath(request);
    const auto object = store.find(*cid);
    if (!object)
        return missing(*cid);
    QJsonArray links;
    for (const DemoLink& link : object->links) {
        const auto child = store.find(link.cid);
        if (!child)
            return missing(link.cid);
        links.append(QJsonObject {
            {u"Name"_s, QString::fromUtf8(link.name)},
            {u"Hash"_s, QString::fromLatin1(shownCid(link.cid, liftsVersion0(request)))},
            {u"Size"_s, child->kind == DemoObject::Directory ? 0 : static_cast<qint64>(child->fileSize)},
            {u"Type"_s, lsTypeOf(*child)},
            {u"Target"_s, child->kind == DemoObject::Symlink ? QString::fromUtf8(child->content) : QString()},
            {u"Mode"_s, 0},
            {u"ModTime"_s, u"0001-01-01T00:00:00Z"_s}});
    }
    return FakeAnswer::json(jsonLine(
        {{u"Objects"_s, QJsonArray {QJsonObject {{u"Hash"_s, request.value(u"arg"_s)}, {u"Links"_s, links}}}}}));
}

FakeAnswer DemoNode::cat(const FakeRequest& request) const
{
    const auto cid = argumentOf(request);
    if (!cid)
        return badPath(request);
    const auto object = store.find(*cid);
    if (!object)
        return missing(*cid);
    if (object->kind == DemoObject::Directory)
        return FakeAnswer::error("this dag node is a directory");
    const QByteArray content = store.contentOf(*object);
    const quint64 length
        = object->kind == DemoObject::Symlink ? static_cast<quint64>(content.size()) : object->fileSize;
    FakeAnswer answer {
        .headers
        = {{"Content-Type", "text/plain"}, {"X-Stream-Output", "1"}, {"X-Content-Length", QByteArray::number(length)}},
        .chunks = {{.bytes = content}}};
    if (static_cast<quint64>(content.size()) < length)
        answer.streamError = "block was not found locally (offline)";
    return answer;
}
