// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1StringView>

#include <functional>

class MainWindow;
class QWidget;

/// Publishes the first row's CID; `take` keeps what a widget looks like under a name.
void takeIpnsPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take);
