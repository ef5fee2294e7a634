// SPDX-License-Identifier: MIT
#include "ActionBox.h"
#include "UpdateCheck.h"
#include "WindowTest.h"

#include <QDesktopServices>
#include <QHash>
#include <QProgressDialog>
#include <QTcpServer>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 hugeBody = 100 * 1024 * 1024;

QByteArray page(const QByteArray& body, const QByteArray& status = "200 OK")
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\nConnection: close\r\n\r\n" + body;
}

QByteArray redirection(const QByteArray& target)
{
    return "HTTP/1.1 301 Moved\r\nLocation: " + target + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
}

/// A web site whose pages are scripted as they go over the wire. One that is not there is never answered.
class WebSite : public QTcpServer
{
public:
    WebSite()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            auto* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
            connect(socket, &QTcpSocket::bytesWritten, this, [this, socket] { writeMore(socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this] { ++closed; });
        });
    }
    QString address() const { return u"http://127.0.0.1:%1"_s.arg(serverPort()); }

    QHash<QByteArray, QByteArray> pages;
    qint64 filler = 0; ///< bytes that follow a page
    qint64 sent = 0;   ///< of those
    int closed = 0;
    QList<QByteArray> heads;

private:
    void read(QTcpSocket* socket)
    {
        const QByteArray head = socket->readAll();
        heads.append(head);
        const QByteArray found = pages.value(head.split(' ').value(1));
        if (!found.isEmpty())
            socket->write(found);
        if (!found.isEmpty() && filler == 0)
            socket->disconnectFromHost();
    }
    void writeMore(QTcpSocket* socket)
    {
        constexpr qint64 piece = 64 * 1024;
        if (socket->bytesToWrite() == 0 && sent < filler && socket->state() == QAbstractSocket::ConnectedState)
            sent += socket->write(QByteArray(piece, 'x'));
    }
};

void row(const char* name, const QByteArray& answer, const QString& box, const QString& status,
         const QString& running = u"1.1.3"_s)
{
    QTest::newRow(name) << answer << box << status << running;
}

} // namespace

class tst_UpdateCheck : public WindowTest
{
    Q_OBJECT

public slots:
    void catchUrl(const QUrl& url) { opened.append(url.toString()); }

private slots:
    void init()
    {
        startNode({});
        site = std::make_unique<WebSite>();
        QDesktopServices::setUrlHandler(u"http"_s, this, "catchUrl");
        opened.clear();
    }
    void cleanup()
    {
        close();
        QCoreApplication::setApplicationVersion(u"1.1.3"_s);
        QDesktopServices::unsetUrlHandler(u"http"_s);
    }

    void answers_data()
    {
        addColumns<QByteArray, QString, QString, QString>("answer", "box", "status", "running");
        const QString check = u"Check for update|"_s;
        const QString upToDate = check + u"You are up to date.\nCurrent version: "_s;
        const QString newer = u"Update available|A newer version is available: "_s;
        const QString bad = check + u"Could not parse version information.\nCurrent: 1.1.3\nLatest: "_s;
        const QString badStatus = u"Update check failed: invalid version response"_s;
        row("same", page("1.1.3\n"), upToDate + u"1.1.3"_s, u"Up to date: 1.1.3"_s);
        row("same, with a capital V", page("1.2.0"), upToDate + u"1.2.0"_s, u"Up to date: 1.2.0"_s, u" V1.2.0"_s);
        row("older", page("0.9"), upToDate + u"1.1.3"_s, u"Up to date: 1.1.3"_s);
        row("newer", page("1.10"), newer + u"1.10\nYou are running: 1.1.3"_s, u"Update available: 1.10"_s);
        row("newer, of several lines", page("\n v1.2.3\r\nchanges: <b>9.9</b>\r\n"),
            newer + u"1.2.3\nYou are running: 1.1.3"_s, u"Update available: 1.2.3"_s);
        row("newer, longest", page("2." + QByteArray(UpdateCheck::largestAnswer - 2, 'x')),
            newer + u"2."_s + QString(98, u'x') + u"\nYou are running: 1.1.3"_s,
            u"Update available: 2."_s + QString(98, u'x'));
        row("a byte too long", page("2." + QByteArray(UpdateCheck::largestAnswer - 1, 'x')),
            bad + u"2."_s + QString(98, u'x'), badStatus);
        row("nothing", page({}), bad, badStatus);
        row("page", page("<!DOCTYPE html>\n9.9"), bad + u"<!DOCTYPE html>"_s, badStatus);
        row("long first line", page(QByteArray(300, 'x')), bad + QString(100, u'x'), badStatus);
        row("running version unknown", page("1.2"),
            check + u"Could not parse version information.\nCurrent: dev\nLatest: 1.2"_s, badStatus, u"vdev"_s);
        const QString lost = u"Update check failed: Error transferring %1/latest-version.txt - server replied: "_s;
        row("not found", page("9.9", "404 Not <i>Found"), check + lost + u"Not <i>Found"_s, lost + u"Not <i>Found"_s);
        row("elsewhere", redirection("/moved"), newer + u"3.0\nYou are running: 1.1.3"_s, u"Update available: 3.0"_s);
        row("to nothing that is safe", redirection("ftp://127.0.0.1/"),
            check + u"Update check failed: Unknown protocol specified"_s,
            u"Update check failed: Unknown protocol specified"_s);
    }
    void answers()
    {
        QFETCH(const QByteArray, answer);
        QFETCH(QString, box);
        QFETCH(QString, status);
        QFETCH(const QString, running);
        QCoreApplication::setApplicationVersion(running);
        site->pages = {{"/latest-version.txt", answer}, {"/moved", page("3.0")}};
        openWindow();
        check();
        QTRY_VERIFY(shown());
        QCOMPARE(shown()->windowTitle() + u'|' + shown()->text(), box.replace(u"%1"_s, site->address()));
        QCOMPARE(shown()->textFormat(), Qt::PlainText);
        QVERIFY(!progress()->isVisible());
        const bool isNewer = box.startsWith(u"Update available"_s);
        QVERIFY(press(isNewer ? u"Open download page"_s : u"OK"_s));
        QCOMPARE(opened, isNewer ? QStringList(site->address() + u'/') : QStringList());
        QVERIFY2(isLogged(status.replace(u"%1"_s, site->address())), qPrintable(window->statusLog().join(u'\n')));
        check(); // a second one shows its window as well
        QVERIFY(progress()->isVisible());
        QTRY_VERIFY(shown());
    }

    /// What leaves, and that a check that runs is the only one.
    void requests()
    {
        openWindow();
        setting(SettingsKeys::sendOrigin, true);
        setting(SettingsKeys::originValue, u"me\r\n"_s);
        check();
        QCOMPARE(status(), u"Checking for updates..."_s);
        QVERIFY(progress()->isVisible() && progress()->windowModality() == Qt::ApplicationModal);
        check();
        QTRY_VERIFY(!site->heads.isEmpty());
        QTest::qWait(50); // for what is not to come
        QCOMPARE(site->heads.size(), 1);
        const QByteArray head = site->heads.constFirst().toLower(); // as newer Qt writes it
        QVERIFY(head.startsWith("get /latest-version.txt http/1.1\r\n"));
        QVERIFY(head.contains("\r\nuser-agent: norvo/1.1.3\r\n") && head.contains("\r\norigin: me\r\n"));
        setting(SettingsKeys::sendOrigin, false);
        progress()->close();
        check();
        QTRY_COMPARE(site->heads.size(), 2);
        QVERIFY(!site->heads.constLast().contains("Origin:"));
    }

    /// The window of a check that is never answered is closed, and then the window itself.
    void cancelling()
    {
        openWindow();
        for (int round = 1; round <= 2; ++round) {
            check();
            QTRY_COMPARE(site->heads.size(), round);
            QTest::keyClick(progress(), Qt::Key_Escape);
            QVERIFY(isLogged(u"Update check cancelled"_s) && !window->findChild<UpdateCheck*>()->isRunning());
            QTRY_COMPARE(site->closed, round);
            QVERIFY(!QApplication::activeModalWidget());
        }
        check();
        QTRY_COMPARE(site->heads.size(), 3);
        window->close();
        close();
        QVERIFY(!QApplication::activeModalWidget());
        QTRY_COMPARE(site->closed, 3);
    }

    /// 64 KiB are taken, however the length of an answer is given.
    void hugeAnswers_data()
    {
        const auto row = addColumns<QByteArray, QString>("head", "latest");
        row("length", QByteArray("200 OK\r\nContent-Length: 104857604\r\n\r\n9.9\n"), u"9.9"_s);
        row("chunks", QByteArray("200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n9.9\n\r\n6400000\r\n"), u"9.9"_s);
        row("no length", QByteArray("200 OK\r\nConnection: close\r\n\r\n9.9\n"), u"9.9"_s);
        row("page of an error", QByteArray("404 No\r\nConnection: close\r\n\r\n9.9\n"), QString());
    }
    void hugeAnswers()
    {
        QFETCH(const QByteArray, head);
        QFETCH(const QString, latest);
        site->filler = hugeBody;
        site->pages = {{"/latest-version.txt", "HTTP/1.1 " + head}};
        openWindow();
        check();
        QTRY_VERIFY(shown());
        QCOMPARE(shown()->text(), u"Could not parse version information.\nCurrent: 1.1.3\nLatest: "_s + latest);
        QVERIFY(isLogged(u"Update check failed: invalid version response"_s));
        QTRY_COMPARE(site->closed, 1);
        // The system's buffers may have taken some 40 MB before the first of it was read.
        QVERIFY2(site->sent < hugeBody / 2, qPrintable(QString::number(site->sent)));
    }

    void theAboutBox()
    {
        openWindow();
        const ModalAnswer<QMessageBox> about([](QMessageBox& box) {
            QCOMPARE(box.windowTitle(), u"About Norvo"_s);
            QVERIFY(press(u"Check for update"_s));
        });
        trigger(u"About Norvo"_s);
        QVERIFY(about.wasGiven() && progress()->isVisible());
        QTRY_COMPARE(site->heads.size(), 1);
        progress()->close();
        const ModalAnswer<QMessageBox> gone([this](QMessageBox&) { window.reset(); });
        trigger(u"About Norvo"_s); // its window goes while it is open
        QVERIFY(gone.wasGiven());
    }

private:
    void openWindow()
    {
        open();
        window->findChild<UpdateCheck*>()->setEndpoint(site->address());
    }
    void check() const { QMetaObject::invokeMethod(window.get(), "checkForUpdates"); }
    static ActionBox* shown() { return qobject_cast<ActionBox*>(QApplication::activeModalWidget()); }
    QProgressDialog* progress() const { return window->findChild<QProgressDialog*>(); }

    std::unique_ptr<WebSite> site;
    QStringList opened;
};

NORVO_TEST_MAIN(QApplication, tst_UpdateCheck)

#include "tst_updatecheck.moc"
