// SPDX-License-Identifier: MIT
#include "ShownAddress.h"

#include <QStringList>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

constexpr auto argument = "arg="_L1;

/// Whether a value of this key is a credential or an object that may hold one. A key is taken for secret below
/// "Pinning.RemoteServices" unless it is known not to be, since the name of a service may hold dots.
bool isSecretKey(const QString& key)
{
    const QStringList parts = key.toLower().split(u'.');
    const QString& section = parts.at(0);
    const QString second = parts.value(1);
    if (parts.size() == 1)
        return section == "api"_L1 || section == "pinning"_L1 || section == "identity"_L1;
    if (section == "api"_L1)
        return second.startsWith("authorizations"_L1);
    if (section == "identity"_L1)
        return second == "privkey"_L1;
    if (section != "pinning"_L1 || second != "remoteservices"_L1)
        return false;
    const bool isPolicy = parts.size() > 4 && parts.at(3) == "policies"_L1 && parts.constLast() != "key"_L1;
    const bool isEndpoint = parts.size() == 5 && parts.at(3) == "api"_L1 && parts.at(4) == "endpoint"_L1;
    return !isPolicy && !isEndpoint;
}

} // namespace

QString shownAddress(const QUrl& url)
{
    const QString path = url.path();
    const bool isConfig = path.endsWith("/config"_L1);
    if (!isConfig && !path.endsWith("/pin/remote/service/add"_L1))
        return url.toString(QUrl::FullyEncoded);
    QStringList items = url.query(QUrl::FullyEncoded).split(u'&');
    int arguments = 0;
    int shownArguments = 2; // the name of a service and its address
    for (QString& item : items) {
        if (!item.startsWith(argument))
            continue;
        const QString value = QUrl::fromPercentEncoding(item.sliced(argument.size()).toLatin1());
        if (isConfig && arguments == 0)
            shownArguments = isSecretKey(value) ? 1 : 2;
        if (++arguments > shownArguments)
            item = argument + u'…';
    }
    return url.toString(QUrl::FullyEncoded | QUrl::RemoveQuery) + u'?' + items.join(u'&');
}
