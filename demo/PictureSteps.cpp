// SPDX-License-Identifier: MIT
#include "PictureSteps.h"

#include <QEventLoop>
#include <QTreeWidget>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

void fail(const QString& problem)
{
    std::fprintf(stderr, "%s\n", qPrintable(problem));
    std::exit(1);
}

void need(bool holds, const QString& problem)
{
    if (!holds)
        fail(problem);
}

void failOnWarning(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
{
    const bool isHarmless
        = type == QtDebugMsg || type == QtInfoMsg || text.startsWith("This plugin does not support "_L1);
    if (!isHarmless)
        fail(text);
}

void wait(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // no nested loop would do it
}

QPersistentModelIndex rowThatComes(const QTreeView& tree, const QModelIndex& parent, const QString& name)
{
    const QAbstractItemModel* rows = tree.model();
    const auto find = [&] { return rows->match(rows->index(0, 0, parent), Qt::DisplayRole, name).value(0); };
    awaitThat([&find] { return find().isValid(); }, u"there is no "_s + name);
    return find();
}

void showPathsOfAda(const QTreeWidget& paths, const QString& home)
{
    for (int row = 0; row < paths.topLevelItemCount(); ++row) {
        QTreeWidgetItem* item = paths.topLevelItem(row);
        item->setText(0, item->text(0).replace(home, u"/home/ada"_s));
    }
}
