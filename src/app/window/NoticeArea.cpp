// SPDX-License-Identifier: MIT
#include "NoticeArea.h"

#include "PlainText.h"
#include "WidgetBuilders.h"

#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto looseWordsShown = 8000ms;
constexpr qsizetype mostLetters = 300;
constexpr int lineSpacing = 2;

QTimer* newSingleShot(std::chrono::milliseconds interval, QObject* parent)
{
    auto* timer = new QTimer(parent);
    timer->setSingleShot(true);
    timer->setInterval(interval);
    return timer;
}

/// One line of at most 300 letters, since a node may say anything.
QString shortWords(const QString& words)
{
    QString line = words.simplified();
    if (line.size() <= mostLetters)
        return line;
    QString cut = line.first(mostLetters - 1);
    if (cut.back().isHighSurrogate())
        cut.chop(1);
    return cut + u'…';
}

} // namespace

NoticeArea::NoticeArea(QWidget* parent)
    : QWidget(parent)
    , notificationLabel(newLine(u"notification"_s))
    , nodeWordsLabel(newLine(u"nodeWordsLabel"_s))
    , wordsTimer(newSingleShot(looseWordsShown, this))
    , turnTimer(newSingleShot(0ms, this))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(lineSpacing);
    column->addWidget(notificationLabel);
    column->addWidget(nodeWordsLabel);
    connect(wordsTimer, &QTimer::timeout, this, &NoticeArea::hideNodeWords);
    hide();
}

QLabel* NoticeArea::newLine(const QString& name)
{
    QLabel* line = newPlainLabel({}, this);
    line->setObjectName(name);
    line->setWordWrap(true);
    line->setAlignment(Qt::AlignCenter);
    line->setMinimumWidth(1); // a long address in a message is not to widen the window
    makeCopyable(line, tr("Copy"));
    line->hide();
    return line;
}

void NoticeArea::showNotification(const QString& text, bool warning)
{
    if (turnTimer->isActive() && (wordsOwner.isNull() || wordsOwner == text)) {
        wordsOwner = text; // another one in this turn is another call's
        wordsTimer->stop();
    } else if (!wordsTimer->isActive()) {
        nodeWordsLabel->hide(); // they belong to the notification that is replaced
    }
    const QString shown = lineForLabel(text);
    notificationLabel->setText(warning ? tr("⚠  %1").arg(shown) : shown);
    notificationLabel->show();
    showIfFilled();
}

void NoticeArea::hideNotification()
{
    notificationLabel->hide();
    if (!wordsTimer->isActive())
        nodeWordsLabel->hide();
    showIfFilled();
}

QString NoticeArea::showNodeWords(const QString& words)
{
    QString line = tr("The node says: %1").arg(shortWords(words));
    nodeWordsLabel->setText(line);
    nodeWordsLabel->show();
    wordsOwner.clear();
    turnTimer->start();
    wordsTimer->start();
    showIfFilled();
    return line;
}

void NoticeArea::hideNodeWords()
{
    nodeWordsLabel->hide();
    showIfFilled();
}

void NoticeArea::showIfFilled()
{
    setVisible(!notificationLabel->isHidden() || !nodeWordsLabel->isHidden());
}
