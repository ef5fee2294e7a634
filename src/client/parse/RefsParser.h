// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

/// The CIDs of a "/refs" stream in reply order, duplicates kept. Lines that name none are passed over.
QStringList parseRefs(const QByteArray& body);

/// The CID of one line of "/refs/local": the text under "Ref", which may be empty, or a bare line that begins as a CID
/// does. Empty for anything else.
QString refFromLine(QByteArrayView line);
