// SPDX-License-Identifier: MIT
#include "DemoPeers.h"

#include "CidText.h"

#include <QCryptographicHash>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

constexpr int addressForms = 5;
constexpr int firstRelay = 1'000'000'000; // far from the peers that are connected

/// In 198.18.0.0/15, which is never routed.
QString ipv4Of(int number)
{
    return u"198.%1.%2.%3"_s.arg(QString::number(18 + (number >> 16) % 2), QString::number((number >> 8) % 256),
                                 QString::number(number % 256));
}

QString ipv6Of(int number)
{
    return u"2001:db8:%1::%2"_s.arg(QString::number(number % 65521 + 1, 16), QString::number(number % 97 + 1, 16));
}

} // namespace

QString demoPeerId(int number)
{
    // The public key's multihash: identity, and the length and type of an Ed25519 key.
    const QByteArray key = QCryptographicHash::hash("peer " + QByteArray::number(number), QCryptographicHash::Sha256);
    return encodeCid({.version = 0, .multihash = QByteArray::fromHex("002408011220") + key});
}

QString demoAddress(int number)
{
    const int port = number % 3 == 0 ? 4001 : 20000 + number % 40000;
    switch (number % addressForms) {
    case 0:
        return u"/ip4/%1/tcp/%2"_s.arg(ipv4Of(number), QString::number(port));
    case 1:
        return u"/ip4/%1/udp/%2/quic-v1"_s.arg(ipv4Of(number), QString::number(port));
    case 2:
        return u"/ip6/%1/tcp/%2"_s.arg(ipv6Of(number), QString::number(port));
    case 3:
        return u"/ip6/%1/udp/%2/quic-v1"_s.arg(ipv6Of(number), QString::number(port));
    default:
        return u"/ip4/%1/udp/4001/quic-v1/p2p/%2/p2p-circuit"_s.arg(ipv4Of(number),
                                                                    demoPeerId(firstRelay + number % 7));
    }
}

bool isPeerId(const QString& text)
{
    static const QRegularExpression form(u"^(12D3KooW|Qm)[1-9A-HJ-NP-Za-km-z]{44}$"_s);
    return form.match(text).hasMatch();
}

std::optional<PeerAddress> parsePeerAddress(const QString& text)
{
    constexpr auto mark = "/p2p/"_L1;
    const qsizetype at = text.lastIndexOf(mark);
    if (at < 0 || !isPeerId(text.sliced(at + mark.size())))
        return std::nullopt;
    return PeerAddress {.transport = text.first(at), .peer = text.sliced(at + mark.size())};
}
