// SPDX-License-Identifier: MIT
#include "Gateway.h"

#include "ProductInfo.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int localGatewayPort = 8080;

} // namespace

QString ipfsPath(const QString& cid)
{
    return "/ipfs/"_L1 + cid;
}

QString ipnsPath(const QString& name)
{
    return "/ipns/"_L1 + name;
}

QUrl publicGatewayUrl(const QString& path)
{
    QUrl url {QString(ProductInfo::gatewayUrl)};
    url.setPath(url.path() + path, QUrl::DecodedMode);
    return url;
}

QUrl localGatewayUrl(const QString& host, const QString& path)
{
    QUrl url;
    url.setScheme(u"http"_s);
    url.setHost(host);
    url.setPort(localGatewayPort);
    url.setPath(path, QUrl::DecodedMode);
    return url;
}
