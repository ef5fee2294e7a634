// Takes the pictures of the user guide, of the real window and its dialogs before a demo node, for `make screenshots`.

#include "Appearance.h"
#include "DemoNode.h"
#include "IndirectPinsDialog.h"
#include "LogDialog.h"
#include "ModalAnswer.h"
#include "PinContentsDialog.h"
#include "PinModel.h"
#include "SettingsDialog.h"
#include "WindowTest.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QPainter>
#include <QProgressBar>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize windowSize(1280, 800);
constexpr quint16 usualPort = 5001; // so that the pictures show what most people see
constexpr int pinCount = 60;
constexpr int looseBlocks = 12;
constexpr int patience = 30'000;              // milliseconds
constexpr int repaintTime = 50;               // milliseconds; after it sizes and scroll bars have settled
constexpr qint64 largestPicture = 150 * 1024; // bytes
constexpr int strongestCompression = 0;       // as a quality
constexpr qsizetype paletteSize = 256;

constexpr auto album = "photos summer 2024"_L1;
constexpr auto archive = "photo archive"_L1;

template <typename Condition> bool comes(const Condition& condition)
{
    return QTest::qWaitFor(condition, patience);
}

/// Colours with the same one are hardly told apart.
QRgb roughColor(QRgb color)
{
    return color & 0xe0e0e0;
}

/// The picture's most frequent colours; before all others the most frequent one of each rough colour, since the
/// connection's dot may be small but is to stay green.
QList<QRgb> paletteOf(const QImage& picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    QList<QRgb> colors = counts.keys();
    std::ranges::sort(colors, {}, [&counts](QRgb color) { return std::pair(-counts.value(color), color); });
    QList<QRgb> first;
    QList<QRgb> others;
    QSet<QRgb> seen;
    for (const QRgb color : std::as_const(colors)) {
        const bool isNew = !seen.contains(roughColor(color));
        (isNew ? first : others).append(color);
        seen.insert(roughColor(color));
    }
    return (first + others).first(std::min(colors.size(), paletteSize));
}

/// Takes a third of the room of the full colours, and is not to be seen.
QImage withPalette(const QImage& picture)
{
    return picture.convertToFormat(QImage::Format_Indexed8, paletteOf(picture), Qt::ThresholdDither | Qt::AvoidDither);
}

} // namespace

/// Each function takes one picture; what does not come in time makes it fail.
class Screenshots : public WindowTest
{
    Q_OBJECT

public:
    explicit Screenshots(const QString& newFolder)
        : folder(newFolder)
    {
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QDir().mkpath(folder), "the folder can't be made");
        node = newNode();
        QVERIFY2(node->port() != 0, "the demo node can't listen");
        open(*node);
        window->showNormal();
        window->resize(windowSize);
        window->move(0, 0);
        QVERIFY2(waitForRows(pinCount), "the pins did not come");
        QVERIFY2(comes([this] { return metadataIsThere(); }), "the metadata did not come");
        QVERIFY2(comes([this] { return status() == u"Ready"_s; }), "the status did not go back to Ready");
        table()->sortByColumn(PinModel::NameColumn, Qt::DescendingOrder);
    }
    void cleanupTestCase() { close(); }
    void init()
    {
        failOnWarnings();
        QCursor::setPos(windowSize.width() - 1, windowSize.height() - 1); // over nothing that would light up
    }

    void mainWindow()
    {
        select(album);
        take(window.get(), "main-window"_L1);
    }

    void contextMenu()
    {
        QPixmap picture;
        QTimer::singleShot(0, window.get(), [this, &picture] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            menu->setActiveAction(menu->actions().value(1));
            picture = window->grab();
            QPainter(&picture).drawPixmap(window->mapFromGlobal(menu->pos()), menu->grab());
            menu->close();
        });
        rightClick(album);
        QVERIFY2(!picture.isNull(), "no context menu came");
        keep(picture, "context-menu"_L1);
    }

    void indirectPins()
    {
        auto* dialog = opened<IndirectPinsDialog>(album, u"Show indirect pins"_s);
        QVERIFY2(dialog, "no window with the indirect pins came");
        auto* list = dialog->findChild<QTableView*>();
        QVERIFY2(comes([list] { return list->model()->rowCount() > 1; }), "the indirect pins did not come");
        list->selectRow(2);
        take(dialog, "indirect-pins"_L1);
        QVERIFY(closed<IndirectPinsDialog>());
    }

    void pinContents()
    {
        auto* dialog = opened<PinContentsDialog>(archive, u"List files / Export…"_s);
        QVERIFY2(dialog, "no window with the contents came");
        QVERIFY2(comes([this] { return saveButton()->isEnabled(); }), "the contents did not come");
        auto* root = dialog->findChild<QTreeWidget*>()->topLevelItem(0);
        root->child(1)->setExpanded(true);
        take(dialog, "pin-contents"_L1);
    }

    /// In the window that pinContents has opened. The folder is not in the picture.
    void pinContentsSaving()
    {
        auto* dialog = window->findChild<PinContentsDialog*>();
        QVERIFY2(dialog, "there is no window with the contents");
        const QTemporaryDir target;
        auto* progress = dialog->findChild<QProgressBar*>();
        QPixmap picture;
        // Queued: by then the next download has begun, and the status tells of that.
        connect(
            progress, &QProgressBar::valueChanged, dialog,
            [dialog, progress, &picture](int done) {
                if (picture.isNull() && done > progress->maximum() / 2)
                    picture = dialog->grab();
            },
            Qt::QueuedConnection);
        const ModalAnswer<QFileDialog> answer([&target](QFileDialog& picker) {
            picker.selectFile(target.path());
            static_cast<QDialog&>(picker).accept();
        });
        saveButton()->click();
        QVERIFY2(comes([&] { return !picture.isNull() && saveButton()->isEnabled(); }), "the files were not saved");
        keep(picture, "pin-contents-saving"_L1);
        QVERIFY(closed<PinContentsDialog>());
    }

    void notPinned()
    {
        auto* content = field<QComboBox>("Content:"_L1);
        content->setCurrentIndex(1);
        QVERIFY2(comes([this] { return status().startsWith(u"Loaded "_s); }), "the blocks did not come");
        table()->sortByColumn(PinModel::CidColumn, Qt::AscendingOrder);
        take(window.get(), "not-pinned"_L1);
        content->setCurrentIndex(0);
        QVERIFY2(waitForRows(pinCount) && comes([this] { return metadataIsThere(); }), "the pins did not come again");
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
        const ModalAnswer<SettingsDialog> answer([this](SettingsDialog& dialog) {
            for (auto* button : dialog.findChildren<QPushButton*>()) {
                if (button->text() == u"Restore Defaults"_s)
                    button->click(); // the port is the usual one, whatever the demo node has
            }
            take(&dialog, "settings"_L1);
            dialog.reject();
        });
        const QList<QAction*> actions = window->menuBar()->findChildren<QAction*>();
        const auto settings
            = std::ranges::find(actions, QKeySequence(Qt::CTRL | Qt::Key_Comma), [](auto* a) { return a->shortcut(); });
        QVERIFY2(settings != actions.end(), "there is no entry for the settings");
        (*settings)->trigger();
        QVERIFY2(answer.wasGiven(), "no settings came");
    }

    /// The node refuses a foreign Origin: both lists and the node's identity.
    void error()
    {
        setting(SettingsKeys::sendOrigin, true);
        refreshButton()->click();
        QVERIFY2(comes([this] { return window->statusLog().filter(u"  Error: "_s).size() == 3; }), "no errors came");
        take(window.get(), "error"_L1);
    }

private:
    static std::unique_ptr<FakeNode> newNode()
    {
        DemoOptions options {.port = usualPort, .pins = pinCount, .looseBlocks = looseBlocks};
        auto made = std::make_unique<DemoNode>(options);
        if (made->port() == usualPort)
            return made;
        options.port = 0; // somebody's own node may be there
        return std::make_unique<DemoNode>(options);
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

    /// The window behind an entry of a row's menu; null if none comes.
    template <typename Dialog> Dialog* opened(QLatin1StringView name, const QString& entry) const
    {
        const MenuAnswer answer(entry);
        rightClick(name);
        return window->findChild<Dialog*>();
    }
    template <typename Dialog> bool closed() const
    {
        window->findChild<Dialog*>()->close();
        return comes([this] { return !window->findChild<Dialog*>(); });
    }
    QPushButton* saveButton() const { return window->findChild<PinContentsDialog*>()->findChild<QPushButton*>(); }

    void takeLog(QLatin1StringView name)
    {
        auto* log = window->findChild<LogDialog*>();
        QVERIFY2(log, "no log came");
        take(log, name);
        QVERIFY(closed<LogDialog>());
    }

    void take(QWidget* widget, QLatin1StringView name)
    {
        QVERIFY2(QTest::qWaitForWindowExposed(widget, patience), "a window did not come up");
        QTest::qWait(repaintTime);
        keep(widget->grab(), name);
    }

    void keep(const QPixmap& picture, QLatin1StringView name)
    {
        const QString path = u"%1/%2.png"_s.arg(folder, name);
        const QImage image = withPalette(picture.toImage().convertToFormat(QImage::Format_RGB32));
        QVERIFY2(image.save(path, "PNG", strongestCompression), qPrintable(u"can't write "_s + path));
        QVERIFY2(QFileInfo(path).size() <= largestPicture, qPrintable(path + u" is too large"_s));
    }

    QString folder;
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
    Screenshots screenshots(QString::fromLocal8Bit(argv[1]));
    return runTestObject(screenshots, 1, argv);
}

#include "screenshots.moc"
