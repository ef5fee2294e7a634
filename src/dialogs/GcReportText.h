// SPDX-License-Identifier: MIT
#pragma once

#include "LineView.h"

#include <QJsonObject>

/// What a node's answer of "/repo/stat", read at `time`, holds: a line for each fact.
QStringList repoStatLines(const QJsonObject& stat, const QString& time);

/// What a garbage collection that ended at `time` came to. The lists are shared, not copied: they may have millions of
/// entries.
QList<LinePart> gcReportParts(const QStringList& collectedCids, const QStringList& errors, const QString& time);
