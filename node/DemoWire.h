// SPDX-License-Identifier: MIT
#pragma once

#include "CidText.h"
#include "DemoRepo.h"
#include "NodeMessages.h"

#include <QJsonObject>

/// As a node writes a string in JSON: "<", ">" and "&" escaped.
QByteArray jsonText(const QString& text);

/// Any value, compact, with these characters escaped. Numbers of 64 bits keep their digits.
QByteArray jsonValueText(const QJsonValue& value);

/// Texts as a list in JSON, `null` if there are none.
QByteArray jsonList(const QStringList& texts);

/// One compact document and its line feed.
QByteArray jsonLine(const QJsonObject& object);

/// Whether an option that is off unless asked for is on.
bool isSet(const NodeRequest& request, const QString& option);

/// Whether a request's CID base lifts version 0 to 1, for show.
bool liftsVersion0(const NodeRequest& request);

QByteArray shownCid(Cid cid, bool lifted);

/// The lines of `body` one by one, or in chunks of the options' size. An `error` breaks the list off at its end.
NodeAnswer streamOf(const QByteArray& body, const DemoOptions& options, const QByteArray& error = {});

/// The CID of an argument as "/ipfs/<cid>" or the bare CID.
std::optional<Cid> cidOfPath(QString path);

/// A failure whose words may hold what a client has sent.
NodeAnswer errorOf(const QString& message);

/// What a node says of a text that is no CID.
NodeAnswer invalidPath(const QString& text);

/// What a node that is offline says of a block that it does not have.
QByteArray missingText(const Cid& cid);
