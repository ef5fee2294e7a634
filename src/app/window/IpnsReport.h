// SPDX-License-Identifier: MIT
#pragma once

#include "IpnsRecords.h"

#include <QCoreApplication>
#include <QDialog>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QUrl>

/// A button of a result box and what it does.
struct IpnsAction
{
    QString caption {};
    QString copied {}; ///< what goes on the clipboard; empty for nothing
    QString status {}; ///< shown after a copy
    QUrl url {};       ///< what is opened; empty for nothing
};

/// What is shown of a name that was published or resolved.
struct IpnsReport
{
    Q_DECLARE_TR_FUNCTIONS(IpnsReport)

public:
    QString title {};
    QString message {}; ///< for the notification and the status line, whole
    QString text {};    ///< for the box, with the middle of long values left out
    QList<IpnsAction> actions {};
};

/// How far the publishes of a window are.
struct IpnsPublishing
{
    enum Choice { None, KeysAsked, KeyOffered };

    Choice choice = None;             ///< of the latest one's key
    QPointer<QDialog> question {};    ///< asks for that key
    QString pendingIpnsPublishCid {}; ///< of the latest one, until it has ended
    int running = 0;                  ///< at the node
};

IpnsReport reportOf(const IpnsPublishResult& result);
IpnsReport reportOf(const IpnsResolveResult& result);

/// What is left of a name without blanks around it and without "/ipns/" before it; may be empty.
QString bareIpnsName(const QString& name);

/// "self", which every node has, and the names of the other keys, each once and in their order.
QStringList ipnsKeyChoices(const QList<IpnsKeyEntry>& keys);
