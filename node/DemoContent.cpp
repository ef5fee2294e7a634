// SPDX-License-Identifier: MIT
#include "DemoContent.h"

#include "UnixFsBuilder.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype photoChunk = 4096;
constexpr int treeFolderSize = 100;
constexpr int firstTreeNote = 1'000'000'000; // far from the notes that are pins themselves

/// Bytes that differ from place to place and are the same in every run.
QByteArray filler(int seed, qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 2654435761U * static_cast<quint32>(seed + 1);
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

QByteArray numbered(const char* pattern, int number)
{
    return QString::asprintf(pattern, number).toUtf8();
}

Cid photoAlbum(DemoStore& store, int seed, int photos)
{
    QList<DemoLink> entries;
    for (int i = 1; i <= photos; ++i) {
        const Cid photo = store.addChunkedFile(filler(seed + i, 9000 + i * 731), photoChunk);
        entries.append(store.link(numbered("IMG_%04d.jpg", seed + i), photo));
    }
    return store.addDirectory(entries);
}

Cid website(DemoStore& store)
{
    const Cid style = store.addDirectory(
        {store.link("main.css", store.addFile("body { font: 16px/1.5 sans-serif; margin: 2rem auto; }\n"))});
    return store.addDirectory(
        {store.link("css", style),
         store.link("index.html", store.addFile("<!doctype html>\n<title>Field notes</title>\n<h1>Field notes</h1>\n")),
         store.link("latest", store.addSymlink("index.html")),
         store.link("robots.txt", store.addFile("User-agent: *\nAllow: /\n"))});
}

QList<DemoPin> namedPins(DemoStore& store)
{
    const Cid hello = store.addFile("hello world\n");
    const Cid docs = store.addDirectory({store.link("hello.txt", hello)});
    const Cid notes = store.addDirectory({store.link("docs", docs)});
    const Cid summer = photoAlbum(store, 100, 12);
    const Cid winter = photoAlbum(store, 400, 5);
    const Cid archive = store.addDirectory({store.link("2024-summer", summer), store.link("2024-winter", winter)});
    const Cid oldSite = store.addVersion0Directory({store.link("hello.txt", hello)});
    return {{.cid = notes, .name = u"notes"_s},
            {.cid = website(store), .name = u"field-notes website"_s},
            {.cid = summer, .name = u"photos summer 2024"_s},
            {.cid = archive, .name = u"photo archive"_s},
            {.cid = oldSite, .name = u"docs (first version)"_s},
            {.cid = store.addChunkedFile(filler(7, 300000), 65536), .name = u"talk-recording.ogg"_s},
            {.cid = store.addDirectory({}), .name = u"inbox"_s},
            {.cid = store.addFile({}), .name = u"placeholder"_s},
            {.cid = hello, .name = u"hello.txt"_s, .recursive = false},
            {.cid = store.addFile("{\"name\":\"field-notes\",\"version\":\"2.1.0\"}\n"), .recursive = false}};
}

QByteArray noteText(int number)
{
    return "note " + QByteArray::number(number) + "\n";
}

DemoPin notePin(DemoStore& store, int number)
{
    return {.cid = store.addNote(number),
            .name = number % 3 == 0 ? u"note-"_s + QString::number(number) : QString(),
            .recursive = number % 10 != 0};
}

} // namespace

Cid DemoStore::add(const DemoObject& object)
{
    byMultihash.insert(object.cid.multihash, object);
    return object.cid;
}

Cid DemoStore::addFile(const QByteArray& bytes)
{
    return add(rawFile(bytes));
}

Cid DemoStore::addNote(int number)
{
    Cid cid = cidOfBlock(noteText(number), Cid::rawCodec);
    notes.insert(cid.multihash, number);
    return cid;
}

void DemoStore::forget(const Cid& cid)
{
    byMultihash.remove(cid.multihash);
    notes.remove(cid.multihash);
}

Cid DemoStore::addChunkedFile(const QByteArray& bytes, qsizetype chunkSize)
{
    UnixFsFileBuilder builder({.chunkSize = chunkSize}, [this](const DemoObject& object) { add(object); });
    builder.append(bytes);
    return builder.finish().cid;
}

Cid DemoStore::addSymlink(const QByteArray& target)
{
    return add(unixFsSymlink(target));
}

Cid DemoStore::addDirectory(const QList<DemoLink>& entries)
{
    return add(unixFsDirectory(entries));
}

Cid DemoStore::addVersion0Directory(const QList<DemoLink>& entries)
{
    return add(unixFsDirectory(entries, 0));
}

DemoLink DemoStore::link(const QByteArray& name, const Cid& cid) const
{
    return {.name = name, .cid = cid, .size = find(cid)->cumulativeSize};
}

std::optional<DemoObject> DemoStore::find(const Cid& cid) const
{
    if (const auto object = byMultihash.constFind(cid.multihash); object != byMultihash.constEnd())
        return *object;
    const auto note = notes.constFind(cid.multihash);
    return note == notes.constEnd() ? std::nullopt : std::optional(rawFile(noteText(*note)));
}

quint64 DemoStore::totalSize() const
{
    quint64 size = 0;
    for (const DemoObject& object : byMultihash)
        size += object.blockSize();
    for (const int number : notes)
        size += static_cast<quint64>(noteText(number).size());
    return size;
}

std::optional<Cid> DemoStore::walk(QList<Cid> roots, const std::function<void(const Cid&)>& visit) const
{
    QSet<QByteArray> walked;
    while (!roots.isEmpty()) {
        const Cid parent = roots.takeFirst();
        if (walked.contains(parent.multihash))
            continue;
        walked.insert(parent.multihash);
        const auto object = find(parent);
        if (!object)
            return parent;
        for (const DemoLink& link : object->links) {
            visit(link.cid);
            roots.append(link.cid);
        }
    }
    return std::nullopt;
}

QByteArray DemoStore::contentOf(const DemoObject& file) const
{
    QByteArray bytes;
    appendContent(file, bytes);
    return bytes;
}

/// False once a block or its bytes are missing.
bool DemoStore::appendContent(const DemoObject& file, QByteArray& bytes) const
{
    bytes += file.content;
    return !file.isHollow() && std::ranges::all_of(file.links, [&](const DemoLink& link) {
        const auto part = find(link.cid);
        return part && appendContent(*part, bytes);
    });
}

QList<DemoPin> demoPins(DemoStore& store, int count)
{
    QList<DemoPin> pins = namedPins(store);
    // What a node keeps that no pin accounts for: something looked at once, and a folder that was unpinned.
    store.addDirectory(
        {store.link("draft.md", store.addFile("# Draft\n")), store.link("old.md", store.addFile("# Old\n"))});
    store.addChunkedFile(filler(900, 20000), photoChunk);
    pins.reserve(count);
    for (int number = 1; pins.size() < count; ++number)
        pins.append(notePin(store, number));
    pins.resize(std::min<qsizetype>(pins.size(), count));
    return pins;
}

DemoPin bigTreePin(DemoStore& store, int entries)
{
    QList<DemoLink> folders;
    for (int first = 0; first < entries; first += treeFolderSize) {
        QList<DemoLink> files;
        for (int i = first; i < std::min(first + treeFolderSize, entries); ++i)
            files.append(store.link(numbered("note-%06d.txt", i), store.addNote(firstTreeNote + i)));
        folders.append(store.link(numbered("folder-%05d", first / treeFolderSize), store.addDirectory(files)));
    }
    return {.cid = store.addDirectory(folders), .name = u"big tree"_s};
}
