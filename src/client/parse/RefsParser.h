// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

/// The CIDs of a "/refs" stream in reply order, duplicates kept. Lines that name none are passed over.
QStringList parseRefs(const QByteArray& body);

/// The CID of one line of "/refs/local", in UTF-8: the text under "Ref", which may be empty, or a bare line that begins
/// as a CID does. Empty for anything else.
QByteArray refFromLine(QByteArrayView line);
