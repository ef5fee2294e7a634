// SPDX-License-Identifier: MIT
#pragma once

#include "RpcTransport.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <optional>

/// The result of an unpin that was gone through one CID at a time.
struct UnpinOutcome
{
    QStringList removed {}; ///< the pins, as the node names them
    QStringList gone {};    ///< the same CIDs as they were asked for
    QString failures {};    ///< what the node said of the rest, empty if there is none
};

/// One unpin on its way. Its replies hold it, so unpins that overlap do not meet.
class UnpinBatch
{
public:
    QList<QString> unpinRequestedCids {}; ///< as asked for, trimmed
    QList<QString> unpinFormattedCids {}; ///< of the same length: as rewritten, empty until known
    int unpinFormatPending = 0;           ///< answers of "/cid/format" still to come
    qsizetype nextToFormat = 0;           ///< first CID whose "/cid/format" has not left
    RpcEndpoint endpoint {};              ///< where all of its calls go
    qsizetype removalsAsked = 0;          ///< CIDs that a "/pin/rm" of several has named
    QStringList removedPins {};           ///< by such calls that succeeded, as the node names them
    QStringList removedCids {};           ///< likewise, as asked for
    /// CIDs as asked for that are known to have been no pins of their own when the first call ran. Shared, not copied.
    QList<QSet<QString>> knownAsNoPins {};

    QString firstRefusal {};       ///< the node's words for the CID at which the first call stopped
    int pinListsPending = 0;       ///< answers of "/pin/ls" still to come
    QList<QByteArray> pinLists {}; ///< those that came whole
    /// By storedTexts; empty if the node's pins are not known.
    QList<std::optional<QString>> stored {};

    qsizetype size() const { return unpinRequestedCids.size(); }
    qsizetype doneCount() const { return results.size(); }
    /// Passes over CIDs that the node has no pin for. Call before each question.
    void skipGone();
    /// Whether every CID has been gone through.
    bool isDone() const { return doneCount() >= size(); }
    /// What to name to the node next.
    const QString& currentText() const;
    /// The node removed the current text and named `pins` as removed; none means the text itself.
    void takeSuccess(const QStringList& pins);
    /// The node refused the current text; `notPinned` if it has no pin under that text.
    void takeFailure(const QString& words, bool notPinned);
    /// Nothing more can be asked.
    void failTheRest(const QString& words);

    /// Once all are gone through.
    UnpinOutcome outcome() const;

private:
    /// What is known of the first call and one CID.
    enum class FirstCall {
        MayHaveRemoved, ///< it is not pinned any more, or never was
        StoppedByThen,  ///< the call can't have got past it
        StoppedBefore   ///< the call can't have reached it
    };
    struct Result
    {
        QStringList pins {};
        QString failure {}; ///< empty for a success
        FirstCall firstCall = FirstCall::StoppedByThen;
    };

    /// Under which text the current CID is pinned; null if that is not known.
    const QString* storedText() const;
    FirstCall firstCallBeforePinned() const;
    bool isNoPin(const QString& cid) const;
    qsizetype stopOfFirstCall() const;

    QList<Result> results;
    std::optional<Result> refused; ///< of the current CID as rewritten; as asked for comes next
    QSet<QString> removedTexts;
};
