// SPDX-License-Identifier: MIT
#include "PictureFolder.h"

#include "PicturePalette.h"
#include "PictureSteps.h"

#include <QDir>
#include <QFileInfo>
#include <QWidget>
#include <QWindow>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto repaintTime = 50ms;            // after it sizes and scroll bars have settled
constexpr qint64 largestPicture = 150 * 1024; // bytes
constexpr int strongestCompression = 0;       // as a quality

} // namespace

PictureFolder::PictureFolder(const QString& newPath)
    : path(newPath)
{
    need(QDir().mkpath(path), u"the folder can't be made"_s);
}

void PictureFolder::take(QWidget* widget, QLatin1StringView name) const
{
    awaitThat([widget] { return widget->windowHandle() && widget->windowHandle()->isExposed(); },
              u"a window did not come up"_s);
    wait(repaintTime);
    keep(widget->grab(), name);
}

void PictureFolder::keep(const QPixmap& picture, QLatin1StringView name) const
{
    const QString file = u"%1/%2.png"_s.arg(path, name);
    const QImage image = withPalette(picture.toImage().convertToFormat(QImage::Format_RGB32));
    need(image.save(file, "PNG", strongestCompression), u"can't write "_s + file);
    need(QFileInfo(file).size() <= largestPicture, file + u" is too large"_s);
}

std::function<void(QWidget*, QLatin1StringView)> PictureFolder::taker() const
{
    return [folder = *this](QWidget* widget, QLatin1StringView name) { folder.take(widget, name); };
}
