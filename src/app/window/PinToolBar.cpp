// SPDX-License-Identifier: MIT
#include "PinToolBar.h"

#include "Appearance.h"
#include "ContentMode.h"
#include "PinEntry.h"
#include "SplitActionButton.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize iconSide(20, 20);
constexpr int searchMinimumWidth = 240;
constexpr int toolButtonGap = 6;
const QColor placeholderColor(85, 85, 85);

void selectData(QComboBox* combo, const QString& data)
{
    if (const int item = combo->findData(data); item >= 0)
        combo->setCurrentIndex(item);
}

} // namespace

PinToolBar::PinToolBar(const ToolWindows& tools, QWidget* parent)
    : QToolBar(parent)
{
    setWindowTitle(tr("Main"));
    setObjectName(u"mainToolBar"_s);
    setMovable(false);
    setIconSize(iconSide);
    addLoadButtons();
    addSeparator();
    addListSelectors();
    addSeparator();
    addSearchField();
    addSeparator();
    addToolWindowButtons(tools);
}

void PinToolBar::setupOverflow()
{
    auto* more = overflowButton();
    if (!more)
        return;
    more->setIcon(overflowIcon(palette()));
    more->setToolTip(tr("More"));
    more->setAccessibleName(tr("More tools"));
    more->setFocusPolicy(Qt::StrongFocus); // its tools are reached by no other way
    const QWidget* lastTool = findChildren<SplitActionButton*>().constLast();
    setTabOrder(lastTool->findChildren<QPushButton*>().constLast(), more);
}

/// Null if Qt has it no more.
QToolButton* PinToolBar::overflowButton() const
{
    return findChild<QToolButton*>(u"qt_toolbar_ext_button"_s);
}

void PinToolBar::addLoadButtons()
{
    refreshButton = new QPushButton(tr("⟳  Refresh"), this);
    refreshButton->setObjectName(u"refreshBtn"_s);
    connect(refreshButton, &QPushButton::clicked, this, &PinToolBar::refreshClicked);
    addWidget(refreshButton);

    addButton = new QPushButton(tr("+  Add to IPFS"), this);
    addButton->setObjectName(u"actionBtn"_s);
    connect(addButton, &QPushButton::clicked, this, &PinToolBar::addClicked);
    addWidget(addButton);
}

void PinToolBar::addListSelectors()
{
    contentCombo = new QComboBox(this);
    contentCombo->addItem(tr("Pinned"), QString(ContentMode::pinned));
    contentCombo->addItem(tr("Not pinned"), QString(ContentMode::unpinned));
    connect(contentCombo, &QComboBox::currentIndexChanged, this, &PinToolBar::contentChanged);
    addCaption(tr("  Content: "), contentCombo);
    addWidget(contentCombo);
    addSeparator();

    filterCombo = new QComboBox(this);
    filterCombo->addItem(tr("Recursive+Direct"), QString(PinType::recursiveAndDirect));
    filterCombo->addItem(tr("All types"), QString(PinType::all));
    filterCombo->addItem(tr("Recursive"), QString(PinType::recursive));
    filterCombo->addItem(tr("Direct"), QString(PinType::direct));
    filterCombo->addItem(tr("Indirect"), QString(PinType::indirect));
    filterCombo->setCurrentIndex(0);
    connect(filterCombo, &QComboBox::currentIndexChanged, this, &PinToolBar::filterChanged);
    addCaption(tr("  Filter: "), filterCombo);
    addWidget(filterCombo);
}

void PinToolBar::addSearchField()
{
    searchEdit = new QLineEdit(this);
    searchEdit->setPlaceholderText(tr("Filter by CID…"));
    searchEdit->setMinimumWidth(searchMinimumWidth);
    searchEdit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    searchEdit->setClearButtonEnabled(true);
    searchEdit->setAcceptDrops(false); // files are dropped on the window
    for (auto* clear : searchEdit->findChildren<QToolButton*>())
        clear->setAccessibleName(tr("Clear the search"));
    QPalette colors = searchEdit->palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        colors.setColor(group, QPalette::PlaceholderText, placeholderColor);
    searchEdit->setPalette(colors);
    connect(searchEdit, &QLineEdit::textChanged, this, &PinToolBar::searchTextChanged);
    const auto* leave = new QShortcut(Qt::Key_Escape, searchEdit, nullptr, nullptr, Qt::WidgetShortcut);
    connect(leave, &QShortcut::activated, this, &PinToolBar::leaveSearch);
    addCaption(tr("  Search: "), searchEdit);
    addWidget(searchEdit);

    searchCidRadio = addSearchMode(tr("CID"), PinFilterProxyModel::SearchByCid, tr("Filter by CID…"));
    searchNameRadio = addSearchMode(tr("Name"), PinFilterProxyModel::SearchByName, tr("Filter by name…"));
    searchCidRadio->setAccessibleName(tr("Search in CIDs"));
    searchNameRadio->setAccessibleName(tr("Search in names"));
    const QSignalBlocker initial(searchCidRadio);
    searchCidRadio->setChecked(true);
}

QRadioButton* PinToolBar::addSearchMode(const QString& text, PinFilterProxyModel::SearchMode mode, const QString& hint)
{
    auto* radio = new QRadioButton(text, this);
    connect(radio, &QRadioButton::toggled, this, [this, mode, hint](bool on) {
        if (!on)
            return;
        searchEdit->setPlaceholderText(hint);
        emit searchModeChanged(mode);
    });
    addWidget(radio);
    return radio;
}

void PinToolBar::addToolWindowButtons(const ToolWindows& tools)
{
    for (const ToolWindows::Id id : ToolWindows::onToolBar) {
        auto* button = new SplitActionButton(ToolWindows::caption(id).remove(u'&'), this);
        button->setPrimaryToolTip(tr("Open as child window"));
        button->setSecondaryToolTip(tr("Open in new window"));
        button->setEnabled(tools.canShow(id));
        connect(button, &SplitActionButton::primaryClicked, this,
                [this, id] { emit toolWindowRequested(id, ToolWindows::AuxChildWindow); });
        connect(button, &SplitActionButton::secondaryClicked, this,
                [this, id] { emit toolWindowRequested(id, ToolWindows::AuxNewWindow); });
        addWidget(button);
        if (id == ToolWindows::onToolBar.back())
            break;
        auto* gap = new QWidget(this);
        gap->setFixedWidth(toolButtonGap);
        addWidget(gap);
    }
}

/// A caption that belongs to the field after it; it ends in a colon.
void PinToolBar::addCaption(const QString& text, QWidget* field)
{
    auto* caption = new QLabel(text, this);
    caption->setBuddy(field);
    field->setAccessibleName(text.trimmed().chopped(1)); // else a combo box is called by what it shows
    addWidget(caption);
}

bool PinToolBar::isRefreshing() const
{
    return !refreshButton->isEnabled();
}

void PinToolBar::setRefreshing(bool on)
{
    refreshButton->setEnabled(!on);
    refreshButton->setText(on ? tr("⟳  Loading…") : tr("⟳  Refresh"));
}

bool PinToolBar::refreshHasFocus() const
{
    return refreshButton->hasFocus();
}

void PinToolBar::setAddEnabled(bool on)
{
    addButton->setEnabled(on);
}

QString PinToolBar::contentMode() const
{
    return contentCombo->currentData().toString();
}

QString PinToolBar::typeFilter() const
{
    return filterCombo->currentData().toString();
}

void PinToolBar::focusSearch()
{
    if (auto* more = overflowButton(); more && !searchEdit->isVisible())
        more->click(); // shows what the bar has no room for; the focus comes with it
    searchEdit->setFocus(Qt::ShortcutFocusReason);
    searchEdit->selectAll();
}

void PinToolBar::leaveSearch()
{
    searchEdit->clear();
    emit searchLeft();
    if (auto* more = overflowButton(); more && more->isChecked())
        more->click(); // focusSearch has opened it
}

QString PinToolBar::searchText() const
{
    return searchEdit->text();
}

void PinToolBar::selectContent(const QString& mode)
{
    selectData(contentCombo, mode);
}

void PinToolBar::selectFilter(const QString& type)
{
    selectData(filterCombo, type);
}

void PinToolBar::setFilterEnabled(bool on)
{
    filterCombo->setEnabled(on);
}
