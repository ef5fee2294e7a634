// SPDX-License-Identifier: MIT
#pragma once

#include "LsEntry.h"

#include <QByteArray>
#include <QList>

/// The size in bytes that "/dag/stat" gives: -1 if the body is no object or has none, 0 if what it gives is no
/// number.
qint64 parseDagSize(const QByteArray& body);

/// "Directory", "File" or "Symlink" from "/files/stat"; empty if the body names none of them.
QString parseFileKind(const QByteArray& body);

/// The kind that a listing points to: "File" if all names are numbers, "Other" without entries, else "Directory".
QString kindOfListing(const QList<LsEntry>& entries);

/// What nothing more exact is known of.
QString otherKind();
