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

bool isConfigCall(const QUrl& url)
{
    return url.path().endsWith("/config"_L1);
}

/// Whether calls to this path may carry secrets at all.
bool mayHoldSecrets(const QUrl& url)
{
    return isConfigCall(url) || url.path().endsWith("/pin/remote/service/add"_L1);
}

QString valueOf(const QString& item)
{
    return QUrl::fromPercentEncoding(item.sliced(argument.size()).toLatin1());
}

/// Calls `visit` with each item of the query that is a secret.
template <typename Visit> void forEachSecret(QStringList& items, bool isConfig, Visit visit)
{
    int arguments = 0;
    int shownArguments = 2; // the name of a service and its address
    for (QString& item : items) {
        if (!item.startsWith(argument))
            continue;
        if (isConfig && arguments == 0)
            shownArguments = isSecretKey(valueOf(item)) ? 1 : 2;
        if (++arguments > shownArguments)
            visit(item);
    }
}

} // namespace

QString shownAddress(const QUrl& url)
{
    if (!mayHoldSecrets(url))
        return url.toString(QUrl::FullyEncoded);
    QStringList items = url.query(QUrl::FullyEncoded).split(u'&');
    forEachSecret(items, isConfigCall(url), [](QString& item) { item = argument + u'…'; });
    return url.toString(QUrl::FullyEncoded | QUrl::RemoveQuery) + u'?' + items.join(u'&');
}

QString withoutSecrets(const QString& text, const QUrl& url)
{
    constexpr qsizetype shortestSecret = 4; // a shorter one is in any text
    if (text.isEmpty() || !mayHoldSecrets(url))
        return text;
    QString shown = text;
    QStringList items = url.query(QUrl::FullyEncoded).split(u'&');
    forEachSecret(items, isConfigCall(url), [&shown](const QString& item) {
        const QString value = valueOf(item);
        for (const QString& form : {value, item.sliced(argument.size()), value.toHtmlEscaped()}) {
            if (form.size() >= shortestSecret)
                shown.replace(form, u"…"_s);
        }
    });
    return shown;
}
