#include "DemoNode.h"

#include "DemoWire.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

void DemoNode::addPinRoutes()
{
    addRoute("/pin/ls", [this](const FakeRequest& request) { return pinLs(request); });
    addRoute("/pin/rm", [this](const FakeRequest& request) { return pinRm(request); });
    addRoute("/cid/format", [](const FakeRequest& request) { return cidFormat(request); });
}

void DemoNode::unpinExactly(const QSet<QByteArray>& removed)
{
    pins.removeIf([&removed](const DemoPin& pin) { return removed.contains(cidBytes(pin.cid)); });
    pinned -= removed;
    if (!removed.isEmpty())
        listings.clear();
}

/// One argument after the other; the first that fails ends the call, and those before it are gone without a word.
FakeAnswer DemoNode::pinRm(const FakeRequest& request)
{
    if (pinned.isEmpty()) {
        for (const DemoPin& pin : std::as_const(pins))
            pinned.insert(cidBytes(pin.cid));
    }
    QSet<QByteArray> removed;
    QJsonArray told;
    std::optional<FakeAnswer> failure;
    for (const QString& text : request.values(u"arg"_s)) {
        const auto cid = decodeCid(text);
        const QByteArray key = cid ? cidBytes(*cid) : QByteArray();
        if (!cid)
            failure = invalidPath(text);
        else if (!pinned.contains(key) || removed.contains(key))
            failure = FakeAnswer::error("not pinned or pinned indirectly");
        if (failure)
            break;
        removed.insert(key);
        told.append(encodeCid(*cid));
    }
    unpinExactly(removed);
    return failure ? *failure : FakeAnswer::json(jsonLine({{u"Pins"_s, told}}));
}

/// Looks at the text alone.
FakeAnswer DemoNode::cidFormat(const FakeRequest& request)
{
    const QString version = request.value(u"v"_s);
    if (version != "0"_L1 && version != "1"_L1)
        return FakeAnswer::error("cid version must be 0 or 1");
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
    return FakeAnswer::json(body);
}
