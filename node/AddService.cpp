// SPDX-License-Identifier: MIT
#include "AddService.h"

#include "AddSession.h"
#include "DemoWire.h"
#include "PartHead.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 mostUnsent = 64 * 1024; // bytes of lines that a client has not read

AddChoices choicesOf(const NodeRequest& head)
{
    const auto isOn = [&head](const QString& option, bool unlessGiven) {
        return head.values(option).isEmpty() ? unlessGiven : isSet(head, option);
    };
    const int version = head.value(u"cid-version"_s).toInt();
    return {.layout = {.version = version, .rawLeaves = isOn(u"raw-leaves"_s, version == 1)},
            .wraps = isOn(u"wrap-with-directory"_s, false),
            .pins = isOn(u"pin"_s, true),
            .onlyHashes = isOn(u"only-hash"_s, false),
            .reportsProgress = isOn(u"progress"_s, false),
            .keepsEmptyFolders = isOn(u"empty-dirs"_s, true),
            .liftsVersion0 = liftsVersion0(head),
            .pinName = head.value(u"pin-name"_s)};
}

} // namespace

QList<NodeCommand> AddService::commands()
{
    NodeCommand add {.path = "/add", .options = {{u"cid-version"_s, NodeOption::Int}, {u"pin-name"_s}}};
    for (const QString& name :
         {u"wrap-with-directory"_s, u"pin"_s, u"only-hash"_s, u"progress"_s, u"raw-leaves"_s, u"empty-dirs"_s,
          u"recursive"_s, u"quiet"_s, u"quieter"_s, u"silent"_s, u"hidden"_s, u"stream-channels"_s})
        add.options.append({name, NodeOption::Bool});
    add.upload = [this](const NodeRequest& head) { return this->add(head); };
    return {add};
}

NodeUpload AddService::add(const NodeRequest& head)
{
    const auto type = parseMimeValue(head.header("Content-Type"));
    if (!type || type->type != "multipart/form-data")
        return {.head = badRequest(u"file argument 'path' is required"_s)};
    const QByteArray boundary = type->parameters.value("boundary");
    if (boundary.isEmpty())
        return {.head = badRequest(u"no multipart boundary param in Content-Type"_s)};
    const qlonglong version = head.value(u"cid-version"_s).toLongLong();
    if (version != 0 && version != 1)
        return {.head = NodeAnswer::error("unknown CID version: " + QByteArray::number(version))};
    NodeUpload upload {.head = NodeAnswer::json({}), .mostUnsent = mostUnsent};
    upload.head.headers.emplaceBack("X-Chunked-Output", "1");
    upload.onPiece = [session = std::make_shared<AddSession>(choicesOf(head), boundary, repo)](
                         const QByteArray& piece, bool isEnd) { return session->take(piece, isEnd); };
    return upload;
}
