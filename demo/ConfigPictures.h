// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1StringView>

#include <functional>

class MainWindow;
class QWidget;

/// Opens the window for the node's configuration and closes it again; `take` keeps what a widget looks like under a
/// name.
void takeConfigPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take);
