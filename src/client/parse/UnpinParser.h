// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

/// The text under "Formatted" of an answer of "/cid/format"; empty if there is none.
QString parseFormattedCid(const QByteArray& body);

/// The texts under "Pins" of an answer of "/pin/rm", none if they are missing; nothing if the body is no JSON object.
std::optional<QStringList> parseRemovedPins(const QByteArray& body);

/// Whether a failed "/pin/rm" stopped at a CID that has no pin of its own under that very text.
bool saysNotPinned(const QByteArray& body);
