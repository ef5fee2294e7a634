// SPDX-License-Identifier: MIT
#pragma once

#include "StatusLabel.h"

#include <QList>
#include <QString>

class IpfsClient;

/// A label for what the node itself said of a dialog's calls, which their messages leave out. Hidden without any.
class NodeWords : public StatusLabel
{
    Q_OBJECT

public:
    /// One call of the dialog, and the line that shows its words as %1; "The node says: %1" if it is empty.
    struct Call
    {
        QString path {};
        QString line {};
    };

    NodeWords(const IpfsClient* client, const QList<Call>& calls, QWidget* parent);

    /// Empties the label before calls are made.
    void forget();
    /// Shows what the node said of the call to `path` that has ended, or else `cause`; no line if both are empty.
    void showFor(const QString& path, const QString& cause = {});

private:
    struct Row
    {
        Call call {};
        QString said {};  ///< since the call's last answer
        QString shown {}; ///< empty for none
    };

    void onNodeSaid(const QString& path, const QString& words);
    void showRows();

    QList<Row> rows {};
};
