#pragma once

#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>

/// What an unpin came to that had to be gone through one CID at a time.
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
    /// CIDs as asked for that are known to have been no pins of their own when the first call ran.
    QSet<QString> knownAsNoPins {};

    /// Whether every CID has been gone through.
    bool isThrough() const { return results.size() >= unpinRequestedCids.size(); }
    /// What to name to the node next.
    const QString& currentText() const;
    /// The node removed the current text and named `pins` as removed; none stand for the text itself.
    void takeSuccess(const QStringList& pins);
    /// The node refused the current text; `notPinned` if it has no pin under that text.
    void takeFailure(const QString& words, bool notPinned);
    /// Nothing more can be asked.
    void failTheRest(const QString& words);

    /// Once all are gone through.
    UnpinOutcome outcome() const;

private:
    struct Result
    {
        QStringList pins {};
        QString failure {};     ///< empty for a success
        bool notPinned = false; ///< what the node said of the CID as rewritten, which the first call named
        bool asAsked = false;   ///< the CID was refused as rewritten, and this is the answer as asked for
    };

    qsizetype stopOfFirstCall() const;

    QList<Result> results;
    Result refused; ///< of the current CID as rewritten
};
