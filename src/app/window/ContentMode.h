// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1StringView>

/// What the table shows; the data values of the Content combo and of its settings key.
namespace ContentMode {

inline constexpr QLatin1StringView pinned {"pinned"};
inline constexpr QLatin1StringView unpinned {"unpinned"};

} // namespace ContentMode
