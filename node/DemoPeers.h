// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// The peer that the demo node is itself.
inline constexpr QLatin1StringView selfPeerId {"12D3KooWAGok5BHR3zQCMcfB5a5ntgco7JCLFwtEFB229Awz5eC3"};

/// The ID of the `number`th made-up peer, the same in every run.
QString demoPeerId(int number);

/// The `number`th made-up address, without a peer: IPv4 and IPv6, TCP and QUIC, some through a relay.
QString demoAddress(int number);

/// An address that ends in "/p2p/<ID>".
struct PeerAddress
{
    QString transport {}; ///< what precedes "/p2p/<ID>"; empty if nothing does
    QString peer {};
};

/// Whether the text has the form of a peer ID, "12D3KooW…" or "Qm…".
bool isPeerId(const QString& text);

/// Nothing if the text does not end in the ID of a peer.
std::optional<PeerAddress> parsePeerAddress(const QString& text);
