// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>
#include <QtGlobal>

#include <functional>
#include <vector>

/// Sorts `rows` by a text of each, in the order of their UTF-16 codes and stable in either direction. Compares a few
/// characters in one place, where comparing whole texts all over memory takes several times as long. `textOf` returns
/// a view that lives as long as the call.
void sortByText(std::vector<int>& rows, const std::function<QStringView(int row)>& textOf, Qt::SortOrder order);
