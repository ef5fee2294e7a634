// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1StringView>

#include <functional>

class MainWindow;
class QWidget;

/// Opens the Tools menu and what the Help menu leads to; `take` keeps what a widget looks like under a name.
void takeHelpPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take);
