// SPDX-License-Identifier: MIT
#include "WidgetBuilders.h"

#include <QClipboard>
#include <QEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QTableView>

namespace {

class FocusFramePainter : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* view = qobject_cast<QWidget*>(watched);
        if (event->type() != QEvent::Paint || !view || !view->hasFocus())
            return QObject::eventFilter(watched, event);
        watched->event(event); // draws the usual frame
        QPainter painter(view);
        painter.setPen(view->palette().color(QPalette::Highlight));
        painter.drawRect(view->rect().adjusted(0, 0, -1, -1));
        return true;
    }
};

} // namespace

void showFocusAtFrame(QAbstractScrollArea* view)
{
    view->installEventFilter(new FocusFramePainter(view));
}

void makeRowTable(QTableView* table)
{
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table->setAlternatingRowColors(true);
    table->setShowGrid(false);
    table->setTabKeyNavigation(false); // Tab leads on to the next control
    table->setContextMenuPolicy(Qt::CustomContextMenu);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    showFocusAtFrame(table);
}

QLabel* newLabelFor(const QString& text, QWidget* field)
{
    auto* label = new QLabel(text, field->parentWidget());
    label->setBuddy(field);
    return label;
}

void makeRoomForPlaceholder(QLineEdit* field)
{
    constexpr int emptyLetters = 3; // frame, margins and cursor
    const QFontMetrics metrics = field->fontMetrics();
    field->setMinimumWidth(metrics.horizontalAdvance(field->placeholderText())
                           + emptyLetters * metrics.averageCharWidth());
}

QLabel* newWrappedLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

QLabel* newCidHeading(const QString& markup, const QString& cid, QWidget* parent)
{
    auto* label = new QLabel(markup.arg(cid.toHtmlEscaped()), parent);
    label->setTextFormat(Qt::RichText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

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
