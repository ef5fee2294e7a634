// SPDX-License-Identifier: MIT
#pragma once

#include <QTreeWidget>

#include <optional>

class QJsonObject;

/// A JSON document as a tree of keys and values.
class ConfigTree : public QTreeWidget
{
    Q_OBJECT

public:
    explicit ConfigTree(QWidget* parent);

    void showConfig(const QJsonObject& config);
    /// At every depth.
    void setTreeExpanded(bool expanded);
    /// Whether the first row is expanded; nothing if it has no rows below it.
    std::optional<bool> firstRowExpanded() const;

signals:
    /// A row without others below it was clicked, or Return pressed on it; its dotted key, of an element that of its
    /// array. Not emitted for what a dotted key can't name.
    void keyChosen(QString key);
    /// The first row was expanded or collapsed, by itself or with all others.
    void firstRowToggled();

private:
    void chooseKey(const QTreeWidgetItem* item);
    void reportToggle(const QTreeWidgetItem* item);
};
