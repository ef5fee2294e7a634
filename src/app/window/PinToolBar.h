// SPDX-License-Identifier: MIT
#pragma once

#include "PinFilterProxyModel.h"
#include "ToolWindows.h"

#include <QToolBar>

class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QToolButton;

/// The main window's tool bar: refresh, content, filter, search, and the buttons of the tool windows. What is done with
/// it goes out as signals; setters that change a choice emit its signal as a click would.
class PinToolBar : public QToolBar
{
    Q_OBJECT

public:
    /// Buttons of windows that `tools` can't show are disabled.
    PinToolBar(const ToolWindows& tools, QWidget* parent);

    /// The refresh button is disabled while a refresh runs; that is the one refresh flag of the program.
    bool isRefreshing() const;
    void setRefreshing(bool on);
    bool refreshHasFocus() const;

    void setAddEnabled(bool on);

    QString contentMode() const;
    QString typeFilter() const;
    QString searchText() const;
    /// Puts the cursor into the search field and selects its text.
    void focusSearch();
    /// Unknown values leave the choice as it is.
    void selectContent(const QString& mode);
    void selectFilter(const QString& type);
    /// The filter is for pins alone.
    void setFilterEnabled(bool on);

    /// Sets up the button for what the bar has no room for. Call last: setTabOrder ignores an order that is a ring
    /// already, as it is until the window's other controls are there.
    void setupOverflow();

signals:
    void refreshClicked();
    void addClicked();
    void contentChanged();
    void filterChanged();
    void searchTextChanged(QString text);
    /// By Escape, which has cleared the field.
    void searchLeft();
    void searchModeChanged(PinFilterProxyModel::SearchMode mode);
    void toolWindowRequested(ToolWindows::Id id, ToolWindows::AuxWindowMode mode);

private:
    void addLoadButtons();
    void addListSelectors();
    void addSearchField();
    QRadioButton* addSearchMode(const QString& text, PinFilterProxyModel::SearchMode mode, const QString& hint);
    void addToolWindowButtons(const ToolWindows& tools);
    void addCaption(const QString& text, QWidget* field);
    QToolButton* overflowButton() const;
    void leaveSearch();

    QPushButton* refreshButton = nullptr;
    QPushButton* addButton = nullptr;
    QComboBox* contentCombo = nullptr;
    QComboBox* filterCombo = nullptr;
    QLineEdit* searchEdit = nullptr;
    QRadioButton* searchCidRadio = nullptr;
    QRadioButton* searchNameRadio = nullptr;
};
