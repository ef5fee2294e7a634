// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"
#include "AddResult.h"
#include "ConnectionStatusDot.h"
#include "EmptyTable.h"
#include "IpnsReport.h"
#include "MetadataPlan.h"
#include "PinFilterProxyModel.h"
#include "ToolWindowHost.h"
#include "WindowSettings.h"

#include <QHash>
#include <QModelIndex>
#include <QUrl>

class AddProgress;
class IpfsClient;
class PinModel;
class PinTable;
class PinToolBar;
class RemotePinFlow;
class UpdateCheck;
class QAction;
class QNetworkReply;
class QSettings;
class QTimer;
class SettingsDialog;
class StatsFrame;
struct TextQuestion;

/// The program's one window. It owns the client of the node, the models and the settings store, and connects them with
/// what it is made of: the tool bar, the table, the lines below it and the tool windows.
class MainWindow : public ToolWindowHost
{
    Q_OBJECT

    // Construction, menus and status: MainWindow.cpp, MainWindow_menus.cpp, MainWindow_update.cpp.
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Whether the program runs with a trial's restrictions. There is no licensing server, so it never does.
    bool isTrial() const { return false; }

protected:
    /// The program ends with its main window: free tool windows close with it. Asks first while work is under way.
    void closeEvent(QCloseEvent* event) override;
    /// Files and folders that are dropped open the dialog that adds them.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private slots:
    void onActivationClicked();
    void onApplicationStateChanged(Qt::ApplicationState state);
    void onConnectionStatusChanged(bool on);
    void onNodeInfoReceived(const QString& id, const QString& agent);
    void onErrorOccurred(const QString& message);
    void onListFailed(const QString& message);
    void checkForUpdates();
    void onUpdateCheckFinished(QNetworkReply* reply);

private:
    void setupMenuBar();
    void setupFileMenu();
    void setupEditMenu();
    void setupToolsMenu();
    void setupHelpMenu();
    void setupToolBar();
    void setupCentralWidget();
    void setupPinTable();
    void connectClient();
    void setupTimers();
    void updateWindowTitleForActivationState();
    void showAboutBox();

    // Help: MainWindow_help.cpp.
    void openUserGuide();
    void showShortcuts();
    void reportProblem();

    void offerUpdate(const QString& current, const QString& latest);
    void quit();
    QString quitQuestion() const;
    bool mayClose();

    // Tool windows: MainWindow_windows.cpp.
    void setupToolWindows();
    template <typename Dialog> void offerNodeTool(ToolWindows::Id id);

private slots:
    // Settings: MainWindow_settings.cpp. Values of the store that make no sense are survived, not reported.
    void onSettingsClicked();

private:
    void loadSettings();
    void startAutoRefresh();
    void applySettings(const SettingsDialog& dialog);
    void leaveNode();
    void saveSettings();

    // The refresh cycle: MainWindow_refresh.cpp. A failure comes by onErrorOccurred and keeps the old rows.
private slots:
    void onRefreshClicked();
    void onAutoRefreshTick();
    void onPinsReceived(const QList<PinEntry>& pins);
    void onStreamEntriesLoaded(const QString& source, int count);
    void onContentChanged();
    void onFilterChanged();
    void onSearchTextChanged(const QString& text);
    void onSearchDebounceTimeout();
    void onSearchLeft();
    void onSearchModeChanged(PinFilterProxyModel::SearchMode mode);

private:
    void triggerRefresh(bool force);
    void fetchList();
    void setRefreshing(bool on);
    struct ListRules;
    void prepareList(QList<PinEntry> pins, const ListRules& rules, int taken);
    void takeList(const QList<PinEntry>& list, qsizetype pinsReceived);
    bool knowsNoList() const;
    void dropRows();
    void showRows(const QList<PinEntry>& list);
    void fitColumns();
    template <typename Change> void changeFilter(Change change);
    void showListState(EmptyTable::State state);
    void updateEmptyText();
    bool showsUnpinned() const;

    // Metadata and counts: MainWindow_metadata.cpp. A fact that can't be had counts as come.
private slots:
    void onRefsReceivedForTable(const QString& rootCid, const QStringList& cids);
    void onDagStatReceived(const QString& cid, long long cumulativeSize);
    void onKindReceived(const QString& cid, const QString& kind);

private:
    bool wantsMetadata() const;
    void planMetadata(const QList<PinEntry>& list);
    void planNextFacts();
    int unplannedRows() const;
    void dropPlan();
    void startCountTimer();
    void updateCountLabelsSoon();
    void updateCountLabels();
    long long shownDagSize() const;

    // The table's actions: MainWindow_table.cpp. Without a usable row they do nothing.
private slots:
    void onSelectionChanged();
    void onTableContextMenuRequested(const QPoint& pos);
    void onTableDoubleClicked(const QModelIndex& index);
    void onCopySelectedCID();
    void onOpenInGateway();
    void onOpenFromLocal();
    void onUnpinSelected();
    void onUnpinAll();
    void onUnpinned(const QStringList& cids);
    void onUnpinProgress(int done, int total);
    void onPinsMayHaveChanged();
    void onShowIndirectPins(const QString& rootCid);

private:
    void showContents(const QString& rootCid, const QString& name);
    void unpin(const QStringList& cids);
    void copyCids(const QStringList& cids);
    void openInGateway(const QString& cid);
    void openFromLocal(const QString& cid);
    void openInBrowser(const QString& cid, const QUrl& url, const QString& message);

    // Adding: MainWindow_add.cpp. A failure is shown in a box, and ends the add.
private slots:
    void onAddToIpfsClicked();
    void onAddProgress(const QString& currentName, int processedEntries, int totalFiles);
    void onAddShortfall(int filesSent, int filesReported, int filesSkipped, int foldersWithinThemselves,
                        bool rootLineMissing);
    void onAddCompleted(const QString& rootCid, const QList<AddEntry>& entries);
    void onAddFailed(const QString& message);

private:
    void chooseAndAdd(const QStringList& paths);
    void startAdd(const QList<LocalPathSelection>& selections, const AddOptions& options);
    void setAdding(bool on);
    void setupRemotePinFlow();
    void showAddResult(const QString& rootCid, const QList<AddEntry>& entries);
    void copyAddedCids(const QStringList& cids);
    void exportCids(const QStringList& cids);

    // Names: MainWindow_ipns.cpp. A failure is shown, and ends what failed.
private slots:
    void onOpenViaIpnsClicked();
    void onPublishToIpnsClicked();
    void onResolveIpnsClicked();
    void onIpnsKeysReceived(const QList<IpnsKeyEntry>& keys);
    void onIpnsKeysFailed(const QString& message);
    void onIpnsPublished(const IpnsPublishResult& result);
    void onIpnsPublishFailed(const QString& message);
    void onIpnsResolved(const IpnsResolveResult& result);
    void onIpnsResolveFailed(const QString& message);

private:
    void publishToIpns(const QString& cid);
    void askForIpnsKey(const TextQuestion& question);
    void publishUnder(const QString& key);
    void endIpnsPublish();
    void dropIpnsChoice();
    void showIpnsReport(const IpnsReport& report);

    IpfsClient* client;
    PinModel* pinModel;
    PinFilterProxyModel* proxyModel;
    QTimer* autoRefreshTimer;
    QTimer* searchDebounceTimer;
    QTimer* countUpdateTimer;
    QTimer* planTimer;
    QSettings* settings;

    PinToolBar* toolBar = nullptr;
    PinTable* pinTable = nullptr;
    StatsFrame* statsFrame = nullptr;
    QAction* publishToIpnsAction = nullptr;
    QAction* unpinSelectedAction = nullptr;
    QAction* unpinAllAction = nullptr;
    QAction* addToIpfsAction = nullptr;
    AddProgress* addProgress;
    RemotePinFlow* remotePinFlow;
    UpdateCheck* updateCheck;

    WindowSettings values; ///< of which the client has the address and the window its geometry
    bool connected = false;
    QString nodeAgent {}; ///< what the node calls itself; empty while there is none
    QHash<QString, int> streamCounts;
    ListLoad load;
    MetadataPlan plan;
    int planPosition = -1; ///< the model's first row whose metadata is not planned yet; -1 if no list is
    /// Grows with each list that is asked for, comes or is dropped, so that a former one finds itself late.
    int listsTaken = 0;
    qint64 lastCountLabelUpdateMs = 0; ///< of the last direct update; 0 at the start of each refresh
    int countedDone = 0;               ///< facts that were complete then
    CurrentAdd currentAdd;
    IpnsPublishing ipns;
};
