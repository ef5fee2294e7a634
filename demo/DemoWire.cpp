#include "DemoWire.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

QByteArray jsonText(const QString& text)
{
    QByteArray out = QJsonDocument(QJsonArray {text}).toJson(QJsonDocument::Compact);
    out = out.sliced(1, out.size() - 2);
    return out.replace('<', "\\u003c").replace('>', "\\u003e").replace('&', "\\u0026");
}

QByteArray jsonLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

bool liftsVersion0(const FakeRequest& request)
{
    const QString base = request.value(u"cid-base"_s);
    return !base.isEmpty() && base != "base58btc"_L1 && request.value(u"upgrade-cidv0-in-output"_s) != "false"_L1;
}

QByteArray shownCid(Cid cid, bool lifted)
{
    cid.version = lifted ? 1 : cid.version;
    return encodeCid(cid).toLatin1();
}

FakeAnswer invalidPath(const QString& text)
{
    return FakeAnswer::error("invalid path \\\"" + text.toUtf8() + "\\\": path does not have enough components");
}
