// SPDX-License-Identifier: MIT
#pragma once

#include "NodeMessages.h"

#include <QHash>

/// A header as "form-data; name=\"a\"".
struct MimeValue
{
    QByteArray type {}; ///< in lower case
    QHash<QByteArray, QByteArray> parameters {};
};

/// Read as a node reads it; nothing if it can't be.
std::optional<MimeValue> parseMimeValue(QByteArrayView text);

/// The folders and the name that a part's head gives to it; empty for a part without a name, nothing if the head can't
/// be read.
std::optional<QList<QByteArray>> partPath(const HeaderList& head);
