// SPDX-License-Identifier: MIT
#include "AddToIpfsDialog.h"

#include "FileTypeProvider.h"
#include "FlowLayout.h"
#include "LtrDelegate.h"
#include "StatusLabel.h"
#include "WidgetBuilders.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileSystemModel>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QShortcut>
#include <QStylePainter>
#include <QTreeView>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int outerMargin = 10;
constexpr int spacing = 8;
constexpr int blockSpacing = 6;
constexpr int checkSpacing = 16;
constexpr int browserShare = 3;
constexpr int listShare = 2;
constexpr int nicknameLetters = 16;
constexpr int destinationLetters = 24; // of the longest text, where there is no room for all of it
constexpr int nameLetters = 12;        // at the least
constexpr int columnGap = 20;
constexpr int textMargin = 4;

/// Shows as much of its current text as there is room for; the list of choices shows all of each.
class ElidingComboBox : public QComboBox
{
public:
    using QComboBox::QComboBox;

    void showPopup() override
    {
        view()->setMinimumWidth(view()->sizeHintForColumn(0));
        QComboBox::showPopup();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QStylePainter painter(this);
        QStyleOptionComboBox option;
        initStyleOption(&option);
        painter.drawComplexControl(QStyle::CC_ComboBox, option);
        const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
        option.currentText = fontMetrics().elidedText(currentText(), Qt::ElideRight, field.width() - textMargin);
        painter.drawControl(QStyle::CE_ComboBoxLabel, option);
    }
};

QLayout* newLabelledField(const QString& text, QWidget* field, int stretch = 0)
{
    auto* pair = new QHBoxLayout;
    pair->setSpacing(spacing);
    pair->addWidget(newLabelFor(text, field));
    pair->addWidget(field, stretch);
    return pair;
}

QCheckBox* newCheck(const QString& text, bool on, QWidget* parent)
{
    auto* check = new QCheckBox(text, parent);
    check->setChecked(on);
    return check;
}

/// Works while `view` has the focus, and before the dialog would take the key for its default button.
template <typename Slot> void bindKey(const QKeySequence& key, QWidget* view, AddToIpfsDialog* dialog, Slot slot)
{
    const auto* shortcut = new QShortcut(key, view, nullptr, nullptr, Qt::WidgetShortcut);
    QObject::connect(shortcut, &QShortcut::activated, dialog, slot);
}

} // namespace

/// Fields are made in the order in which they are read, which is that of the Tab key as well.
void AddToIpfsDialog::setupUi()
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(outerMargin, outerMargin, outerMargin, outerMargin);
    column->setSpacing(spacing);
    column->addWidget(newWrappedLabel(
        tr("Select files and/or directories from the browser, then add them to the selection list."), this));
    auto* trees = new QHBoxLayout;
    trees->setSpacing(spacing);
    trees->addLayout(newBrowserColumn(), browserShare);
    trees->addLayout(newListColumn(), listShare);
    column->addLayout(trees, 1);
    column->addWidget(new QLabel(tr("Add options"), this));
    column->addLayout(newOptionsBlock());

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(tr("&Add to IPFS"));
    ok->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &AddToIpfsDialog::onAcceptClicked);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
}

QLayout* AddToIpfsDialog::newBrowserColumn()
{
    setupBrowser();
    auto* column = new QVBoxLayout;
    column->addWidget(newLabelFor(tr("&Filesystem browser"), browserTree));
    column->addWidget(browserTree);
    column->addLayout(newButtonRow({newButton(tr("Add &selected"), &AddToIpfsDialog::onAddFromBrowser),
                                    newButton(tr("Add f&iles…"), &AddToIpfsDialog::onAddFiles),
                                    newButton(tr("Add fol&der…"), &AddToIpfsDialog::onAddFolder)}));
    return column;
}

void AddToIpfsDialog::setupBrowser()
{
    fileSystemModel = new QFileSystemModel(this);
    fileSystemModel->setIconProvider(fileTypes.get());
    fileSystemModel->setFilter(QDir::AllEntries | QDir::AllDirs | QDir::NoDotAndDotDot);
    const QModelIndex home = fileSystemModel->setRootPath(QDir::homePath());

    browserTree = new QTreeView(this);
    browserTree->setObjectName("browserTree"_L1);
    browserTree->setAccessibleName(tr("Filesystem browser"));
    browserTree->setModel(fileSystemModel);
    browserTree->setRootIndex(home);
    browserTree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    browserTree->setAlternatingRowColors(true);
    browserTree->setUniformRowHeights(true);
    browserTree->setTextElideMode(Qt::ElideMiddle);
    browserTree->setSortingEnabled(true);
    browserTree->sortByColumn(0, Qt::AscendingOrder);

    showFocusAtFrame(browserTree);
    setupBrowserColumns();
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter})
        bindKey(key, browserTree, this, &AddToIpfsDialog::onAddFromBrowser);
}

/// The name gets what the others leave.
void AddToIpfsDialog::setupBrowserColumns()
{
    browserTree->header()->setStretchLastSection(false);
    browserTree->header()->setMinimumSectionSize(nameLetters * browserTree->fontMetrics().averageCharWidth());
    browserTree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    const QString date = QLocale::system().toString(QDateTime({2028, 12, 28}, {22, 58, 58}), QLocale::ShortFormat);
    const QStringList widest {u"999.99 MiB"_s, tr("JPEG image…", "a type of file, of usual length"), date};
    for (int column = 0; column < widest.size(); ++column) {
        const int width = browserTree->fontMetrics().horizontalAdvance(widest.at(column)) + columnGap;
        browserTree->header()->resizeSection(column + 1, width);
    }
}

QLayout* AddToIpfsDialog::newListColumn()
{
    setupList();
    auto* column = new QVBoxLayout;
    column->addWidget(newLabelFor(tr("Items to &upload"), selectedTree));
    column->addWidget(selectedTree);
    auto* row = newButtonRow({newButton(tr("&Remove selected"), &AddToIpfsDialog::onRemoveSelected),
                              newButton(tr("Cl&ear all"), &AddToIpfsDialog::onClearAll)});
    column->addLayout(row);
    return column;
}

void AddToIpfsDialog::setupList()
{
    selectedTree = new QTreeWidget(this);
    selectedTree->setAccessibleName(tr("Items to upload"));
    selectedTree->setHeaderLabels({tr("Path"), tr("Type")});
    selectedTree->header()->setStretchLastSection(false);
    selectedTree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    selectedTree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    selectedTree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    selectedTree->setAlternatingRowColors(true);
    selectedTree->setUniformRowHeights(true);
    selectedTree->setRootIsDecorated(false);
    selectedTree->setTextElideMode(Qt::ElideMiddle); // the file's own name is at the end
    selectedTree->setItemDelegateForColumn(0, new LtrDelegate(selectedTree));
    showFocusAtFrame(selectedTree);
    bindKey(Qt::Key_Delete, selectedTree, this, &AddToIpfsDialog::onDeletePressed);
}

QLayout* AddToIpfsDialog::newButtonRow(const QList<QWidget*>& buttons)
{
    auto* row = new FlowLayout;
    row->addWidgets(buttons);
    return row;
}

QPushButton* AddToIpfsDialog::newButton(const QString& text, void (AddToIpfsDialog::*slot)())
{
    auto* button = new QPushButton(text, this);
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

QLayout* AddToIpfsDialog::newOptionsBlock()
{
    auto* block = new QVBoxLayout;
    block->setSpacing(blockSpacing);
    block->addLayout(newAddRow());
    block->addLayout(newPinRow());
    auto* note = newWrappedLabel(tr("<small><i>Remote service uses the Kubo service nickname, not an API key.\n"
                                    "Configure API endpoint/token in File -> Remote Services.</i></small>"),
                                 this);
    note->setTextFormat(Qt::RichText);
    block->addWidget(note);
    remoteServicesStatusLabel = new StatusLabel(this);
    remoteServicesStatusLabel->setObjectName("remoteServicesStatusLabel"_L1);
    remoteServicesStatusLabel->showHint(tr("Loading configured remote services..."));
    block->addWidget(remoteServicesStatusLabel);
    unpinLocalCheck = newCheck(tr("Unpin local after re&mote pin is confirmed"), false, this);
    block->addWidget(unpinLocalCheck);
    return block;
}

QLayout* AddToIpfsDialog::newAddRow()
{
    wrapCheck = newCheck(tr("&Wrap with directory"), true, this);
    pinCheck = newCheck(tr("&Pin"), true, this);
    onlyHashCheck = newCheck(tr("&Only hash (do not store blocks)"), false, this);
    cidVersionCombo = new QComboBox(this);
    cidVersionCombo->addItem(u"CIDv1"_s, 1);
    cidVersionCombo->addItem(u"CIDv0"_s, 0);

    auto* row = new FlowLayout;
    row->setSpacing(checkSpacing);
    row->addWidgets({wrapCheck, pinCheck, onlyHashCheck});
    row->addStretch();
    row->addLayout(newLabelledField(tr("CID &version:"), cidVersionCombo));
    return row;
}

QLayout* AddToIpfsDialog::newPinRow()
{
    pinDestinationCombo = new ElidingComboBox(this);
    pinDestinationCombo->addItem(tr("Local only"), u"local"_s);
    pinDestinationCombo->addItem(tr("Local + Remote"), u"both"_s);
    pinDestinationCombo->addItem(tr("Remote only (unpin local after remote pin)"), u"remote"_s);
    pinDestinationCombo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    pinDestinationCombo->setMinimumContentsLength(destinationLetters);
    setupServiceFields();

    auto* row = new FlowLayout;
    row->setSpacing(spacing);
    row->addLayout(newLabelledField(tr("Pin des&tination:"), pinDestinationCombo, 1));
    row->addLayout(newLabelledField(tr("Remote service &nickname:"), remoteServiceCombo, 1));
    row->addLayout(newLabelledField(tr("Remote pin &label (optional):"), remotePinLabelEdit, 1));
    return row;
}

void AddToIpfsDialog::setupServiceFields()
{
    remoteServiceCombo = new QComboBox(this);
    remoteServiceCombo->setEditable(true);
    remoteServiceCombo->setInsertPolicy(QComboBox::NoInsert);
    remoteServiceCombo->setSizeAdjustPolicy(QComboBox::AdjustToContentsOnFirstShow);
    remoteServiceCombo->setMinimumContentsLength(nicknameLetters);
    remoteServiceCombo->lineEdit()->setPlaceholderText(tr("e.g. pinata-prod (configured in Kubo)"));
    remotePinLabelEdit = new QLineEdit(this);
    remotePinLabelEdit->setPlaceholderText(tr("e.g. invoice-2026-03-17"));
    makeRoomForPlaceholder(remotePinLabelEdit);
    for (QLineEdit* edit : {remoteServiceCombo->lineEdit(), remotePinLabelEdit})
        edit->setAcceptDrops(false); // dropped files are the dialog's
}
