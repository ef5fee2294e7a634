// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QTimer>

#include <array>

class QGroupBox;
class QTableWidget;
class QVBoxLayout;
class QWidget;

/// Builds the groups of DHT views, with the buckets and their tables of peers, at the end of a layout, before its last
/// item. What takes longer than 60 ms is built in turns of the event loop of some 15 ms. In the end the columns of all
/// tables are in line. Deleted before its end, it leaves what it has built.
class DhtGroups : public QObject
{
    Q_OBJECT

public:
    DhtGroups(const QList<QJsonObject>& newViews, QVBoxLayout* newLayout, QWidget* newContent);

    /// Builds the first groups, and goes on by itself.
    void start();
    bool isComplete() const { return !turn.isActive(); }

signals:
    /// All groups are there, and all columns in line.
    void completed();

private:
    static constexpr int columns = 5;

    void work(int milliseconds);
    bool step();
    void beginView();
    void addBucket();
    void beginTable(QWidget* box);
    void addRows();
    void showTable();
    void measure();
    void alignTable(QTableWidget* shown) const;

    QList<QJsonObject> views; ///< those that are not begun yet
    QVBoxLayout* layout;
    QWidget* content;
    QGroupBox* group = nullptr; ///< of the view that is being built
    QJsonArray buckets {};      ///< of that view
    qsizetype nextBucket = 0;
    QTableWidget* table = nullptr; ///< of the bucket that is being built, not shown before it has all of its rows
    QJsonArray peers {};           ///< of that bucket
    int nextRow = 0;
    QList<QTableWidget*> tables {}; ///< of all views
    qsizetype nextToAlign = 0;
    std::array<int, columns> widths {}; ///< of all tables, in pixels
    QTimer turn;
};

/// Hides a view's group at once and deletes it later, in turns of the event loop: one bucket after the other, and of a
/// large one some rows after others.
void deleteInTurns(QWidget* group);
