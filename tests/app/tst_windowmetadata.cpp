// SPDX-License-Identifier: MIT
#include "PinModel.h"
#include "WindowTest.h"

using namespace Qt::StringLiterals;

namespace {

const QByteArray pinsPath = "/pin/ls";
const QByteArray refsPath = "/refs";
const QByteArray dagStatPath = "/dag/stat";
const QByteArray filesStatPath = "/files/stat";

QByteArray pinLines(int count, const QByteArray& type)
{
    QByteArray body;
    for (int i = 0; i < count; ++i)
        body += "{\"Cid\":\"bafy" + QByteArray::number(i) + "\",\"Type\":\"" + type + "\"}\n";
    return body;
}

} // namespace

class tst_WindowMetadata : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode({});
        pins(pinLines(3, "recursive"));
        node->answer(refsPath, NodeAnswer::json("{\"Ref\":\"a\"}\n{\"Ref\":\"b\"}\n"));
        node->answer(dagStatPath, NodeAnswer::json(R"({"TotalSize":1024})"));
        node->answer(filesStatPath, NodeAnswer::json(R"({"Type":"directory"})"));
    }
    void cleanup() { close(); }

    void placeholdersTurnIntoValues()
    {
        for (const QByteArray& path : {refsPath, dagStatPath, filesStatPath})
            node->answer(path, NodeAnswer::hold());
        open();
        QTRY_COMPARE(node->heldCount(filesStatPath), 3);
        QCOMPARE(cells(PinModel::RefsColumn), QStringList(3, u"…"_s));
        QCOMPARE(counts(),
                 u"Total: 3  |  Recursive: 3  |  Direct: 0  |  Indirect: 0  |  "
                 "Total DAG size of all displayed CIDs: —  |  Metadata loaded: 0/3 CIDs"_s);
        node->release(dagStatPath, NodeAnswer::json(R"({"TotalSize":2048})"));
        node->release(filesStatPath, NodeAnswer::json(R"({"Type":"file"})"));
        QTRY_VERIFY(counts().endsWith(u"CIDs: 2.0 KB  |  Metadata loaded: 1/3 CIDs"_s)
                    || counts().endsWith(u"CIDs: 2.0 KB  |  Metadata loaded: 0/3 CIDs"_s));
        for (int i = 0; i < 3; ++i)
            node->release(refsPath, NodeAnswer::json("{\"Ref\":\"a\"}\n"));
        for (int i = 0; i < 2; ++i) {
            node->release(dagStatPath, NodeAnswer::error("no")); // counts as done
            node->release(filesStatPath, NodeAnswer::json(R"({"Type":"file"})"));
        }
        QTRY_VERIFY(counts().endsWith(u"CIDs: 2.0 KB  |  Metadata loaded: 3/3 CIDs"_s));
        QTRY_COMPARE(cells(PinModel::RefsColumn), QStringList(3, u"1"_s));
        QCOMPARE(cells(PinModel::KindColumn), QStringList(3, u"File"_s));
        QCOMPARE(cells(PinModel::SizeColumn).filter(u"…"_s).size(), 2);
    }

    void aRefreshAsksOnlyForWhatIsNotKnown()
    {
        node->answers(dagStatPath, {NodeAnswer::error("no"), NodeAnswer::json(R"({"TotalSize":5})")});
        open();
        QTRY_VERIFY(counts().endsWith(u"Metadata loaded: 3/3 CIDs"_s));
        node->clearRequests();
        pins(pinLines(4, "recursive"));
        refreshButton()->click();
        QTRY_VERIFY(counts().endsWith(u"Metadata loaded: 4/4 CIDs"_s));
        QTRY_COMPARE(node->openNow(), 0);
        QCOMPARE(node->count(dagStatPath), 2); // the new one, and the one that failed
        QCOMPARE(node->count(filesStatPath), 1);
        QCOMPARE(node->count(refsPath), 4);
        QCOMPARE(cells(PinModel::SizeColumn), QStringList(4, u"5 B"_s));
    }

    void aRefreshWhileFactsComeInIsHarmless()
    {
        node->answer(dagStatPath, NodeAnswer::hold());
        open();
        QTRY_COMPARE(node->heldCount(dagStatPath), 3);
        QTest::keyClick(window.get(), Qt::Key_F5);
        QTRY_COMPARE(node->count(pinsPath), 4);
        QTRY_VERIFY(refreshButton()->isEnabled());
        QTest::qWait(20);
        QCOMPARE(node->count(dagStatPath), 3); // in flight already
        for (int i = 0; i < 3; ++i)
            node->release(dagStatPath, NodeAnswer::json(R"({"TotalSize":7})"));
        QTRY_VERIFY(counts().endsWith(u"Metadata loaded: 3/3 CIDs"_s));
        QCOMPARE(cells(PinModel::SizeColumn), QStringList(3, u"7 B"_s));
    }

    void withoutMetadataOnlyRefsAreAsked()
    {
        setting("loadMetadata"_L1, false);
        open();
        QTRY_COMPARE(cells(PinModel::RefsColumn), QStringList(3, u"2"_s));
        QCOMPARE(node->count(dagStatPath) + node->count(filesStatPath), 0);
        QVERIFY(counts().endsWith(u"Total DAG size of all displayed CIDs: —"_s));
    }

    void searchingSplitsTheCountsOverTwoLines()
    {
        open();
        QTRY_VERIFY(counts().endsWith(u"Metadata loaded: 3/3 CIDs"_s));
        window->findChild<QLineEdit*>()->setText(u"FY1"_s);
        QTRY_COMPARE(label("statsLine1"_L1)->text(), u"1 / 3 shown  |  R:3  D:0  I:0"_s);
        QVERIFY(label("statsLine1"_L1)->isVisibleTo(window.get()));
        QCOMPARE(counts(), u"Total DAG size of all displayed CIDs: 1.0 KB  |  Metadata loaded: 3/3 CIDs"_s);
    }

private:
    void pins(const QByteArray& recursive)
    {
        node->route(pinsPath, [recursive](const NodeRequest& request) {
            return NodeAnswer::json(request.value(u"type"_s) == u"recursive"_s ? recursive : QByteArray());
        });
    }
    QString counts() const { return label("countLabel"_L1)->text(); }
};

NORVO_TEST_MAIN(QApplication, tst_WindowMetadata)
#include "tst_windowmetadata.moc"
