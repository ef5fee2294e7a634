// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1StringView>

#include <functional>

class MainWindow;
class QWidget;

/// Opens the swarm window and closes it again; `take` keeps what a widget looks like under a name.
void takeSwarmPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take);
