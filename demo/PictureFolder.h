// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

class QPixmap;
class QWidget;

/// Where the pictures are saved. What can't be taken or saved ends the program.
class PictureFolder
{
public:
    explicit PictureFolder(const QString& newPath);

    /// Waits until the widget is on the screen, and saves what it shows as `<name>.png`.
    void take(QWidget* widget, QLatin1StringView name) const;
    void keep(const QPixmap& picture, QLatin1StringView name) const;
    std::function<void(QWidget*, QLatin1StringView)> taker() const;

private:
    QString path;
};
