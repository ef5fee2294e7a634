// SPDX-License-Identifier: MIT
#include "FakeNode.h"
#include "NodeAccessManager.h"
#include "TestMain.h"

#include <QCoreApplication>
#include <QNetworkReply>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// A body of lines that is made while it is read.
class ManyParts : public QIODevice
{
public:
    explicit ManyParts(qint64 newCount, qint64 newBreakAt = -1)
        : breakAt(newBreakAt)
        , total(newCount * partSize)
    {
        open(ReadOnly | Unbuffered);
    }
    qint64 size() const override { return total; }

    static constexpr qint64 partSize = 64;

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        if (breakAt >= 0 && given >= breakAt) {
            setErrorString(u"a.txt changed while it was being sent."_s);
            return -1;
        }
        const qint64 count = std::min(maxSize, total - given);
        for (qint64 i = 0; i < count; ++i)
            data[i] = ++given % partSize == 0 ? '\n' : 'x';
        return count;
    }
    qint64 writeData(const char* /*data*/, qint64 /*size*/) override { return -1; }

private:
    qint64 breakAt;
    qint64 total;
    qint64 given = 0;
};

} // namespace

class tst_Upload : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        failOnWarnings();
        node = std::make_unique<FakeNode>();
    }

    void bothDirectionsAtOnce()
    {
        constexpr qint64 parts = 200'000;
        qint64 taken = 0;
        node->limitBuffers(64 * 1024);
        node->routeUpload("/add", [&taken](const NodeRequest&) {
            return NodeUpload {.head = NodeAnswer::json({}),
                               .onPiece =
                                   [&taken](const QByteArray& piece, bool) {
                                       taken += piece.size();
                                       return NodeStep {.bytes
                                                        = QByteArray("{\"Name\":\"a\"}\n").repeated(piece.count('\n'))};
                                   },
                               .mostUnsent = 64 * 1024};
        });
        ManyParts body(parts);
        QNetworkReply* reply = post(body);
        qint64 sentAtFirstLine = -1;
        qint64 sent = 0;
        qint64 lines = 0;
        connect(reply, &QNetworkReply::uploadProgress, this, [&sent](qint64 bytes) { sent = bytes; });
        connect(reply, &QNetworkReply::readyRead, this, [&] {
            lines += reply->readAll().count('\n');
            sentAtFirstLine = sentAtFirstLine < 0 ? sent : sentAtFirstLine;
        });
        QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), 60'000);
        QVERIFY2(reply->error() == QNetworkReply::NoError, qPrintable(reply->errorString()));
        QCOMPARE(lines, parts);
        QCOMPARE(taken, body.size());
        QCOMPARE(sent, body.size());
        QVERIFY(sentAtFirstLine < body.size() / 2);
    }

    void uploadsThatFail_data()
    {
        const auto row = addColumns<QByteArray, QString>("how", "text");
        row("refused at once", QByteArray("refuse"), u"server replied: Forbidden"_s);
        row("error after half", QByteArray("half"), u"server replied: Internal Server Error"_s);
        row("dropped", QByteArray("drop"), u"Connection closed"_s);
        row("its device fails", QByteArray("device"), u"a.txt changed while it was being sent."_s);
    }
    void uploadsThatFail()
    {
        QFETCH(const QByteArray, how);
        QFETCH(const QString, text);
        ManyParts body(200'000, how == "device" ? 1'000'000 : -1);
        node->routeUpload("/add", [&how, &body](const NodeRequest&) {
            if (how == "refuse")
                return NodeUpload {.head = NodeAnswer::text(403, "403 - Forbidden\n")};
            NodeAnswer last
                = how == "drop" ? NodeAnswer::raw({}, NodeAnswer::Close) : NodeAnswer::error("disk is full");
            return NodeUpload {
                .onPiece = [&body, last, how, taken = qint64 {0}](const QByteArray& piece, bool) mutable {
                    taken += piece.size();
                    return how != "device" && taken > body.size() / 2 ? NodeStep {.last = last} : NodeStep {};
                }};
        });
        QNetworkReply* reply = post(body);
        QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), 30'000);
        QVERIFY2(reply->errorString().endsWith(text), qPrintable(reply->errorString()));
        if (how == "half")
            QCOMPARE(NodeAccessManager::failureBody(reply), reply->readAll());
        QCOMPARE(node->headCount("/add"), 1);
    }

private:
    QNetworkReply* post(QIODevice& body)
    {
        const QUrl url(u"http://127.0.0.1:%1/api/v0/add"_s.arg(node->port()));
        return manager.post(QNetworkRequest(url), &body);
    }

    std::unique_ptr<FakeNode> node;
    NodeAccessManager manager;
};

NORVO_TEST_MAIN(QCoreApplication, tst_Upload)
#include "tst_upload.moc"
