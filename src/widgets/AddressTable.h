// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QStringList>
#include <QTableWidget>

/// A read-only table of texts that a filter narrows down; fast with tens of thousands of rows. A cell may hold several
/// lines: a row is as high as its lines up to a limit, and the tool tip has more of them.
class AddressTable : public QTableWidget
{
    Q_OBJECT

public:
    AddressTable(const QStringList& headers, QWidget* parent);

    /// Each row has a text for each column. Selection, current cell and scroll position stay with the rows that are
    /// known by their first text; the filter stays.
    void setRows(const QList<QStringList>& newRows);
    /// As that, of a table with one column.
    void setRows(const QStringList& texts);
    /// Shows the rows in which a cell contains the text, in any letter case and without blanks around it; all if empty.
    void showMatches(const QString& text);
    /// First texts of the rows that are selected and shown, from the top.
    QStringList selectedTexts() const;

private:
    struct Span;
    struct Place;
    Place place() const;
    void restore(const Place& old);
    void select(const QList<Span>& unordered);
    void fill(const QList<QStringList>& newRows);
    void fitRow(int row);
    void hideOthers();
    bool matches(const QStringList& cells) const;

    QList<QStringList> rows;   ///< what is in the cells
    QList<QStringList> folded; ///< the same for comparing
    QString filter;            ///< likewise folded
};
