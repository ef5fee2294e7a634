// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1StringView>

#include <functional>

class MainWindow;
class QWidget;

/// Opens the windows of the node's tools, one after the other, and calls `take` with each and the name of its picture.
void takeToolPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take);
