// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

/// Addresses under which a browser shows what the node or the public gateway serves. The program reads neither.

/// "/ipfs/" and the CID.
QString ipfsPath(const QString& cid);

/// "/ipns/" and the name.
QString ipnsPath(const QString& name);

/// `path` starts with a slash, as "/ipfs/<CID>".
QUrl publicGatewayUrl(const QString& path);

/// The gateway of the node itself, on `host` and port 8080, which is no setting.
QUrl localGatewayUrl(const QString& host, const QString& path);
