// SPDX-License-Identifier: MIT
#include "FirstPictures.h"

#include "ActionBox.h"
#include "AddToIpfsDialog.h"
#include "AppSettings.h"
#include "DemoNode.h"
#include "Detached.h"
#include "MainWindow.h"
#include "PictureFolder.h"
#include "PictureSample.h"
#include "PictureSteps.h"

#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTcpServer>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr quint16 usualPort = 5001;

void showActive(MainWindow& window)
{
    window.show();
    window.activateWindow(); // nobody else does where there is no window manager
    awaitThat([&window] { return window.isActiveWindow(); }, u"the window did not come up"_s);
}

void awaitStatus(const MainWindow& window, const QString& text)
{
    const auto* status = window.findChild<QLabel*>(u"statusLabel"_s);
    awaitThat([&] { return status->text() == text; }, u"the status did not become "_s + text);
}

void addFirstFile(MainWindow& window, const QString& path)
{
    inNext<AddToIpfsDialog>([&path](AddToIpfsDialog& dialog) {
        dialog.addPaths({path});
        static_cast<QDialog&>(dialog).accept();
    });
    bool isDone = false;
    inComing<ActionBox>([&isDone](ActionBox& box) {
        box.accept();
        isDone = true;
    });
    window.findChild<QPushButton*>(u"actionBtn"_s)->click();
    awaitThat([&isDone] { return isDone; }, u"the file was not added"_s);
    const auto* counts = window.findChild<QLabel*>(u"countLabel"_s);
    awaitThat([counts] { return counts->text().contains("Metadata loaded: 1/1 "_L1); }, u"its row did not come"_s);
    showActive(window); // a table that is not active is not painted
}

} // namespace

quint16 portForPictures()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost, usualPort))
        server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

void takeFirstPictures(const PictureFolder& folder)
{
    const QTemporaryDir home;
    makeSample(home);
    const quint16 port = portForPictures();
    openAppSettings().setValue("port"_L1, port);
    {
        MainWindow window;
        showActive(window);
        awaitThat([&window] { return window.statusLog().filter(u"  Error: "_s).size() == 3; }, u"no errors came"_s);
        folder.take(&window, "no-node"_L1);

        const DemoNode node(DemoOptions {.port = port, .pins = 0, .looseBlocks = 0});
        need(node.port() == port, u"the demo node can't listen"_s);
        window.findChild<QPushButton*>(u"refreshBtn"_s)->click();
        awaitStatus(window, u"Ready"_s);
        folder.take(&window, "no-pins"_L1);

        addFirstFile(window, home.filePath(u"to do.txt"_s));
        awaitStatus(window, u"Ready"_s);
        folder.take(&window, "first-pin"_L1);
    }
    need(waitForDetached(10s), u"a thread does not end"_s);
    openAppSettings().clear();
}
