// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

class MainWindow;
class QWidget;

// The windows of the node's facilities. Each is opened, handed to `take` once its answers have come, and closed again.

using TakePicture = std::function<void(QWidget*)>;
void withRemoteServices(MainWindow& window, const TakePicture& take);
void withNetworkStats(MainWindow& window, const TakePicture& take);
