// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"
#include "KnownCids.h"
#include "LsEntry.h"
#include "MetadataQueue.h"
#include "NodeClient.h"
#include "PinLoad.h"
#include "RemoteServiceEntry.h"

#include <QList>
#include <QSet>
#include <QUrlQuery>

#include <memory>

class QNetworkReply;
struct Listing;
struct ParsedPins;
struct ServiceList;
class AddUpload;
class UnpinBatch;

/// The program's only door to the Kubo node: what lies on it is here, what it is and does itself in NodeClient.
class IpfsClient : public NodeClient
{
    Q_OBJECT

    using ReplyHandler = void (IpfsClient::*)(QNetworkReply*);

    // Loads: IpfsClient.cpp.
public:
    explicit IpfsClient(QObject* parent = nullptr);

    /// Makes every list in flight stale and aborts the replies that loads have registered. Nothing is emitted for them.
    void cancelActiveLoading();

private:
    bool isSilenced(const QNetworkReply* reply) const override;
    void registerLoadReply(QNetworkReply* reply);
    static void endWith(QObject* owner, QNetworkReply* reply);

    // Pin lists: IpfsClient_pins.cpp. A failure is errorOccurred, then connectionStatusChanged(false).
public:
    /// "/pin/ls" with `type` as the node names it; an empty one means "all", and "recursive+direct" asks for both side
    /// by side and joins them by CID. Ends with pinsReceived, or with a failure, in a composite load possibly with
    /// both. Makes every older list stale.
    void fetchPins(const QString& type, const QString& cidBase, bool upgradeCidV0);

signals:
    void pinsReceived(QList<PinEntry> pins);
    /// A part of the current list could not be had. Comes before the other signals of that failure, with its text.
    void listFailed(QString message);
    /// How many entries of a list have come so far; `source` is the path without its first slash.
    void streamEntriesLoaded(QString source, int count);

private slots:
    void onPinsReplyReadyRead(QNetworkReply* reply);
    void onPinsReplyFinished(QNetworkReply* reply);

private:
    struct PinsReply;
    QNetworkReply* startPinsRequest(const QString& type, const QString& cidBase, bool upgradeCidV0,
                                    bool compositeBatch);
    bool isCurrent(const QNetworkReply* reply) const;
    void startPinsParse(QNetworkReply* reply);
    void deliverPins(ParsedPins pins, const PinsReply& context);
    void onPinsReplyFailed(const QNetworkReply* reply);
    void deliverList(QList<PinEntry> entries);
    void deliverCompositeHalf(QList<PinEntry> entries);

    // Unpinned blocks: IpfsClient_unpinned.cpp. A failure of the refs is errorOccurred, then an empty pinsReceived.
public:
    /// The local blocks that no pin accounts for, by "/pin/ls" and "/refs/local" side by side. Ends with pinsReceived,
    /// or with a failure, of the pin list as that of fetchPins. Makes every older list stale.
    void fetchUnpinned();

private slots:
    void onRefsLocalReplyReadyRead(QNetworkReply* reply);
    void onRefsLocalReplyFinished(QNetworkReply* reply);

private:
    int takeLocalRef(QByteArrayView line);
    void takeLocalRefsLater(QNetworkReply* reply);
    void countLocalRefs(QNetworkReply* reply, int lines);
    void onRefsLocalReplyFailed(const QNetworkReply* reply);
    void finishUnpinnedFetch();

    // Facts about one CID: IpfsClient_metadata.cpp. A failure is errorOccurred, then the call's own signal.
public:
    /// Each fact has a queue of its own with a limit of open replies: 8 for refs, 24 for the other two. A CID that is
    /// queued or open already is not asked for again; its one answer reaches all who asked. AtOnce bypasses the queue,
    /// for calls a user waits for; cancelActiveLoading does not abort them.
    enum Urgency { InTurn, AtOnce };
    /// "/refs", recursive. Ends with refsReceived, empty on a failure. AtOnce it ends in silence with its `owner`.
    void fetchRefs(const QString& cid, Urgency urgency = InTurn, QObject* owner = nullptr);
    /// "/dag/stat". Ends with dagStatReceived, -1 on a failure.
    void fetchObjectStat(const QString& cid);
    /// "/files/stat", else "/ls". Ends with kindReceived and never with an error; AtOnce in silence with its `owner`.
    void fetchKind(const QString& cid, Urgency urgency = InTurn, QObject* owner = nullptr);

signals:
    /// The CIDs below `rootCid` in the node's order, duplicates kept.
    void refsReceived(QString rootCid, QStringList cids);
    /// In bytes; -1 if it could not be had.
    void dagStatReceived(QString cid, qint64 cumulativeSize);
    /// "Directory", "File", "Symlink" or "Other".
    void kindReceived(QString cid, QString kind);

private slots:
    void onRefsReplyFinished(QNetworkReply* reply);
    void onObjectStatReplyFinished(QNetworkReply* reply);
    void onFilesStatReplyFinished(QNetworkReply* reply);
    void onKindLsReplyFinished(QNetworkReply* reply);

private:
    struct MetadataRequest;
    static const MetadataRequest& refsRequest();
    static const MetadataRequest& dagStatRequest();
    static const MetadataRequest& kindRequest();
    void sendQueued(const MetadataRequest& request, const QString& cid);
    void sendMetadataRequest(const MetadataRequest& request, const QString& cid, const QString& path,
                             const QUrlQuery& query, ReplyHandler handler);
    void askAtOnce(const MetadataRequest& request, const QString& cid, QObject* owner);
    static void markOutsideQueues(QNetworkReply* reply, const MetadataRequest& request, const QString& cid,
                                  QObject* owner);
    void askListingForKind(const QString& cid, const QNetworkReply* statReply);
    void pumpRefsQueue();
    void pumpDagStatQueue();
    void pumpKindQueue();
    void finishRefsRequest(const QString& cid);
    void finishDagStatRequest(const QString& cid);
    void finishKindRequest(const QString& cid);
    QString codecKindFromCid(const QString& cid) const;

    // Unpinning: IpfsClient_unpin.cpp. A failure is errorOccurred, possibly after unpinned or pinsMayHaveChanged.
public:
    /// Removes pins by one "/pin/rm", or as many as a node's limit of a request asks for, with `normalizeCids` after
    /// each CID was rewritten to version 0 by "/cid/format", as far as it can be. Ends with unpinned or a failure.
    /// Where the node has no pin under a rewritten CID, what is left of the batch is gone through one CID at a time,
    /// and it can end with both, in this order. Unpins that overlap do not meet, and no cancel touches one.
    void unpin(const QList<QString>& cids, bool normalizeCids);

signals:
    /// The pins that are gone, as the node names them, else as they were asked for.
    void unpinned(QStringList cids);
    /// Before each call of an unpin that is gone through one CID at a time: how many of its `total` CIDs are done.
    void unpinProgress(int done, int total);
    /// A "/pin/rm" of more than one CID ended in an HTTP error, with no unpinned: pins before the one that failed may
    /// be gone. Comes before errorOccurred.
    void pinsMayHaveChanged();

private slots:
    void onCidFormatReplyFinished(QNetworkReply* reply);
    void onUnpinReplyFinished(QNetworkReply* reply);
    void onPinsLeftReplyFinished(QNetworkReply* reply);
    void onSingleUnpinReplyFinished(QNetworkReply* reply);

private:
    QNetworkReply* callForBatch(const std::shared_ptr<UnpinBatch>& batch, const QString& path, const QUrlQuery& query,
                                ReplyHandler handler);
    void formatNextCid(const std::shared_ptr<UnpinBatch>& batch);
    void removePins(const std::shared_ptr<UnpinBatch>& batch);
    void listPinsLeft(const std::shared_ptr<UnpinBatch>& batch);
    void removeNextPin(const std::shared_ptr<UnpinBatch>& batch);
    void reportRemoved(const UnpinBatch& batch);
    void reportFailedUnpin(const QNetworkReply* reply);
    void finishUnpin(const UnpinBatch& batch);
    void shareRemovals(const QStringList& removed);

    // Contents: IpfsClient_content.cpp. A failure of "/ls" is errorOccurred, then an empty lsReceived; of "/cat" it is
    // catFailed alone.
public:
    /// "/ls". Ends with lsReceived.
    void fetchLs(const QString& cid, QObject* owner = nullptr);
    /// "/cat". Ends with catReceived, or with catFailed, also if fewer bytes came than the node announced. Aborted in
    /// silence when `owner` is destroyed, as fetchLs.
    void fetchCat(const QString& cid, QObject* owner = nullptr);

signals:
    void lsReceived(QString cid, QList<LsEntry> entries);
    void catReceived(QString cid, QByteArray data);
    void catFailed(QString cid, QString errorMessage);

private slots:
    void onLsReplyFinished(QNetworkReply* reply);
    void onCatReplyFinished(QNetworkReply* reply);

private:
    static QUrlQuery listingQuery(const QString& cid);
    void deliverListing(const QString& cid, const Listing& listing);

    // Adding: IpfsClient_add.cpp. A failure is addFailed alone.
public:
    /// "/add", the files and folders as one body that is read while it is sent. Ends with addCompleted or addFailed;
    /// the latter comes before this returns if there is nothing to send. No cancel touches it, and uploads that overlap
    /// do not meet.
    void addLocalPaths(const QList<LocalPathSelection>& selections, const AddOptions& options);

signals:
    /// Of the request's body, in bytes.
    void addBytesSent(qint64 sent, qint64 total);
    /// After each object: how many have come, folders among them, and how many files the body holds.
    void addProgress(QString currentName, int processedEntries, int totalFiles);
    /// Before addCompleted, if anything was left out: what the node reported is less than what was to be added.
    /// `filesSkipped` could not be read, `foldersWithinThemselves` were not walked again.
    void addShortfall(int filesSent, int filesReported, int filesSkipped, int foldersWithinThemselves,
                      bool rootLineMissing);
    /// The root is empty if there is none that holds all that was added.
    void addCompleted(QString rootCid, QList<AddEntry> entries);
    void addFailed(QString message);

private slots:
    void onAddReplyReadyRead(QNetworkReply* reply);
    void onAddReplyFinished(QNetworkReply* reply);

private:
    void announceEntries(QNetworkReply* reply, AddUpload& upload);
    void finishAdd(QNetworkReply* reply, AddUpload& upload);
    void completeAdd(const AddUpload& upload);

    // Remote pinning: IpfsClient_remote.cpp. A failure is the call's own signal alone.
public:
    /// "/pin/remote/service/ls", with `stat` asking each service for its state. Ends with remoteServicesReceived or
    /// remoteServicesFailed; with a name it is a test of that service and ends with remoteServiceTested.
    void fetchRemoteServices(bool stat, const QString& name);
    /// Arguments are trimmed here and below; without one that is needed the call fails before this returns.
    void testRemoteService(const QString& name);
    void addRemoteService(const QString& name, const QString& address, const QString& token);
    void removeRemoteService(const QString& name);
    /// "/pin/remote/add". In the background the answer comes once the service has queued the pin.
    void remotePinAdd(const QString& cid, const QString& service, const QString& name, bool background);
    /// "/pin/remote/ls". Ends with remotePinStatusReceived or remotePinStatusFailed.
    void fetchRemotePinStatus(const QString& cid, const QString& service);

signals:
    void remoteServicesReceived(QList<RemoteServiceEntry> services);
    void remoteServicesFailed(QString message);
    void remoteServiceTested(QString name, bool ok, QString message);
    void remoteServiceAdded(QString name);
    void remoteServiceAddFailed(QString message);
    void remoteServiceRemoved(QString name);
    void remoteServiceRemoveFailed(QString message);
    void remotePinQueued(QString cid, QString service);
    void remotePinQueueFailed(QString cid, QString service, QString message);
    /// `status` is the service's word in lower case; "not-found" if it has no such pin, "unknown" if it says nothing.
    void remotePinStatusReceived(QString cid, QString service, QString status);
    void remotePinStatusFailed(QString cid, QString service, QString message);

private slots:
    void onRemoteServicesReplyFinished(QNetworkReply* reply);
    void onRemoteServiceAddReplyFinished(QNetworkReply* reply);
    void onRemoteServiceRmReplyFinished(QNetworkReply* reply);
    void onRemotePinAddReplyFinished(QNetworkReply* reply);
    void onRemotePinLsReplyFinished(QNetworkReply* reply);

private:
    void reportServiceTest(const QString& name, const ServiceList& list);
    void callForRemotePin(const QString& path, const QUrlQuery& query, ReplyHandler handler, const QString& cid,
                          const QString& service);

    PinLoad load;
    KnownCids knownCids;
    int cancelCount = 0; ///< a metadata list parsed across a cancel is stale
    QSet<QNetworkReply*> activeLoadReplies;
    MetadataQueue dagStatRequests;
    MetadataQueue kindRequests;
    MetadataQueue refsRequests;

    QSet<QString> indirectCids {};               ///< pinned through a parent only, by the last list
    QList<std::weak_ptr<UnpinBatch>> openUnpins; ///< those with rewritten CIDs
};
