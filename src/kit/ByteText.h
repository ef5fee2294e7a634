// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// A number of bytes for people: "512 B", "1.5 KB", "3.0 MB", "2.2 GB". The same in every locale; empty below 0.
QString byteText(long long bytes);
