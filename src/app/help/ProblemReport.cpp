// SPDX-License-Identifier: MIT
#include "ProblemReport.h"

#include "CurlVersion.h"
#include "ProductInfo.h"
#include "RedactedText.h"

#include <QApplication>
#include <QFont>
#include <QLocale>
#include <QScreen>
#include <QStyle>
#include <QSysInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype reportedLines = 50;
constexpr qsizetype longestLine = 1000; ///< letters; an error may have hundreds of thousands

/// One line. A long one ends with a whole word: half a CID would not be known for one.
QString reportedLine(const QString& line, bool withAddresses)
{
    QString text = line.left(longestLine);
    if (line.size() > longestLine)
        text = text.left(std::max<qsizetype>(text.lastIndexOf(u' '), 0)) + u" …"_s;
    text.replace(u'\n', u' ');
    return withAddresses ? text : redactedText(text);
}

} // namespace

// Not translated: it is for those who work on the program.
QString ProblemReport::text(bool withAddresses) const
{
    QStringList lines = facts;
    lines.append(u"Node: "_s + (agent.isEmpty() ? u"has not answered"_s : reportedLine(agent, withAddresses)));
    const QStringList last = statusLog.last(std::min(reportedLines, statusLog.size()));
    lines.append(u"\nStatus log, the last %1 of %2 line(s):"_s.arg(QString::number(last.size()),
                                                                   QString::number(statusLog.size())));
    lines.reserve(lines.size() + last.size());
    for (const QString& line : last)
        lines.append(reportedLine(line, withAddresses));
    return lines.join(u'\n') + u'\n';
}

QStringList systemFacts()
{
    const QFont font = QApplication::font();
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize size = screen ? screen->size() : QSize();
    return {u"Norvo %1"_s.arg(ProductInfo::version),
            u"Qt: %1 (built with %2)"_s.arg(QLatin1StringView(qVersion()), QLatin1StringView(QT_VERSION_STR)),
            u"libcurl: "_s + curlVersion(),
            u"System: %1, %2 %3, %4 (built for %5)"_s.arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(),
                                                          QSysInfo::kernelVersion(), QSysInfo::currentCpuArchitecture(),
                                                          QSysInfo::buildCpuArchitecture()),
            u"Window system: %1, style %2, font %3 %4 pt, locale %5"_s.arg(
                QGuiApplication::platformName(), QApplication::style()->name(), font.family(),
                QString::number(font.pointSizeF()), QLocale().name()),
            u"Screen: %1 x %2, scale %3, %4 dpi"_s.arg(QString::number(size.width()), QString::number(size.height()),
                                                       QString::number(screen ? screen->devicePixelRatio() : 0),
                                                       QString::number(screen ? screen->logicalDotsPerInch() : 0))};
}
