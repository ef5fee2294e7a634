// SPDX-License-Identifier: MIT
#include "AddSession.h"

#include "DemoWire.h"
#include "PartHead.h"

#include <algorithm>

namespace {

constexpr quint64 progressStep = 256 * 1024; // bytes between two lines of progress
constexpr qsizetype mostTarget = 64 * 1024;  // bytes of a symlink's target
constexpr qsizetype mostNames = 2048;        // in a path; folders are built by recursion, and no system has deeper ones

QByteArray shownName(const QByteArray& name)
{
    return "{\"Name\":" + jsonText(QString::fromUtf8(name));
}

} // namespace

AddSession::AddSession(AddChoices newChoices, const QByteArray& boundary, DemoRepo& newRepo)
    : choices(std::move(newChoices))
    , repo(newRepo)
    , reader(boundary)
{
    if (choices.wraps)
        tree.emplace();
}

NodeStep AddSession::take(const QByteArray& piece, bool isEnd)
{
    if (!isReading)
        return {}; // the rest of the body is of no use
    reader.append(piece);
    if (isEnd)
        reader.finish();
    auto event = MultipartReader::PartHead;
    while (isReading && failure.isEmpty() && (event = reader.next()) != MultipartReader::NeedsMore) {
        if (event == MultipartReader::PartHead)
            onHead();
        else if (event == MultipartReader::Piece)
            onPiece(reader.piece());
        else if (event == MultipartReader::PartEnd)
            onPartEnd();
        else if (event == MultipartReader::End)
            finish();
        else
            fail(reader.error());
    }
    NodeStep step {.bytes = std::exchange(lines, {})};
    hasAnswered = hasAnswered || !step.bytes.isEmpty();
    if (!failure.isEmpty()) {
        isReading = false;
        step.last = failureAnswer();
    }
    return step;
}

/// After the first line only the trailer is left to say it.
NodeAnswer AddSession::failureAnswer() const
{
    QByteArray words = failure;
    std::ranges::replace_if(
        words, [](char c) { return c == '\r' || c == '\n'; }, ' ');
    return hasAnswered ? NodeAnswer::brokenOff({}, words) : errorOf(QString::fromUtf8(words));
}

void AddSession::onHead()
{
    const auto name = partPath(reader.head());
    if (!name) { // such a part lies in no folder, not even in the top one, so it ends them all
        finish();
        return;
    }
    readKind();
    if (name->size() > mostNames)
        fail("path too deep");
    if (!failure.isEmpty() || !enter(*name))
        return;
    path = *name;
    hasAdded = true;
    if (kind == Directory && !path.isEmpty()) {
        openDirectory(path.constLast(), false);
    } else if (kind == Directory && !choices.wraps) { // a nameless folder takes in all that follows
        choices.wraps = true;
        tree.emplace();
    } else if (kind == File) {
        file.emplace(choices.layout, [this](const DemoObject& object) { keep(object); });
        keptBytes = 0;
        reportedBytes = 0;
    }
    if (kind != Directory)
        lastFile = path.isEmpty() ? QByteArray() : path.constLast();
    target.clear();
}

void AddSession::readKind()
{
    kind = File;
    const QByteArray header = headerIn(reader.head(), "Content-Type");
    if (header.isEmpty())
        return;
    const auto type = parseMimeValue(header);
    if (!type)
        fail("mime: invalid media parameter");
    else if (type->type == "application/x-directory" || type->type == "multipart/form-data")
        kind = Directory;
    else if (type->type == "application/symlink")
        kind = Symlink;
}

/// Leaves and opens folders up to the part's own; false if the part is passed over.
bool AddSession::enter(const Path& newPath)
{
    const qsizetype parents = std::max<qsizetype>(0, newPath.size() - 1);
    const auto shared = std::ranges::mismatch(directories, newPath.first(parents)).in1 - directories.begin();
    if (shared < directories.size()) {
        leave(shared);
    } else if (shared < parents && !lastFile.isEmpty() && newPath[shared] == lastFile) {
        kind = PassedOver; // a folder of that name cannot be, since it is a file
        return false;
    }
    while (failure.isEmpty() && directories.size() < parents)
        openDirectory(newPath[directories.size()], true);
    return failure.isEmpty();
}

void AddSession::leave(qsizetype depth)
{
    lastFile.clear();
    if (depth == 0 && !choices.wraps && tree)
        closeEntry();
    directories.resize(depth);
}

void AddSession::openDirectory(const QByteArray& name, bool isImplied)
{
    lastFile.clear();
    directories.append(name);
    if (!tree)
        tree.emplace();
    else if (isImplied || choices.keepsEmptyFolders)
        fail(tree->makeDirectory(inEntry(directories)));
}

/// Without the name that belongs to the entry itself.
AddSession::Path AddSession::inEntry(const Path& whole) const
{
    return choices.wraps ? whole : whole.sliced(1);
}

void AddSession::onPiece(QByteArrayView bytes)
{
    if (kind == Symlink) {
        target.append(bytes);
        if (target.size() > mostTarget)
            fail("file name too long");
    } else if (kind == File) {
        file->append(bytes);
        if (choices.reportsProgress && file->size() - reportedBytes >= progressStep)
            reportProgress();
    }
}

void AddSession::onPartEnd()
{
    if (kind == Symlink) {
        const DemoObject link = unixFsSymlink(target, choices.layout.version);
        keep(link);
        place({.cid = link.cid, .size = link.cumulativeSize});
    } else if (kind == File) {
        if (choices.reportsProgress)
            reportProgress();
        place(file->finish());
    }
}

/// A nameless file is named by its CID.
void AddSession::place(const DemoLink& link)
{
    const Path named = path.isEmpty() ? Path {shownCid(link.cid, false)} : path;
    const bool isEntry = !choices.wraps && named.size() == 1;
    if (!isEntry)
        fail(tree->put(inEntry(named), link));
    if (!failure.isEmpty())
        return;
    appendLine(named.join('/'), link);
    if (isEntry)
        pin(link.cid);
}

void AddSession::closeEntry()
{
    const Path above = choices.wraps ? Path() : directories.first(1);
    const DemoLink root = tree->build(choices.layout.version, [&](const Path& folder, const DemoObject& directory) {
        keep(directory);
        appendLine((above + folder).join('/'), {.cid = directory.cid, .size = directory.cumulativeSize});
    });
    tree.reset();
    pin(root.cid);
}

void AddSession::finish()
{
    isReading = false;
    if (tree)
        closeEntry();
    if (!hasAdded && !choices.wraps)
        fail("expected a file argument");
}

void AddSession::keep(const DemoObject& object)
{
    if (choices.onlyHashes)
        return;
    if (object.isLeaf())
        keptBytes += object.content.size();
    repo.add(object, keptBytes <= repo.options().keptOfFile);
}

void AddSession::pin(const Cid& root)
{
    if (choices.pins && !choices.onlyHashes)
        repo.pin({.cid = root, .name = choices.pinName});
}

void AddSession::reportProgress()
{
    reportedBytes = file->size();
    lines.append(shownName(path.join('/')));
    if (reportedBytes > 0)
        lines.append(",\"Bytes\":").append(QByteArray::number(reportedBytes));
    lines.append("}\n");
}

void AddSession::appendLine(const QByteArray& name, const DemoLink& link)
{
    lines.append(shownName(name)).append(",\"Hash\":\"").append(shownCid(link.cid, choices.liftsVersion0));
    lines.append("\",\"Size\":\"").append(QByteArray::number(link.size)).append("\"}\n");
}
