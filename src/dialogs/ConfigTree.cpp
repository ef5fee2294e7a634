// SPDX-License-Identifier: MIT
#include "ConfigTree.h"

#include "CellCopy.h"
#include "ConfigValues.h"
#include "LtrDelegate.h"
#include "PlainText.h"
#include "WidgetBuilders.h"

#include <QHeaderView>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int keyColumnWidth = 220;   // pixels
constexpr qsizetype mostInACell = 60; // characters; more than these may be cut off
constexpr int arrayItem = QTreeWidgetItem::UserType;
constexpr auto arraySuffix = " []"_L1;

/// Shows a text in one line, and the middle of a very long one not at all: a megabyte would be shaped anew, for most of
/// a second, each time it is painted, and one text of many lines in the first row would make every row as high.
class LineTexts : public LtrDelegate
{
public:
    using LtrDelegate::LtrDelegate;
    QString displayText(const QVariant& value, const QLocale& /*locale*/) const override
    {
        return lineForLabel(value.toString());
    }
};

QTreeWidgetItem* newConfigItem(const QString& key, const QJsonValue& value);

QList<QTreeWidgetItem*> newMemberItems(const QJsonObject& object)
{
    QList<QTreeWidgetItem*> items;
    items.reserve(object.size());
    for (auto member = object.begin(); member != object.end(); ++member)
        items.append(newConfigItem(member.key(), member.value()));
    return items;
}

QList<QTreeWidgetItem*> newElementItems(const QJsonArray& array)
{
    QList<QTreeWidgetItem*> items;
    items.reserve(array.size());
    for (qsizetype i = 0; i < array.size(); ++i)
        items.append(newConfigItem(u"[%1]"_s.arg(i), array.at(i)));
    return items;
}

QTreeWidgetItem* newConfigLeaf(const QString& key, const QJsonValue& value)
{
    const QString text = jsonValueToDisplayString(value);
    auto* item = new QTreeWidgetItem({key, text});
    if (const QString number = jsonNumberInFull(value); !number.isEmpty())
        item->setToolTip(1, number);
    else if (text.size() > mostInACell)
        item->setToolTip(1, plainToolTip(messageForLabel(text)));
    return item;
}

/// As deep as the JSON parser goes, which is 1024 levels.
QTreeWidgetItem* newConfigItem(const QString& key, const QJsonValue& value)
{
    if (!value.isObject() && !value.isArray())
        return newConfigLeaf(key, value);
    auto* item = value.isArray() ? new QTreeWidgetItem({key + arraySuffix}, arrayItem) : new QTreeWidgetItem({key});
    item->addChildren(value.isArray() ? newElementItems(value.toArray()) : newMemberItems(value.toObject()));
    return item;
}

/// Empty for a row that a dotted key can't name.
QString keyPathOf(const QTreeWidgetItem* item)
{
    QStringList keys;
    for (; item; item = item->parent()) {
        const bool isArray = item->type() == arrayItem;
        if (isArray)
            keys.clear(); // elements have no keys
        keys.prepend(isArray ? item->text(0).chopped(arraySuffix.size()) : item->text(0));
    }
    const bool canBeNamed
        = std::ranges::none_of(keys, [](const QString& key) { return key.isEmpty() || key.contains(u'.'); });
    const QString path = keys.join(u'.');
    return canBeNamed && path.trimmed() == path ? path : QString();
}

} // namespace

ConfigTree::ConfigTree(QWidget* parent)
    : QTreeWidget(parent)
{
    setHeaderLabels({tr("Key"), tr("Value")});
    setColumnWidth(0, keyColumnWidth);
    header()->setStretchLastSection(true);
    setAlternatingRowColors(true);
    setAnimated(true);
    setExpandsOnDoubleClick(true);
    setUniformRowHeights(true); // thousands of rows are laid out without being measured
    setItemDelegate(new LineTexts(this));
    setAccessibleName(tr("Configuration"));
    copyCellsOnRequest(this);
    showFocusAtFrame(this);
    connect(this, &QTreeWidget::itemClicked, this, &ConfigTree::chooseKey);
    connect(this, &QTreeWidget::itemActivated, this, &ConfigTree::chooseKey); // by the keyboard
    connect(this, &QTreeWidget::itemExpanded, this, &ConfigTree::reportToggle);
    connect(this, &QTreeWidget::itemCollapsed, this, &ConfigTree::reportToggle);
}

void ConfigTree::showConfig(const QJsonObject& config)
{
    clear();
    addTopLevelItems(newMemberItems(config));
}

void ConfigTree::setTreeExpanded(bool expanded)
{
    if (expanded)
        expandAll();
    else
        collapseAll();
}

std::optional<bool> ConfigTree::firstRowExpanded() const
{
    const QTreeWidgetItem* first = topLevelItem(0);
    if (!first || first->childCount() == 0)
        return std::nullopt;
    return first->isExpanded();
}

void ConfigTree::chooseKey(const QTreeWidgetItem* item)
{
    if (item->childCount() > 0)
        return;
    if (const QString key = keyPathOf(item); !key.isEmpty())
        emit keyChosen(key);
}

void ConfigTree::reportToggle(const QTreeWidgetItem* item)
{
    if (item == topLevelItem(0))
        emit firstRowToggled();
}
