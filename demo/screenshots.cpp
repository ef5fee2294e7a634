// SPDX-License-Identifier: MIT
// Takes the pictures of the user guide, of the real window and its dialogs before a demo node, for `make screenshots`.

#include "ActionBox.h"
#include "AddToIpfsDialog.h"
#include "AppSettings.h"
#include "Appearance.h"
#include "ConfigPictures.h"
#include "DemoNode.h"
#include "Detached.h"
#include "FirstPictures.h"
#include "HelpPictures.h"
#include "IndirectPinsDialog.h"
#include "IpnsPictures.h"
#include "LogDialog.h"
#include "MainWindow.h"
#include "PictureFolder.h"
#include "PictureSample.h"
#include "PictureSteps.h"
#include "PinContentsDialog.h"
#include "PinModel.h"
#include "SettingsDialog.h"
#include "StatusLabel.h"
#include "SwarmPictures.h"
#include "ToolPictures.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QSize windowSize(1280, 800);
constexpr int pinCount = 60;
constexpr int looseBlocks = 12;

constexpr auto album = "photos summer 2024"_L1;
constexpr auto archive = "photo archive"_L1;

} // namespace

/// Each function takes one picture, in the order of run(); what does not come in time ends the program.
class Screenshots
{
public:
    explicit Screenshots(const PictureFolder& newFolder)
        : folder(newFolder)
        , node(newNode())
    {
        openAppSettings().setValue("port"_L1, node->port());
        window = std::make_unique<MainWindow>();
    }

    void run()
    {
        openWindow();
        for (const auto picture : {&Screenshots::mainWindow, &Screenshots::contextMenu, &Screenshots::indirectPins,
                                   &Screenshots::pinContents, &Screenshots::pinContentsSaving, &Screenshots::notPinned,
                                   &Screenshots::statusLog, &Screenshots::rpcLog, &Screenshots::settingsDialog,
                                   &Screenshots::about, &Screenshots::error, &Screenshots::unpinFailed,
                                   &Screenshots::addDialog, &Screenshots::addProgress, &Screenshots::tools}) {
            QCursor::setPos(windowSize.width() - 1, windowSize.height() - 1); // over nothing that would light up
            (this->*picture)();
        }
        window.reset();
        need(waitForDetached(10s), u"a thread does not end"_s);
    }

private:
    void openWindow()
    {
        need(node->port() != 0, u"the demo node can't listen"_s);
        window->show();
        window->activateWindow(); // nobody else does where there is no window manager
        awaitThat([this] { return window->isActiveWindow(); }, u"the window did not come up"_s);
        window->showNormal();
        window->resize(windowSize);
        window->move(0, 0);
        awaitRows();
        awaitThat([this] { return status() == u"Ready"_s; }, u"the status did not go back to Ready"_s);
        table()->sortByColumn(PinModel::NameColumn, Qt::DescendingOrder);
    }

    void mainWindow()
    {
        select(album);
        folder.take(window.get(), "main-window"_L1);
    }

    void contextMenu()
    {
        QPixmap picture;
        inNextMenu([this, &picture](QMenu& menu) {
            menu.setActiveAction(menu.actions().value(1));
            picture = window->grab();
            QPainter(&picture).drawPixmap(window->mapFromGlobal(menu.pos()), menu.grab());
            menu.close();
        });
        rightClick(album);
        folder.keep(picture, "context-menu"_L1);
    }

    void indirectPins()
    {
        auto* dialog = opened<IndirectPinsDialog>(album, u"Show indirect pins"_s);
        auto* list = dialog->findChild<QTableView*>();
        awaitThat([list] { return list->model()->rowCount() > 1; }, u"the indirect pins did not come"_s);
        list->selectRow(2);
        folder.take(dialog, "indirect-pins"_L1);
        close<IndirectPinsDialog>();
    }

    void pinContents()
    {
        auto* dialog = opened<PinContentsDialog>(archive, u"List files / Export…"_s);
        awaitThat([this] { return saveButton()->isEnabled(); }, u"the contents did not come"_s);
        auto* root = dialog->findChild<QTreeWidget*>()->topLevelItem(0);
        root->child(1)->setExpanded(true);
        folder.take(dialog, "pin-contents"_L1);
    }

    /// In the window that pinContents has opened. The folder is not in the picture.
    void pinContentsSaving()
    {
        auto* dialog = window->findChild<PinContentsDialog*>();
        const QTemporaryDir target;
        auto* progress = dialog->findChild<QProgressBar*>();
        QPixmap picture;
        // Queued: by then the next download has begun, and the status shows that.
        QObject::connect(
            progress, &QProgressBar::valueChanged, dialog,
            [dialog, progress, &picture](int done) {
                if (picture.isNull() && done > progress->maximum() / 2)
                    picture = dialog->grab();
            },
            Qt::QueuedConnection);
        inNext<QFileDialog>([&target](QFileDialog& picker) {
            picker.selectFile(target.path());
            static_cast<QDialog&>(picker).accept();
        });
        saveButton()->click();
        awaitThat([&] { return !picture.isNull() && saveButton()->isEnabled(); }, u"the files were not saved"_s);
        folder.keep(picture, "pin-contents-saving"_L1);
        close<PinContentsDialog>();
    }

    void notPinned()
    {
        auto* content = contentBox();
        content->setCurrentIndex(1);
        awaitThat([this] { return status().startsWith(u"Loaded "_s); }, u"the blocks did not come"_s);
        table()->sortByColumn(PinModel::CidColumn, Qt::AscendingOrder);
        folder.take(window.get(), "not-pinned"_L1);
        content->setCurrentIndex(0);
        awaitRows();
        table()->sortByColumn(PinModel::NameColumn, Qt::DescendingOrder);
    }

    void statusLog()
    {
        window->showStatusLogDialog(MainWindow::AuxChildWindow);
        takeLog("status-log"_L1);
    }

    void rpcLog()
    {
        window->showRpcLogDialog(MainWindow::AuxChildWindow);
        takeLog("rpc-log"_L1);
    }

    void settingsDialog()
    {
        inNext<SettingsDialog>([this](SettingsDialog& dialog) {
            for (auto* button : dialog.findChildren<QPushButton*>()) {
                if (button->text() == u"Restore Defaults"_s)
                    button->click(); // the port is the usual one, whatever the demo node has
            }
            folder.take(&dialog, "settings"_L1);
            dialog.reject();
        });
        menuEntry([](const QAction* action) {
            return action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Comma);
        })->trigger();
    }

    void about()
    {
        inNext<QMessageBox>([this](QMessageBox& box) {
            folder.take(&box, "about"_L1);
            box.reject();
        });
        menuEntry([](const QAction* action) { return action->text() == u"About Norvo"_s; })->trigger();
    }

    /// The node refuses a foreign Origin: both lists and the node's identity.
    void error()
    {
        openAppSettings().setValue(SettingsKeys::sendOrigin, true);
        refreshButton()->click();
        awaitThat([this] { return window->statusLog().filter(u"  Error: "_s).size() == 3; }, u"no errors came"_s);
        folder.take(window.get(), "error"_L1);
        openAppSettings().setValue(SettingsKeys::sendOrigin, false);
    }

    /// Of a block that a pin above it keeps.
    void unpinFailed()
    {
        filterBox()->setCurrentText(u"Indirect"_s);
        awaitThat([this] { return status().startsWith(u"Loaded "_s); }, u"the indirect pins did not come"_s);
        table()->selectRow(2);
        menuEntry([](const QAction* action) { return action->text() == u"Unpin selected"_s; })->trigger();
        awaitThat([this] { return status().startsWith(u"Error: Unpin failed"_s); }, u"the unpin did not fail"_s);
        folder.take(window.get(), "unpin-failed"_L1);
        filterBox()->setCurrentIndex(0);
        awaitRows();
    }

    /// In a home folder of its own.
    void addDialog()
    {
        makeSample(home);
        inNext<AddToIpfsDialog>([this](AddToIpfsDialog& dialog) {
            auto* browser = dialog.findChild<QTreeView*>(); // the list of what is added is one too, and comes later
            const QPersistentModelIndex documents = rowThatComes(*browser, browser->rootIndex(), u"Documents"_s);
            browser->expand(documents);
            browser->setCurrentIndex(rowThatComes(*browser, documents, u"minutes.odt"_s));
            const auto* services = dialog.findChild<StatusLabel*>();
            awaitThat([services] { return !services->text().startsWith(u"Loading "_s); }, u"no services came"_s);
            dialog.addPaths(sampleSelection(home));
            showPathsOfAda(*dialog.findChild<QTreeWidget*>(), home.path());
            folder.take(&dialog, "add-dialog"_L1);
            dialog.accept();
        });
        menuEntry([](const QAction* action) {
            return action->text().remove(u'&').startsWith(u"Add to IPFS"_s);
        })->trigger();
    }

    /// Of the add that addDialog has begun.
    void addProgress()
    {
        bool isDone = false;
        inComing<ActionBox>([this, &isDone](ActionBox& box) {
            folder.take(&box, "add-result"_L1);
            box.accept();
            isDone = true;
        });
        auto* progress = window->findChild<QProgressDialog*>();
        need(progress, u"no progress is shown"_s);
        awaitThat([progress] { return progress->maximum() > 0 && progress->value() > progress->maximum() / 2; },
                  u"no progress came"_s);
        folder.keep(progress->grab(), "add-progress"_L1);
        awaitThat([&isDone] { return isDone; }, u"the add did not end"_s);
    }

    void tools()
    {
        const auto takeNamed = folder.taker();
        for (const auto pictures :
             {takeIpnsPictures, takeToolPictures, takeConfigPictures, takeSwarmPictures, takeHelpPictures})
            pictures(*window, takeNamed);
    }

    static std::unique_ptr<DemoNode> newNode()
    {
        DemoOptions options {.port = portForPictures(), .pins = pinCount, .looseBlocks = looseBlocks};
        options.remoteServices = {u"harbour"_s, u"orchard"_s};
        return std::make_unique<DemoNode>(options);
    }

    QTableView* table() const { return window->findChild<QTableView*>(); }
    QLabel* label(QLatin1StringView name) const { return window->findChild<QLabel*>(name); }
    QString status() const { return label("statusLabel"_L1)->text(); }
    QComboBox* boxCalled(QLatin1StringView name) const
    {
        const QList<QComboBox*> boxes = window->findChildren<QComboBox*>();
        const auto box = std::ranges::find(boxes, QString(name), &QComboBox::accessibleName);
        need(box != boxes.end(), u"there is no such choice: "_s + name);
        return *box;
    }
    QComboBox* contentBox() const { return boxCalled("Content"_L1); }
    QComboBox* filterBox() const { return boxCalled("Filter"_L1); }
    QPushButton* refreshButton() const { return window->findChild<QPushButton*>(u"refreshBtn"_s); }
    template <typename Test> QAction* menuEntry(const Test& test) const
    {
        const QList<QAction*> actions = window->menuBar()->findChildren<QAction*>();
        const auto entry = std::ranges::find_if(actions, test);
        need(entry != actions.end(), u"a menu's entry is not there"_s);
        return *entry;
    }
    QStringList cells(int section) const
    {
        QStringList texts;
        for (int row = 0; row < table()->model()->rowCount(); ++row)
            texts.append(table()->model()->index(row, section).data().toString());
        return texts;
    }

    void awaitRows() const
    {
        awaitThat([this] { return table()->model()->rowCount() == pinCount && refreshButton()->isEnabled(); },
                  u"the pins did not come"_s);
        awaitThat([this] { return metadataIsThere(); }, u"the metadata did not come"_s);
    }
    bool metadataIsThere() const
    {
        const QString all = QString::number(pinCount);
        return label("countLabel"_L1)->text().contains(u"Metadata loaded: %1/%1 "_s.arg(all))
            && !cells(PinModel::RefsColumn).contains(u"…"_s);
    }

    QModelIndex rowNamed(QLatin1StringView name) const
    {
        return table()->model()->index(static_cast<int>(cells(PinModel::NameColumn).indexOf(name)), 0);
    }
    void select(QLatin1StringView name) const { table()->selectRow(rowNamed(name).row()); }
    void rightClick(QLatin1StringView name) const
    {
        emit table()->customContextMenuRequested(table()->visualRect(rowNamed(name)).center());
    }

    /// The window that an entry of a row's menu opens.
    template <typename Dialog> Dialog* opened(QLatin1StringView name, const QString& entry) const
    {
        inNextMenu([&entry](QMenu& menu) {
            const QList<QAction*> actions = menu.actions();
            const auto action = std::ranges::find(actions, entry, &QAction::text);
            need(action != actions.end(), u"the menu has no such entry: "_s + entry);
            menu.close();
            (*action)->trigger();
        });
        rightClick(name);
        auto* dialog = window->findChild<Dialog*>();
        need(dialog, u"no window came after: "_s + entry);
        return dialog;
    }
    template <typename Dialog> void close() const
    {
        window->findChild<Dialog*>()->close();
        awaitThat([this] { return !window->findChild<Dialog*>(); }, u"a window did not close"_s);
    }
    QPushButton* saveButton() const { return window->findChild<PinContentsDialog*>()->findChild<QPushButton*>(); }

    void takeLog(QLatin1StringView name)
    {
        auto* log = window->findChild<LogDialog*>();
        need(log, u"no log came"_s);
        folder.take(log, name);
        close<LogDialog>();
    }

    PictureFolder folder;
    QTemporaryDir home {}; ///< with the files that are added
    std::unique_ptr<DemoNode> node;
    std::unique_ptr<MainWindow> window;
};

int main(int argc, char* argv[])
{
    const QApplication app(argc, argv);
    if (argc != 2) {
        std::fputs("usage: norvo-screenshots FOLDER\n", stderr);
        return 2;
    }
    QApplication::setWindowIcon(QIcon(u":/icons/app-icon.png"_s));
    QApplication::setCursorFlashTime(0); // the same in each run
    applyFusionLook();
    const QTemporaryDir settings; // nobody's own are shown or changed
    for (const auto format : {QSettings::NativeFormat, QSettings::IniFormat})
        QSettings::setPath(format, QSettings::UserScope, settings.path());
    QCoreApplication::setApplicationName(u"Norvo"_s);
    QCoreApplication::setApplicationVersion(u"1.1.3"_s);
    qInstallMessageHandler(failOnWarning);
    const PictureFolder folder(QString::fromLocal8Bit(argv[1]));
    takeFirstPictures(folder);
    Screenshots(folder).run();
    return 0;
}
