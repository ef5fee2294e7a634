// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A decoded CID: its version, the codec of the block, and the multihash with its two length prefixes.
struct Cid
{
    static constexpr quint64 rawCodec = 0x55;
    static constexpr quint64 dagPbCodec = 0x70;

    int version = 1;
    quint64 codec = rawCodec;
    QByteArray multihash {};
    friend bool operator==(const Cid&, const Cid&) = default;
};

/// Reads a CIDv0 ("Qm…") or a CIDv1 in lower-case base32 ("b…") or base58btc ("z…"); nothing for any other text.
std::optional<Cid> decodeCid(QStringView text);

/// Version 0 in base58btc, version 1 in lower-case base32.
QString encodeCid(const Cid& cid);

/// The binary form: the bare multihash for version 0, else version, codec and multihash.
QByteArray cidBytes(const Cid& cid);

/// The version 1 CID of a block by its SHA-256.
Cid cidOfBlock(const QByteArray& block, quint64 codec);

/// A CID for a title: whole up to 50 characters, else its first 47 and "…".
QString titleCid(const QString& cid);
