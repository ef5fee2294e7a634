// SPDX-License-Identifier: MIT
#include "StatsFrame.h"

#include "PeerLabel.h"
#include "PlainText.h"

#include <QLabel>
#include <QTime>
#include <QVBoxLayout>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr int columnSpacing = 4;

/// In the order of ConnectionStatusDot::State.
constexpr std::array stateWords {
    QT_TRANSLATE_NOOP("StatsFrame", "Unknown"), QT_TRANSLATE_NOOP("StatsFrame", "Checking"),
    QT_TRANSLATE_NOOP("StatsFrame", "Connected"), QT_TRANSLATE_NOOP("StatsFrame", "Disconnected")};

} // namespace

StatsFrame::StatsFrame(QWidget* parent)
    : QFrame(parent)
{
    setObjectName(u"statsFrame"_s);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 2, 4, 2);
    column->setSpacing(columnSpacing);
    column->addLayout(newNodeRow());

    auto* texts = new QWidget(this);
    texts->setObjectName(u"statsTextColumn"_s);
    texts->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
    auto* lines = new QVBoxLayout(texts);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(0);
    statsLine1Label = newLine(u"statsLine1"_s, {});
    statsLine1Label->hide();
    countLabel = newLine(u"countLabel"_s, tr("No pins loaded"));
    lines->addWidget(statsLine1Label);
    lines->addWidget(countLabel);
    column->addWidget(texts);
}

QLayout* StatsFrame::newNodeRow()
{
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    connectionDot = new ConnectionStatusDot(this);
    connectionDot->setObjectName(u"statusIcon"_s);
    setConnectionDotState(ConnectionStatusDot::Unknown, tr("Waiting for first connection check"));
    peerIdLabel = new PeerLabel(this);
    peerIdLabel->setObjectName(u"peerIdLabel"_s);
    connect(peerIdLabel, &PeerLabel::copied, this, &StatsFrame::peerIdCopied);
    row->addWidget(connectionDot);
    row->addWidget(peerIdLabel);
    row->addStretch();
    return row;
}

QLabel* StatsFrame::newLine(const QString& name, const QString& text)
{
    QLabel* line = newPlainLabel(text, this);
    line->setObjectName(name);
    line->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    line->setWordWrap(true);
    line->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
    return line;
}

void StatsFrame::setConnectionDotState(ConnectionStatusDot::State state, const QString& detail)
{
    connectionDot->setState(state);
    const QString word = tr(stateWords.at(static_cast<size_t>(state)));
    QString tip = tr("Connection: %1").arg(word);
    if (!detail.trimmed().isEmpty())
        tip += u'\n' + detail;
    tip += u'\n' + tr("Updated: %1").arg(QTime::currentTime().toString(u"hh:mm:ss"_s));
    setPlainToolTip(connectionDot, tip);
    connectionDot->setAccessibleName(tr("Connection: %1").arg(word));
}

void StatsFrame::showPeer(const QString& nodeId, const QString& agent)
{
    peerIdLabel->showPeer(nodeId, agent);
}

void StatsFrame::showNoPeer()
{
    peerIdLabel->showNoPeer();
}

void StatsFrame::showCounts(const CountText::Lines& lines)
{
    statsLine1Label->setText(lines.first);
    statsLine1Label->setVisible(!lines.first.isEmpty());
    countLabel->setText(lines.second);
}
