// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QNetworkReply>
#include <QVariant>

/// Names of the dynamic properties in which a reply carries the context of its request, so that the client keeps no
/// table of open requests.
namespace ReplyProperty {

inline constexpr const char* streamTag = "streamTag";       ///< QString, the source named to streamEntriesLoaded
inline constexpr const char* streamCount = "streamCount";   ///< int, lines counted so far
inline constexpr const char* streamBuffer = "streamBuffer"; ///< QByteArray, what came after the last line feed
inline constexpr const char* rawData = "rawData";           ///< QByteArray, the whole body so far
inline constexpr const char* pinsCompositeBatch = "pinsCompositeBatch"; ///< bool, one of the two of a composite load
inline constexpr const char* forUnpinned = "forUnpinned";             ///< bool, the pin list half of an unpinned fetch
inline constexpr const char* pinsEpoch = "pinsEpoch";                 ///< quint64, the load that the reply belongs to
inline constexpr const char* cancelledByClient = "cancelledByClient"; ///< bool, aborted by cancelActiveLoading
inline constexpr const char* base = "base"; ///< QString, the address of the node, where only the one in use may answer
inline constexpr const char* cid = "cid";   ///< QString, the CID asked for
inline constexpr const char* rootCid = "rootCid";             ///< QString, the CID whose refs were asked for
inline constexpr const char* turnPosted = "turnPosted";       ///< bool, a turn that takes more of the body is posted
inline constexpr const char* outsideQueues = "outsideQueues"; ///< bool, a fact asked for beside the metadata queues
inline constexpr const char* owner = "owner";           ///< QObject*, with whose end the call is aborted; may be null
inline constexpr const char* cids = "cids";             ///< QStringList, the CIDs whose unpinning was asked for
inline constexpr const char* unpinIndex = "unpinIndex"; ///< int, a CID's place in its batch
inline constexpr const char* unpinBatch = "unpinBatch"; ///< std::shared_ptr<UnpinBatch>
inline constexpr const char* addUpload = "addUpload";   ///< std::shared_ptr<AddUpload>
inline constexpr const char* remoteCid = "remoteCid";   ///< QString, the CID that is pinned remotely
inline constexpr const char* remoteService = "remoteService";             ///< QString, the service that it is pinned at
inline constexpr const char* remoteServiceAction = "remoteServiceAction"; ///< QString, "list"
inline constexpr const char* swarmTarget = "swarmTarget";                 ///< QString, the peer that is dialled or left
inline constexpr const char* bootstrapTarget = "bootstrapTarget";         ///< QString, the peer that is added
inline constexpr const char* bootstrapTargets = "bootstrapTargets";       ///< QStringList, the peers that are removed
inline constexpr const char* ipnsPublishKey = "ipnsPublishKey";           ///< QString, the key that is published under
inline constexpr const char* ipnsResolveArg = "ipnsResolveArg"; ///< QString, the name asked for, with its prefix
inline constexpr const char* remoteServiceName
    = "remoteServiceName"; ///< QString, the service asked about; may be empty

} // namespace ReplyProperty

/// Takes a byte array out of a property, so that appending to it does not copy what the property still shares: a body
/// would be copied whole for each of its chunks. A few bytes stay, since copying them costs less than the taking.
inline QByteArray takeBytes(QNetworkReply* reply, const char* name)
{
    constexpr qsizetype fewBytes = 4096;
    QByteArray bytes = reply->property(name).toByteArray();
    if (bytes.size() > fewBytes)
        reply->setProperty(name, QByteArray());
    return bytes;
}
