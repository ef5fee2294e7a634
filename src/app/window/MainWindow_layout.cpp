#include "MainWindow.h"

#include "Appearance.h"
#include "ContentMode.h"
#include "PinFilterProxyModel.h"
#include "PinModel.h"
#include "PlainText.h"
#include "SplitActionButton.h"
#include "WidgetBuilders.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QStatusBar>
#include <QTableView>
#include <QToolBar>
#include <QToolButton>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize toolBarIconSize(20, 20);
constexpr int searchMinimumWidth = 240;
constexpr int statusMinimumWidth = 200;
constexpr int rowHeight = 24;
constexpr int toolButtonGap = 6;
constexpr int centralSpacing = 6;
constexpr int statsSpacing = 4;
const QColor placeholderColor(85, 85, 85);

struct Section
{
    int column;
    int width; ///< pixels at the start, 0 for Qt's own
    QHeaderView::ResizeMode mode;
};

constexpr std::array sections {Section {PinModel::CidColumn, 420, QHeaderView::Interactive},
                               Section {PinModel::RefsColumn, 52, QHeaderView::Interactive},
                               Section {PinModel::TypeColumn, 88, QHeaderView::Interactive},
                               Section {PinModel::SizeColumn, 100, QHeaderView::Interactive},
                               Section {PinModel::NameColumn, 0, QHeaderView::Stretch}};

/// A caption in the tool bar that belongs to the field behind it; it ends in a colon.
void addCaption(QToolBar* bar, const QString& text, QWidget* field)
{
    auto* caption = new QLabel(text, bar);
    caption->setBuddy(field);
    field->setAccessibleName(text.trimmed().chopped(1)); // else a combo box is called by what it shows
    bar->addWidget(caption);
}

/// Lets the user select the label's text, and copy all of it through a menu of one entry.
void makeCopyable(QLabel* label, const QString& entry)
{
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setCursor(Qt::IBeamCursor);
    label->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(label, &QWidget::customContextMenuRequested, label, [label, entry](const QPoint& position) {
        auto* menu = new QMenu(label);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->addAction(entry, label, [label] { QGuiApplication::clipboard()->setText(label->text()); });
        menu->popup(label->mapToGlobal(position));
    });
}

} // namespace

void MainWindow::setupToolBar()
{
    auto* bar = addToolBar(tr("Main"));
    bar->setObjectName(u"mainToolBar"_s);
    bar->setMovable(false);
    bar->setIconSize(toolBarIconSize);
    addLoadButtons(bar);
    bar->addSeparator();
    addListSelectors(bar);
    bar->addSeparator();
    addSearchField(bar);
    bar->addSeparator();
    addToolWindowButtons(bar);
}

/// The button for what the bar has no room for. To be called once the other controls are there: Qt takes an order that
/// holds in a circle for one that is set already.
void MainWindow::setupToolBarOverflow()
{
    auto* more = findChild<QToolButton*>(u"qt_toolbar_ext_button"_s);
    if (!more)
        return;
    more->setIcon(overflowIcon(palette()));
    more->setToolTip(tr("More"));
    more->setAccessibleName(tr("More tools"));
    more->setFocusPolicy(Qt::StrongFocus); // its tools are reached by no other way
    const QWidget* lastTool = findChildren<SplitActionButton*>().constLast();
    setTabOrder(lastTool->findChildren<QPushButton*>().constLast(), more);
}

void MainWindow::addLoadButtons(QToolBar* bar)
{
    refreshButton = new QPushButton(tr("⟳  Refresh"), bar);
    refreshButton->setObjectName(u"refreshBtn"_s);
    connect(refreshButton, &QPushButton::clicked, this, &MainWindow::onRefreshClicked);
    bar->addWidget(refreshButton);

    addButton = new QPushButton(tr("+  Add to IPFS"), bar);
    addButton->setObjectName(u"actionBtn"_s);
    addButton->setEnabled(false);
    bar->addWidget(addButton);
}

void MainWindow::addListSelectors(QToolBar* bar)
{
    contentCombo = new QComboBox(bar);
    contentCombo->addItem(tr("Pinned"), QString(ContentMode::pinned));
    contentCombo->addItem(tr("Not pinned"), QString(ContentMode::unpinned));
    connect(contentCombo, &QComboBox::currentIndexChanged, this, &MainWindow::onContentChanged);
    addCaption(bar, tr("  Content: "), contentCombo);
    bar->addWidget(contentCombo);
    bar->addSeparator();

    filterCombo = new QComboBox(bar);
    filterCombo->addItem(tr("Recursive+Direct"), QString(PinType::recursiveAndDirect));
    filterCombo->addItem(tr("All types"), QString(PinType::all));
    filterCombo->addItem(tr("Recursive"), QString(PinType::recursive));
    filterCombo->addItem(tr("Direct"), QString(PinType::direct));
    filterCombo->addItem(tr("Indirect"), QString(PinType::indirect));
    filterCombo->setCurrentIndex(0);
    connect(filterCombo, &QComboBox::currentIndexChanged, this, &MainWindow::onFilterChanged);
    addCaption(bar, tr("  Filter: "), filterCombo);
    bar->addWidget(filterCombo);
}

void MainWindow::addSearchField(QToolBar* bar)
{
    searchEdit = new QLineEdit(bar);
    searchEdit->setPlaceholderText(tr("Filter by CID…"));
    searchEdit->setMinimumWidth(searchMinimumWidth);
    searchEdit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    searchEdit->setClearButtonEnabled(true);
    QPalette palette = searchEdit->palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        palette.setColor(group, QPalette::PlaceholderText, placeholderColor);
    searchEdit->setPalette(palette);
    connect(searchEdit, &QLineEdit::textChanged, this, &MainWindow::onSearchTextChanged);
    addCaption(bar, tr("  Search: "), searchEdit);
    bar->addWidget(searchEdit);

    const auto addMode = [this, bar](const QString& text, PinFilterProxyModel::SearchMode mode, const QString& hint) {
        auto* radio = new QRadioButton(text, bar);
        connect(radio, &QRadioButton::toggled, this, [this, mode, hint](bool on) {
            if (on)
                setSearchMode(mode, hint);
        });
        bar->addWidget(radio);
        return radio;
    };
    searchCidRadio = addMode(tr("CID"), PinFilterProxyModel::SearchByCid, tr("Filter by CID…"));
    searchNameRadio = addMode(tr("Name"), PinFilterProxyModel::SearchByName, tr("Filter by name…"));
    searchCidRadio->setAccessibleName(tr("Search in CIDs"));
    searchNameRadio->setAccessibleName(tr("Search in names"));
    const QSignalBlocker initial(searchCidRadio);
    searchCidRadio->setChecked(true);
}

void MainWindow::addToolWindowButtons(QToolBar* bar)
{
    struct Opener
    {
        const char* caption;
        ToolWindowId id;
        void (MainWindow::*show)(AuxWindowMode mode);
    };
    static constexpr std::array openers {
        Opener {QT_TR_NOOP("Repo stats"), ToolWindowId::Gc, &MainWindow::showGcDialog},
        Opener {QT_TR_NOOP("DHT stats"), ToolWindowId::DhtStats, &MainWindow::showDhtStatsDialog},
        Opener {QT_TR_NOOP("Network"), ToolWindowId::Network, &MainWindow::showNetworkDialog},
        Opener {QT_TR_NOOP("Swarm"), ToolWindowId::Swarm, &MainWindow::showSwarmDialog},
        Opener {QT_TR_NOOP("Kubo config"), ToolWindowId::Config, &MainWindow::showConfigDialog},
        Opener {QT_TR_NOOP("Status log"), ToolWindowId::StatusLog, &MainWindow::showStatusLogDialog},
        Opener {QT_TR_NOOP("RPC log"), ToolWindowId::RpcLog, &MainWindow::showRpcLogDialog}};
    for (const Opener& opener : openers) {
        auto* button = new SplitActionButton(tr(opener.caption), bar);
        button->setPrimaryToolTip(tr("Open as child window"));
        button->setSecondaryToolTip(tr("Open in new window"));
        button->setEnabled(hasToolWindow(opener.id));
        const auto show = opener.show;
        connect(button, &SplitActionButton::primaryClicked, this, [this, show] { (this->*show)(AuxChildWindow); });
        connect(button, &SplitActionButton::secondaryClicked, this, [this, show] { (this->*show)(AuxNewWindow); });
        bar->addWidget(button);
        if (&opener == &openers.back())
            break;
        auto* gap = new QWidget(bar);
        gap->setFixedWidth(toolButtonGap);
        bar->addWidget(gap);
    }
}

void MainWindow::setupCentralWidget()
{
    auto* central = new QWidget(this);
    auto* column = new QVBoxLayout(central);
    column->setContentsMargins(8, 8, 8, 4);
    column->setSpacing(centralSpacing);

    notificationLabel = newPlainLabel({}, central);
    notificationLabel->setObjectName(u"notification"_s);
    notificationLabel->setWordWrap(true);
    notificationLabel->setAlignment(Qt::AlignCenter);
    notificationLabel->setMinimumWidth(1); // a long address in a message is not to widen the window
    makeCopyable(notificationLabel, tr("Copy"));
    notificationLabel->hide();
    column->addWidget(notificationLabel);

    setupPinTable();
    column->addWidget(pinTable, 1);
    column->addWidget(newStatsFrame());
    setCentralWidget(central);
}

void MainWindow::setupPinTable()
{
    pinTable = new QTableView(this);
    pinTable->installEventFilter(this);
    pinTable->viewport()->installEventFilter(this);
    pinTable->setModel(proxyModel);
    pinTable->setSortingEnabled(true);
    makeRowTable(pinTable);
    pinTable->setAccessibleName(tr("Pins"));
    pinTable->verticalHeader()->setDefaultSectionSize(rowHeight);

    QHeaderView* header = pinTable->horizontalHeader();
    header->setDefaultAlignment(Qt::AlignLeft);
    for (const Section& section : sections) {
        header->setSectionResizeMode(section.column, section.mode);
        if (section.width > 0)
            header->resizeSection(section.column, section.width);
    }
    pinTable->sortByColumn(PinModel::RefsColumn, Qt::AscendingOrder);

    connect(pinTable, &QWidget::customContextMenuRequested, this, &MainWindow::onTableContextMenuRequested);
    connect(pinTable, &QTableView::doubleClicked, this, &MainWindow::onTableDoubleClicked);
    connect(pinTable->selectionModel(), &QItemSelectionModel::selectionChanged, this, &MainWindow::onSelectionChanged);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        const auto* open = new QShortcut(key, pinTable, nullptr, nullptr, Qt::WidgetShortcut);
        connect(open, &QShortcut::activated, this, &MainWindow::openCurrentRow);
    }
}

QWidget* MainWindow::newStatsFrame()
{
    auto* frame = new QFrame(this);
    frame->setObjectName(u"statsFrame"_s);
    auto* column = new QVBoxLayout(frame);
    column->setContentsMargins(4, 2, 4, 2);
    column->setSpacing(statsSpacing);

    auto* nodeRow = new QHBoxLayout;
    nodeRow->setContentsMargins(0, 0, 0, 0);
    connectionDot = new ConnectionStatusDot(frame);
    connectionDot->setObjectName(u"statusIcon"_s);
    setConnectionDotState(ConnectionStatusDot::Unknown, tr("Waiting for first connection check"));
    peerIdLabel = newPlainLabel(tr("Not connected"), frame);
    peerIdLabel->setObjectName(u"peerIdLabel"_s);
    peerIdLabel->installEventFilter(this);
    nodeRow->addWidget(connectionDot);
    nodeRow->addWidget(peerIdLabel);
    nodeRow->addStretch();
    column->addLayout(nodeRow);

    auto* texts = new QWidget(frame);
    texts->setObjectName(u"statsTextColumn"_s);
    texts->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
    auto* lines = new QVBoxLayout(texts);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(0);
    statsLine1Label = newStatsLine(u"statsLine1"_s, {});
    statsLine1Label->hide();
    countLabel = newStatsLine(u"countLabel"_s, tr("No pins loaded"));
    lines->addWidget(statsLine1Label);
    lines->addWidget(countLabel);
    column->addWidget(texts);
    return frame;
}

QLabel* MainWindow::newStatsLine(const QString& name, const QString& text)
{
    QLabel* line = newPlainLabel(text, this);
    line->setObjectName(name);
    line->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    line->setWordWrap(true);
    line->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
    return line;
}

void MainWindow::setupStatusBar()
{
    statusLabel = newPlainLabel({}, this);
    statusLabel->setObjectName(u"statusLabel"_s);
    statusLabel->setMinimumWidth(statusMinimumWidth);
    makeCopyable(statusLabel, tr("Copy status"));
    statusBar()->addWidget(statusLabel, 1);
    setStatusMessage(tr("Ready"));
}
