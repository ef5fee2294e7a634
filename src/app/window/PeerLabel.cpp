// SPDX-License-Identifier: MIT
#include "PeerLabel.h"

#include "PlainText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

PeerLabel::PeerLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setText(tr("Not connected"));
}

void PeerLabel::showPeer(const QString& id, const QString& agent)
{
    nodeId = id;
    const QString text = tr("PeerID: %1  |  %2").arg(id, agent);
    setText(messageForLabel(tr("PeerID: %1  |  %2").arg(id.simplified(), agent.simplified())));
    setPlainToolTip(this, text);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus); // the space bar copies as a click does
}

void PeerLabel::showNoPeer()
{
    nodeId.clear();
    setText(tr("Not connected"));
    setToolTip({});
    setCursor(Qt::ArrowCursor);
    setFocusPolicy(Qt::NoFocus);
}

QSize PeerLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

void PeerLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawFrame(&painter);
    const QRect area = contentsRect();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, area.width());
    style()->drawItemText(&painter, area, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, palette(), isEnabled(),
                          shown, foregroundRole());
}

/// A press is consumed whatever the button.
void PeerLabel::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        copyId();
}

void PeerLabel::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space)
        copyId();
    else
        QLabel::keyPressEvent(event);
}

void PeerLabel::focusInEvent(QFocusEvent* event)
{
    setFrameShape(QFrame::Box);
    QLabel::focusInEvent(event);
}

void PeerLabel::focusOutEvent(QFocusEvent* event)
{
    setFrameShape(QFrame::NoFrame);
    QLabel::focusOutEvent(event);
}

void PeerLabel::copyId()
{
    if (nodeId.isEmpty())
        return;
    QGuiApplication::clipboard()->setText(nodeId);
    emit copied();
}
