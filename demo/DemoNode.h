#pragma once

#include "DemoContent.h"
#include "FakeNode.h"

#include <memory>

/// How the demo node is to behave.
struct DemoOptions
{
    quint16 port = 5001;
    int pins = 10;
    int looseBlocks = 0; ///< small blocks that no pin accounts for, besides a few that are always there
    int treeEntries = 0; ///< files under one more pin, named "big tree"; 0 for no such pin
    int chunkBytes = 0;  ///< size of a list's chunks; 0 sends each line by itself, as a node does
    std::chrono::milliseconds chunkPause {0};
    std::chrono::milliseconds latency {0}; ///< before each answer
};

/// A stateful node in memory, which answers as a Kubo node answers.
class DemoNode : public FakeNode
{
    Q_OBJECT

public:
    explicit DemoNode(const DemoOptions& newOptions, QObject* parent = nullptr);

    /// From here on the block is missing, as one that was lost.
    void forget(const Cid& cid);
    const QList<DemoPin>& allPins() const { return pins; }

private:
    // pins and identity
    void addPinRoutes();
    FakeAnswer pinLs(const FakeRequest& request);
    FakeAnswer pinRm(const FakeRequest& request);
    static FakeAnswer cidFormat(const FakeRequest& request);
    void unpinExactly(const QSet<QByteArray>& removed);
    /// The whole listing, kept until the pins change.
    std::shared_ptr<const QByteArray> pinListing(const QString& type, bool names, bool liftsVersion0);
    FakeAnswer id() const;
    FakeAnswer version() const;

    // what lies under a CID
    void addContentRoutes();
    FakeAnswer refs(const FakeRequest& request) const;
    FakeAnswer refsLocal();
    FakeAnswer dagStat(const FakeRequest& request) const;
    FakeAnswer filesStat(const FakeRequest& request) const;
    FakeAnswer ls(const FakeRequest& request) const;
    FakeAnswer cat(const FakeRequest& request) const;
    bool appendRefs(const DemoObject& object, const FakeRequest& request, QByteArray& body) const;

    /// The lines of `body` one by one, or in chunks of the options' size.
    FakeAnswer stream(std::shared_ptr<const QByteArray> body) const;
    void addRoute(const QByteArray& path, Handler handler);

    DemoOptions options;
    DemoStore store;
    QList<DemoPin> pins;
    QSet<QByteArray> pinned; ///< the binary CIDs of the pins; filled when it is first asked for
    QHash<QString, std::shared_ptr<const QByteArray>> listings;
    std::shared_ptr<const QByteArray> localRefs;
};
