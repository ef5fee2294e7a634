// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class IpfsClient;
class QLabel;
class QStringListModel;
class QTableView;

/// Lists every CID below one recursive pin, for copying and for opening in a gateway. Asks the node when it is made;
/// destroying it ends the call.
class IndirectPinsDialog : public QDialog
{
    Q_OBJECT

public:
    /// `newClient` is not owned and has to outlive the dialog.
    IndirectPinsDialog(const QString& cid, IpfsClient* newClient, QWidget* parent = nullptr);

private slots:
    void onRefsReceived(const QString& root, const QStringList& cids);
    void onErrorOccurred(const QString& message);
    void onCustomContextMenuRequested(const QPoint& pos);
    void onCopyCid();
    void onOpenInGateway();
    void onOpenFromLocal();

private:
    void setupUi();
    void setupTable();
    void showRows(const QStringList& texts);
    bool isUsable(const QString& text) const;
    QString cidAtRow(int row) const;
    QStringList selectedTexts() const;
    QString firstSelectedCid() const;

    QString rootCid;
    IpfsClient* client;
    QStringListModel* model;
    QTableView* table;
    QLabel* countLabel;
    bool ownCallFailed = false; ///< the last error is that of a call for these refs, and its empty list follows
};
