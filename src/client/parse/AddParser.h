// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"

#include <QByteArrayView>

#include <optional>

/// One line of an add's answer: an object that was added, or the text of an error.
struct AddLine
{
    AddEntry entry {}; ///< its CID is empty for a line that only reports progress
    QString error {};
};

/// Reads a line of "/add", `{"Name":"…","Hash":"…","Size":"…"}` or `{"Error":"…"}`; nothing if it is no JSON object.
std::optional<AddLine> parseAddLine(QByteArrayView line);
