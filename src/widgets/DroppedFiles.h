// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QDropEvent;
class QMimeData;

/// The paths of the local files and folders that are being dragged, in their order; other addresses are left out.
QStringList localPathsOf(const QMimeData& data);

/// For dragEnterEvent and dropEvent of a widget: accepts what holds local files, as a copy whatever was proposed, so
/// that the source never deletes them, and ignores the rest. Returns the paths; empty if the event was ignored.
QStringList acceptLocalPaths(QDropEvent* event);
