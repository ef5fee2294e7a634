// SPDX-License-Identifier: MIT
#include "MetadataParser.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QVariant>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

struct KindWord
{
    QLatin1StringView type;
    QLatin1StringView kind;
};

constexpr std::array kindWords {KindWord {"directory"_L1, "Directory"_L1},
                                KindWord {"Directory"_L1, "Directory"_L1},
                                KindWord {"file"_L1, "File"_L1},
                                KindWord {"File"_L1, "File"_L1},
                                KindWord {"symbolic-link"_L1, "Symlink"_L1},
                                KindWord {"SymbolicLink"_L1, "Symlink"_L1},
                                KindWord {"symlink"_L1, "Symlink"_L1},
                                KindWord {"Symlink"_L1, "Symlink"_L1}};

bool isNumber(const QString& name)
{
    return !name.isEmpty() && std::ranges::all_of(name, [](QChar c) { return c.isDigit(); });
}

} // namespace

qint64 parseDagSize(const QByteArray& body)
{
    const QJsonObject object = QJsonDocument::fromJson(body).object();
    for (const auto key : {"TotalSize"_L1, "CumulativeSize"_L1, "Size"_L1}) {
        if (const QJsonValue size = object[key]; !size.isUndefined())
            return size.toVariant().toLongLong();
    }
    return -1;
}

QString parseFileKind(const QByteArray& body)
{
    const QString type = QJsonDocument::fromJson(body)["Type"_L1].toString();
    const auto* const row = std::ranges::find(kindWords, type, &KindWord::type);
    return row == kindWords.end() ? QString() : QString(row->kind);
}

QString kindOfListing(const QList<LsEntry>& entries)
{
    if (entries.isEmpty())
        return otherKind();
    return std::ranges::all_of(entries, isNumber, &LsEntry::name) ? u"File"_s : u"Directory"_s;
}

QString otherKind()
{
    return u"Other"_s;
}
