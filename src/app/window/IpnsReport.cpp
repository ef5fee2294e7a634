// SPDX-License-Identifier: MIT
#include "IpnsReport.h"

#include "Gateway.h"
#include "PlainText.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

constexpr auto ipnsPrefix = "/ipns/"_L1;
constexpr auto ipfsPrefix = "/ipfs/"_L1;

QString tr(const char* text)
{
    return QCoreApplication::translate("IpnsReport", text);
}

QString orElse(const QString& text, const QString& substitute)
{
    return text.isEmpty() ? substitute : text;
}

/// The address of what follows the prefix of `text`; empty if nothing does.
QUrl urlOf(const QString& text, QLatin1StringView prefix)
{
    const QString rest = text.sliced(prefix.size()).trimmed();
    return rest.isEmpty() ? QUrl() : publicGatewayUrl(prefix + rest);
}

IpnsAction copyName(const QString& caption, const QString& name)
{
    return {.caption = caption, .copied = name, .status = tr("Copied IPNS name: %1").arg(name)};
}

} // namespace

QString bareIpnsName(const QString& name)
{
    const QString trimmed = name.trimmed();
    return trimmed.startsWith(ipnsPrefix) ? trimmed.sliced(ipnsPrefix.size()).trimmed() : trimmed;
}

QStringList ipnsKeyChoices(const QList<IpnsKeyEntry>& keys)
{
    QStringList names {u"self"_s};
    for (const IpnsKeyEntry& key : keys) {
        if (!key.name.isEmpty())
            names.append(key.name);
    }
    names.removeDuplicates();
    return names;
}

IpnsReport reportOf(const IpnsPublishResult& result)
{
    const QString name = orElse(result.name, tr("(unknown)"));
    const QString value = orElse(result.value, tr("(unknown)"));
    const QString key = orElse(result.key, u"self"_s);
    IpnsReport report {
        .title = tr("IPNS publish"),
        .message = tr("IPNS publish succeeded: %1 -> %2").arg(name, value),
        .text = tr("Key: %1\nName: %2\nValue: %3").arg(lineForLabel(key), lineForLabel(name), lineForLabel(value))};
    if (!result.name.trimmed().isEmpty()) {
        report.actions.append(copyName(tr("Copy /ipns/..."), result.name));
        const QString bare = bareIpnsName(result.name);
        report.actions.append(
            {.caption = tr("Open /ipns/..."), .url = bare.isEmpty() ? QUrl() : publicGatewayUrl(ipnsPath(bare))});
    }
    if (result.value.startsWith(ipfsPrefix))
        report.actions.append({.caption = tr("Open published value"), .url = urlOf(result.value, ipfsPrefix)});
    return report;
}

IpnsReport reportOf(const IpnsResolveResult& result)
{
    const QString input = result.input.trimmed();
    const QString path = result.path.trimmed();
    const QString shownInput = orElse(input, tr("(unknown)"));
    const QString shownPath = orElse(path, tr("(empty)"));
    const QString summary = tr("%1 -> %2");
    IpnsReport report {.title = tr("IPNS resolve"),
                       .message = tr("IPNS resolved: %1").arg(summary.arg(shownInput, shownPath)),
                       .text = summary.arg(lineForLabel(shownInput), lineForLabel(shownPath))};
    const bool isName = input.startsWith(ipnsPrefix);
    if (isName)
        report.actions.append(copyName(tr("Copy IPNS name"), input));
    if (!path.isEmpty())
        report.actions.append(
            {.caption = tr("Copy resolved path"), .copied = path, .status = tr("Copied resolved path: %1").arg(path)});
    if (path.startsWith(ipfsPrefix))
        report.actions.append({.caption = tr("Open resolved target"), .url = urlOf(path, ipfsPrefix)});
    if (isName)
        report.actions.append({.caption = tr("Open IPNS name"), .url = urlOf(input, ipnsPrefix)});
    return report;
}
