// SPDX-License-Identifier: MIT
#include "DemoWire.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

QByteArray jsonText(const QString& text)
{
    return jsonValueText(text);
}

QByteArray jsonValueText(const QJsonValue& value)
{
    const QByteArray list = QJsonDocument(QJsonArray {value}).toJson(QJsonDocument::Compact);
    QByteArray json = list.sliced(1, list.size() - 2);
    // Outside of its strings JSON has none of these characters.
    return json.replace('<', "\\u003c").replace('>', "\\u003e").replace('&', "\\u0026");
}

QByteArray jsonList(const QStringList& texts)
{
    return texts.isEmpty() ? "null" : jsonValueText(QJsonArray::fromStringList(texts));
}

QByteArray jsonLine(const QJsonObject& object)
{
    return jsonValueText(object) + '\n';
}

bool isSet(const NodeRequest& request, const QString& option)
{
    const QStringList values = request.values(option);
    return !values.isEmpty() && values.constFirst() != "false"_L1 && values.constFirst() != "0"_L1;
}

bool liftsVersion0(const NodeRequest& request)
{
    const QString base = request.value(u"cid-base"_s);
    return !base.isEmpty() && base != "base58btc"_L1 && request.value(u"upgrade-cidv0-in-output"_s) != "false"_L1;
}

QByteArray shownCid(Cid cid, bool lifted)
{
    cid.version = lifted ? 1 : cid.version;
    return encodeCid(cid).toLatin1();
}

NodeAnswer streamOf(const QByteArray& body, const DemoOptions& options, const QByteArray& error)
{
    NodeAnswer answer {.headers = {{"Content-Type", "application/json"}, {"X-Chunked-Output", "1"}}};
    answer.source = [body, size = options.chunkBytes, pause = options.chunkPause,
                     start = qsizetype {0}]() mutable -> std::optional<NodeChunk> {
        if (start == body.size())
            return std::nullopt;
        const qsizetype rest = body.size() - start;
        const qsizetype taken = size > 0 ? std::min<qsizetype>(size, rest) : body.indexOf('\n', start) + 1 - start;
        start += taken;
        return NodeChunk {.bytes = body.sliced(start - taken, taken), .pause = pause};
    };
    if (!error.isEmpty())
        answer.trailers = {{"X-Stream-Error", error}};
    return answer;
}

std::optional<Cid> cidOfPath(QString path)
{
    if (path.startsWith("/ipfs/"_L1))
        path.remove(0, 6);
    return decodeCid(path);
}

NodeAnswer errorOf(const QString& message)
{
    const QByteArray quoted = jsonText(message);
    return NodeAnswer::error(quoted.sliced(1, quoted.size() - 2));
}

NodeAnswer invalidPath(const QString& text)
{
    return errorOf(u"invalid path \"%1\": path does not have enough components"_s.arg(text));
}

QByteArray missingText(const Cid& cid)
{
    return "block was not found locally (offline): ipld: could not find " + encodeCid(cid).toLatin1();
}
