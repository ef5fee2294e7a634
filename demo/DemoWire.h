#pragma once

#include "CidText.h"
#include "FakeNode.h"

#include <QJsonObject>

/// As a node writes a string in JSON: "<", ">" and "&" escaped.
QByteArray jsonText(const QString& text);

/// One compact document and its line feed.
QByteArray jsonLine(const QJsonObject& object);

/// Whether a request's CID base lifts version 0 to 1, for show.
bool liftsVersion0(const FakeRequest& request);

QByteArray shownCid(Cid cid, bool lifted);

/// What a node says of a text that is no CID.
FakeAnswer invalidPath(const QString& text);
