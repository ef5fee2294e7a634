// SPDX-License-Identifier: MIT
#include "IpnsReport.h"

#include "Gateway.h"
#include "PlainText.h"

using namespace Qt::StringLiterals;

namespace {

constexpr auto ipnsPrefix = "/ipns/"_L1;
constexpr auto ipfsPrefix = "/ipfs/"_L1;

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
    return {.caption = caption, .copied = name, .status = IpnsReport::tr("Copied IPNS name: %1").arg(name)};
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
    const QString name = orElse(result.name, IpnsReport::tr("(unknown)"));
    const QString value = orElse(result.value, IpnsReport::tr("(unknown)"));
    const QString key = orElse(result.key, u"self"_s);
    IpnsReport report {.title = IpnsReport::tr("IPNS publish"),
                       .message = IpnsReport::tr("IPNS publish succeeded: %1 -> %2").arg(name, value),
                       .text = IpnsReport::tr("Key: %1\nName: %2\nValue: %3")
                                   .arg(lineForLabel(key), lineForLabel(name), lineForLabel(value))};
    if (!result.name.trimmed().isEmpty()) {
        report.actions.append(copyName(IpnsReport::tr("Copy /ipns/..."), result.name));
        const QString bare = bareIpnsName(result.name);
        report.actions.append({.caption = IpnsReport::tr("Open /ipns/..."),
                               .url = bare.isEmpty() ? QUrl() : publicGatewayUrl(ipnsPath(bare))});
    }
    if (result.value.startsWith(ipfsPrefix))
        report.actions.append(
            {.caption = IpnsReport::tr("Open published value"), .url = urlOf(result.value, ipfsPrefix)});
    return report;
}

IpnsReport reportOf(const IpnsResolveResult& result)
{
    const QString input = result.input.trimmed();
    const QString path = result.path.trimmed();
    const QString shownInput = orElse(input, IpnsReport::tr("(unknown)"));
    const QString shownPath = orElse(path, IpnsReport::tr("(empty)"));
    const QString summary = IpnsReport::tr("%1 -> %2");
    IpnsReport report {.title = IpnsReport::tr("IPNS resolve"),
                       .message = IpnsReport::tr("IPNS resolved: %1").arg(summary.arg(shownInput, shownPath)),
                       .text = summary.arg(lineForLabel(shownInput), lineForLabel(shownPath))};
    const bool isName = input.startsWith(ipnsPrefix);
    if (isName)
        report.actions.append(copyName(IpnsReport::tr("Copy IPNS name"), input));
    if (!path.isEmpty()) {
        report.actions.append({.caption = IpnsReport::tr("Copy resolved path"),
                               .copied = path,
                               .status = IpnsReport::tr("Copied resolved path: %1").arg(path)});
    }
    if (path.startsWith(ipfsPrefix))
        report.actions.append({.caption = IpnsReport::tr("Open resolved target"), .url = urlOf(path, ipfsPrefix)});
    if (isName)
        report.actions.append({.caption = IpnsReport::tr("Open IPNS name"), .url = urlOf(input, ipnsPrefix)});
    return report;
}
