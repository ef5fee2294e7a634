// SPDX-License-Identifier: MIT
#pragma once

#include "LsEntry.h"

#include <QByteArray>
#include <QList>

/// The answer of "/ls". `error` is empty for a good one, an empty listing included.
struct Listing
{
    QList<LsEntry> entries {};
    QString error {};
};

/// Reads the "Objects" form, else the "Entries" form; entries stand in the order of the reply.
Listing parseLs(const QByteArray& body);
