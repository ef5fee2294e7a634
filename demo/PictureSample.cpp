// SPDX-License-Identifier: MIT
#include "PictureSample.h"

#include "PictureSteps.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <utime.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int photoCount = 24;
constexpr qint64 firstPhotoSize = 2'900'000; // bytes
constexpr qint64 photoGrowth = 71'000;
constexpr time_t changed = 1'750'000'000; // seconds since 1970

const auto photos = u"Pictures/harbour 2025"_s;
const auto report = u"Documents/annual report.pdf"_s;
const auto minutes = u"Documents/minutes.odt"_s;

/// Makes a file with nothing but zeros, and its folder.
void makeFile(const QString& path, qint64 size)
{
    QFile file(path);
    need(QFileInfo(path).dir().mkpath(u"."_s) && file.open(QIODevice::WriteOnly) && file.resize(size),
         u"can't make "_s + path);
}

/// Everything below the folder has been changed at the same time in each run.
void setTimes(const QString& path)
{
    const utimbuf times {.actime = changed, .modtime = changed};
    const QFileInfoList entries = QDir(path).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.isDir())
            setTimes(entry.filePath());
        need(utime(QFile::encodeName(entry.filePath()).constData(), &times) == 0, u"can't set a time"_s);
    }
}

} // namespace

void makeSample(const QTemporaryDir& home)
{
    need(home.isValid(), u"there is no folder for the sample"_s);
    qputenv("HOME", home.path().toLocal8Bit());
    for (int i = 0; i < photoCount; ++i)
        makeFile(home.filePath(u"%1/IMG_%2.jpg"_s.arg(photos, QString::number(4101 + i))),
                 firstPhotoSize + i * photoGrowth);
    makeFile(home.filePath(report), 1'482'000);
    makeFile(home.filePath(minutes), 38'400);
    makeFile(home.filePath(u"Documents/garden plan.svg"_s), 12'900);
    makeFile(home.filePath(u"Music/rehearsal.ogg"_s), 5'210'000);
    makeFile(home.filePath(u"to do.txt"_s), 812);
    setTimes(home.path());
}

QStringList sampleSelection(const QTemporaryDir& home)
{
    return {home.filePath(photos), home.filePath(report), home.filePath(minutes)};
}
