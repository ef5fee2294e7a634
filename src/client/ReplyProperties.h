#pragma once

#include <QByteArray>
#include <QNetworkReply>
#include <QVariant>

/// Names of the dynamic properties in which a reply carries the context of its request, so that the client keeps no
/// table of open requests.
namespace ReplyProperty {

inline constexpr const char* streamTag = "streamTag"; ///< QString, the source named to streamEntriesLoaded
inline constexpr const char* streamCount = "streamCount"; ///< int, lines counted so far
inline constexpr const char* streamBuffer = "streamBuffer"; ///< QByteArray, what stands behind the last line feed
inline constexpr const char* rawData = "rawData"; ///< QByteArray, the whole body so far
inline constexpr const char* pinsCompositeBatch = "pinsCompositeBatch"; ///< bool, one of the two of a composite load
inline constexpr const char* forUnpinned = "forUnpinned"; ///< bool, the pin list half of an unpinned fetch
inline constexpr const char* pinsEpoch = "pinsEpoch"; ///< quint64, the load that the reply belongs to
inline constexpr const char* cancelledByClient = "cancelledByClient"; ///< bool, aborted by cancelActiveLoading

} // namespace ReplyProperty

/// Takes a byte array out of a property, which is left empty: appending to what is taken then copies nothing, where
/// bytes that the property still shared would be copied whole for each chunk.
inline QByteArray takeBytes(QNetworkReply* reply, const char* name)
{
    QByteArray bytes = reply->property(name).toByteArray();
    reply->setProperty(name, QByteArray());
    return bytes;
}
