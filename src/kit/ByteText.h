// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// How the units of a number of bytes are written, all of them powers of 1024.
enum class ByteUnits {
    Short, ///< KB, MB, GB
    Binary ///< KiB, MiB, GiB
};

/// A number of bytes for people: "512 B", "1.5 KB", "3.0 MB", "2.2 GB". The same in every locale; empty below 0.
QString byteText(long long bytes, ByteUnits units = ByteUnits::Short);
