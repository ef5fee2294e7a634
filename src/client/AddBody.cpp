// SPDX-License-Identifier: MIT
#include "AddBody.h"

#include "OpenFiles.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto lineEnd = "\r\n";
constexpr qint64 lineEndSize = 2;

/// A node query-unescapes the name of a part and reads it as a quoted string: these characters, and no others, would
/// arrive as something else, or end the reading.
QByteArray encoded(const QString& text, QByteArrayView special)
{
    QByteArray bytes = text.toUtf8();
    if (std::ranges::none_of(bytes, [special](char byte) { return special.contains(byte); }))
        return bytes;
    QByteArray result;
    for (const char byte : std::as_const(bytes)) {
        if (special.contains(byte))
            result.append('%').append(QByteArray(1, byte).toHex().toUpper());
        else
            result.append(byte);
    }
    return result;
}

} // namespace

AddBody::AddBody(const QByteArray& newBoundary, QObject* parent)
    : QIODevice(parent)
    , boundary(newBoundary)
    , total(end().size())
{
}

AddBody::~AddBody() = default;

/// As QHttpMultiPart makes its own.
QByteArray AddBody::freshBoundary()
{
    std::array<quint32, 4> random {};
    QRandomGenerator::global()->fillRange(random.data(), random.size());
    QByteArray bytes(sizeof random, Qt::Uninitialized);
    std::memcpy(bytes.data(), random.data(), sizeof random);
    return "boundary_.oOo._" + bytes.toBase64();
}

QByteArray AddBody::contentType() const
{
    return "multipart/form-data; boundary=\"" + boundary + '"';
}

QByteArray AddBody::headOf(const Part& part) const
{
    QByteArray head = "--" + boundary + lineEnd;
    head += R"(Content-Disposition: form-data; name="file"; filename=")" + encoded(part.name, "%+\"\\\r\n") + '"'
        + lineEnd;
    if (!part.path.isEmpty())
        head += "Abspath: " + encoded(part.path, "\r\n") + lineEnd;
    head += part.path.isEmpty() ? "Content-Type: application/x-directory" : "Content-Type: application/octet-stream";
    return head + lineEnd + lineEnd;
}

QByteArray AddBody::end() const
{
    return "--" + boundary + "--" + lineEnd;
}

void AddBody::appendDirectory(const QString& name)
{
    append({.name = name});
}

bool AddBody::appendFile(const QString& path, const QString& name)
{
    auto file = std::make_unique<QFile>(path);
    if (!file->open(ReadOnly | Unbuffered) || file->isSequential())
        return false;
    Part part {.name = name, .path = path, .size = file->size()};
    if (!halfOfOpenFilesUsed(*file))
        part.file = std::move(file);
    append(std::move(part));
    return true;
}

void AddBody::append(Part part)
{
    total += headOf(part).size() + part.size + lineEndSize;
    parts.push_back(std::move(part));
}

bool AddBody::seek(qint64 pos)
{
    return pos == given && QIODevice::seek(pos);
}

qint64 AddBody::readData(char* data, qint64 maxSize)
{
    qint64 done = 0;
    while (done < maxSize && !failed) {
        if (textGiven < text.size()) {
            const qsizetype length = std::min<qsizetype>(text.size() - textGiven, maxSize - done);
            std::memcpy(data + done, text.constData() + textGiven, static_cast<size_t>(length));
            textGiven += length;
            done += length;
        } else if (fileLeft > 0) {
            done += readFile(data + done, maxSize - done);
        } else if (!advance()) {
            break;
        }
    }
    given += done;
    return failed && done == 0 ? -1 : done;
}

qint64 AddBody::readFile(char* data, qint64 maxSize)
{
    const Part& part = parts[next - 1];
    const qint64 length = part.file->read(data, std::min(fileLeft, maxSize));
    if (length <= 0) {
        static_cast<void>(length == 0 ? failAsChanged(part) : failAsUnreadable(part));
        return 0;
    }
    fileLeft -= length;
    return length;
}

/// Makes what comes next the current text and file. False at the end, and on a failure.
bool AddBody::advance()
{
    if (next > parts.size() || (next > 0 && !endFile(parts[next - 1])))
        return false;
    text = next > 0 ? lineEnd : QByteArray();
    textGiven = 0;
    text += next < parts.size() ? headOf(parts[next]) : end();
    ++next;
    return next > parts.size() || beginFile(parts[next - 1]);
}

bool AddBody::beginFile(Part& part)
{
    fileLeft = part.size;
    if (part.path.isEmpty())
        return true;
    if (!QFile::exists(part.path))
        return failAsChanged(part);
    if (!part.file) {
        part.file = std::make_unique<QFile>(part.path);
        if (!part.file->open(ReadOnly | Unbuffered))
            return failAsUnreadable(part);
    }
    return part.file->size() == part.size || failAsChanged(part);
}

bool AddBody::endFile(Part& part)
{
    char more = 0;
    if (part.file && part.file->read(&more, 1) > 0)
        return failAsChanged(part);
    part.file.reset();
    return true;
}

bool AddBody::failAsChanged(const Part& part)
{
    return fail(tr("%1 changed while it was being sent.").arg(part.path));
}

bool AddBody::failAsUnreadable(const Part& part)
{
    return fail(tr("%1 can't be read: %2").arg(part.path, part.file->errorString()));
}

bool AddBody::fail(const QString& reason)
{
    failed = true;
    setErrorString(reason);
    return false;
}

qint64 AddBody::writeData(const char* /*data*/, qint64 /*maxSize*/)
{
    return -1;
}
