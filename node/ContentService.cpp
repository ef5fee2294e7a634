// SPDX-License-Identifier: MIT
#include "ContentService.h"

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

NodeAnswer missing(const Cid& cid)
{
    return NodeAnswer::error(missingText(cid));
}

QByteArray refLine(const QByteArray& ref, const QByteArray& error)
{
    return "{\"Ref\":\"" + ref + "\",\"Err\":\"" + error + "\"}\n";
}

} // namespace

ContentService::ContentService(DemoRepo& newRepo)
    : repo(newRepo)
{
    if (repo.options().looseBlocks > 0)
        refsLocal();
}

QList<NodeCommand> ContentService::commands()
{
    const auto about = [this](const QByteArray& path, const QString& argument, Reader reader) {
        return NodeCommand {.path = path, .argument = argument, .run = [this, reader](const NodeRequest& request) {
                                const QString text = request.value(u"arg"_s);
                                const auto cid = cidOfPath(text);
                                return cid ? (this->*reader)(*cid, request) : invalidPath(text);
                            }};
    };
    NodeCommand refs = about("/refs", u"ipfs-path"_s, &ContentService::refs);
    refs.options = {{u"recursive"_s, NodeOption::Bool}, {u"unique"_s, NodeOption::Bool}, {u"format"_s}};
    NodeCommand dagStat = about("/dag/stat", u"root"_s, &ContentService::dagStat);
    dagStat.options = {{u"progress"_s, NodeOption::Bool}};
    return {refs,
            dagStat,
            about("/files/stat", u"path"_s, &ContentService::filesStat),
            about("/ls", u"ipfs-path"_s, &ContentService::ls),
            about("/cat", u"ipfs-path"_s, &ContentService::cat),
            {.path = "/refs/local", .run = [this](const NodeRequest&) { return refsLocal(); }}};
}

/// Depth first in link order, a shared subtree once for each way to it. False once a block is missing.
bool ContentService::appendRefs(const DemoObject& object, bool recursive, bool lifted, QByteArray& body) const
{
    for (const DemoLink& link : object.links) {
        body += refLine(shownCid(link.cid, lifted), {});
        const auto child = repo.store().find(link.cid);
        if (!child) {
            body += refLine({}, missingText(link.cid));
            return false;
        }
        if (recursive && !appendRefs(*child, recursive, lifted, body))
            return false;
    }
    return true;
}

NodeAnswer ContentService::refs(const Cid& cid, const NodeRequest& request) const
{
    QByteArray body;
    if (const auto root = repo.store().find(cid))
        appendRefs(*root, isSet(request, u"recursive"_s), liftsVersion0(request), body);
    else
        body = refLine({}, missingText(cid));
    return streamOf(body, repo.options());
}

/// Every block as a raw CID of version 1, whatever it was stored as.
NodeAnswer ContentService::refsLocal()
{
    if (!localRefs || localRefsRevision != repo.revision()) {
        QByteArray body;
        for (const QByteArray& multihash : repo.store().multihashes())
            body += refLine(shownCid({.version = 1, .codec = Cid::rawCodec, .multihash = multihash}, true), {});
        localRefs = streamOf(body, repo.options());
        localRefsRevision = repo.revision();
    }
    return *localRefs;
}

NodeAnswer ContentService::dagStat(const Cid& cid, const NodeRequest& request) const
{
    QSet<QByteArray> seen {cid.multihash};
    QList<Cid> unvisited {cid};
    qint64 size = 0;
    while (!unvisited.isEmpty()) {
        const auto object = repo.store().find(unvisited.takeLast());
        if (!object)
            return NodeAnswer::error("error traversing DAG: ipld: could not find " + encodeCid(cid).toLatin1());
        size += static_cast<qint64>(object->blockSize());
        for (const DemoLink& link : object->links) {
            if (!seen.contains(link.cid.multihash)) {
                seen.insert(link.cid.multihash);
                unvisited.append(link.cid);
            }
        }
    }
    if (size == 0)
        return NodeAnswer::brokenOff({}, "json: unsupported value: NaN");
    const auto blocks = static_cast<qint64>(seen.size());
    const QString shown = QString::fromLatin1(shownCid(cid, liftsVersion0(request)));
    return NodeAnswer::json(jsonLine(
        {{u"UniqueBlocks"_s, blocks},
         {u"TotalSize"_s, size},
         {u"Ratio"_s, 1},
         {u"DagStats"_s, QJsonArray {QJsonObject {{u"Cid"_s, shown}, {u"Size"_s, size}, {u"NumBlocks"_s, blocks}}}}}));
}

NodeAnswer ContentService::filesStat(const Cid& cid, const NodeRequest& /*request*/) const
{
    const auto object = repo.store().find(cid);
    if (!object)
        return missing(cid);
    QJsonObject stat {{u"Hash"_s, encodeCid(cid)},
                      {u"Size"_s, static_cast<qint64>(object->fileSize)},
                      {u"CumulativeSize"_s, static_cast<qint64>(object->cumulativeSize)},
                      {u"Blocks"_s, object->links.size()},
                      {u"Type"_s, object->kind == DemoObject::Directory ? u"directory"_s : u"file"_s}};
    if (object->kind == DemoObject::Symlink)
        stat.insert(u"Mode"_s, u"0777"_s);
    return NodeAnswer::json(jsonLine(stat));
}

NodeAnswer ContentService::ls(const Cid& cid, const NodeRequest& request) const
{
    const auto object = repo.store().find(cid);
    if (!object)
        return missing(cid);
    QJsonArray links;
    for (const DemoLink& link : object->links) {
        const auto child = repo.store().find(link.cid);
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
    return NodeAnswer::json(jsonLine(
        {{u"Objects"_s, QJsonArray {QJsonObject {{u"Hash"_s, request.value(u"arg"_s)}, {u"Links"_s, links}}}}}));
}

NodeAnswer ContentService::cat(const Cid& cid, const NodeRequest& /*request*/) const
{
    const auto object = repo.store().find(cid);
    if (!object)
        return missing(cid);
    if (object->kind == DemoObject::Directory)
        return NodeAnswer::error("this dag node is a directory");
    const QByteArray content = repo.store().contentOf(*object);
    const quint64 length
        = object->kind == DemoObject::Symlink ? static_cast<quint64>(content.size()) : object->fileSize;
    NodeAnswer answer {
        .headers
        = {{"Content-Type", "text/plain"}, {"X-Stream-Output", "1"}, {"X-Content-Length", QByteArray::number(length)}},
        .chunks = {{.bytes = content}}};
    if (static_cast<quint64>(content.size()) < length)
        answer.trailers = {{"X-Stream-Error", "block was not found locally (offline)"}};
    return answer;
}
