// SPDX-License-Identifier: MIT
#include "AddParser.h"

#include "NdJson.h"

using namespace Qt::StringLiterals;

std::optional<AddLine> parseAddLine(QByteArrayView line)
{
    const std::optional<QJsonObject> object = parseJsonLine(line);
    if (!object)
        return std::nullopt;
    return AddLine {.entry = {.name = object->value("Name"_L1).toString(),
                              .cid = object->value("Hash"_L1).toString(),
                              .size = object->value("Size"_L1).toString().toLongLong()},
                    .error = object->value("Error"_L1).toString().trimmed()};
}
