// SPDX-License-Identifier: MIT
#pragma once

#include <QSet>
#include <QStringList>
#include <QTableView>

class PinFilterProxyModel;
class QMenu;

/// The view of the pins: its columns, its selection and the menu of a row. What is chosen goes out as a signal.
class PinTable : public QTableView
{
    Q_OBJECT

public:
    /// It opens sorted by the number of refs.
    explicit PinTable(PinFilterProxyModel* shownPins, QWidget* parent = nullptr);

    QString cidOf(const QModelIndex& index) const;
    /// Whether the row is a recursive pin with a CID, so that there is something below it.
    bool isRecursivePin(const QModelIndex& index) const;
    bool hasSelection() const;
    /// Empty if nothing is selected.
    QString firstSelectedCid() const;
    /// Those of the selected rows that have one, in the order of the selection.
    QStringList selectedCids() const;
    /// What a person looks at: the selection, the current row and what is in sight.
    struct Place
    {
        QSet<QString> selected {}; ///< empty if there are more than can be restored
        QString current {};
        int currentColumn = 0;
        QString top {}; ///< the first row in sight
        int topRow = 0;
        int left = 0; ///< of the horizontal scroll bar
        int rows = 0;
    };
    Place place() const;
    /// Goes back to `place` after a reset, as far as its rows still exist. A list as long as before keeps its scroll
    /// position; where rows came or went, the first row in sight stays so if it is near.
    void restore(const Place& place);

    /// What the table shows in place of rows, as plain text; empty for nothing.
    void setEmptyText(const QString& text);

    /// Runs the menu of the row at `pos`. A row outside a selection of several becomes the selection; there is no menu
    /// on empty space. Rows that are not `pinned` have no entries for pins.
    void showRowMenu(const QPoint& pos, bool pinned);
    /// Fits all columns but the last to their content.
    void fitColumns();
    /// In pixels; a CID of version 1 fits in.
    static int minimumCidColumnWidth();

signals:
    void indirectPinsRequested(QString rootCid);
    void contentsRequested(QString rootCid, QString name);
    // These are about the rows that the menu was opened for.
    void unpinRequested(QStringList cids);
    void copyRequested(QStringList cids);
    void publishRequested(QString cid);
    void gatewayRequested(QString cid);
    void localGatewayRequested(QString cid);
    /// Of a name, which is asked for then.
    void openViaIpnsRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString cidAt(int row) const;
    bool hasSeveralRowsSelected() const;
    int selectedRowCount() const;
    void selectRows(const QList<int>& rows);
    int rowOfTop(const Place& place) const;
    void setupColumns();
    void openCurrentRow();
    void fillRowMenu(QMenu* menu, const QModelIndex& index, bool pinned);

    PinFilterProxyModel* pins;
    QString emptyText {};
};
