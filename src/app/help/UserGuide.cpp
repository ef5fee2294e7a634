// SPDX-License-Identifier: MIT
#include "UserGuide.h"

#include "ProductInfo.h"

#include <QDir>
#include <QFileInfo>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array places {ProductInfo::installedUserGuide, "../docs/user-guide.html"_L1};

} // namespace

QString userGuidePath(const QString& programFolder)
{
    for (const QLatin1StringView place : places) {
        QString path = QDir::cleanPath(programFolder + u'/' + place);
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}
