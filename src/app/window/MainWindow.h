#pragma once

#include "ConnectionStatusDot.h"
#include "PinEntry.h"
#include "PinFilterProxyModel.h"

#include <QHash>
#include <QMainWindow>
#include <QModelIndex>
#include <QSet>
#include <QUrl>

#include <chrono>
#include <functional>

class IpfsClient;
class PinModel;
class QAction;
class QComboBox;
class QDialog;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QRadioButton;
class QSettings;
class QTableView;
class QTimer;
class QToolBar;
class SettingsDialog;

/// The program's one window: the table of pins with its tool bar, its status lines and its menus, and the refresh cycle
/// that fills it. Owns the client of the node, the two models and the settings store.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// How a tool window stands to this one: as a dialog that it owns, or as a free window.
    enum AuxWindowMode { AuxChildWindow, AuxNewWindow };

    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Whether the program runs with a trial's restrictions. There is no licensing server, so it never does.
    bool isTrial() const { return false; }

    /// Every request that left in this run, a line each, oldest first.
    QStringList rpcLog() const { return rpcLogLines; }
    /// Every status message of this run, a line each, oldest first.
    QStringList statusLog() const { return statusLogLines; }
    /// Empty the list; nothing is emitted.
    void clearRpcLog() { rpcLogLines.clear(); }
    void clearStatusLog() { statusLogLines.clear(); }

    /// Open a tool window, or bring the open one to the front in `mode`. None of them blocks this window.
    void showGcDialog(AuxWindowMode mode);
    void showDhtStatsDialog(AuxWindowMode mode);
    void showNetworkDialog(AuxWindowMode mode);
    void showSwarmDialog(AuxWindowMode mode);
    void showConfigDialog(AuxWindowMode mode);
    void showRemoteServicesDialog(AuxWindowMode mode);
    void showStatusLogDialog(AuxWindowMode mode);
    void showRpcLogDialog(AuxWindowMode mode);

signals:
    /// A line has come to the log; it is in the list already.
    void rpcLogAppended(QString line);
    void statusLogAppended(QString line);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void onRefreshClicked();
    void onSettingsClicked();
    void onActivationClicked();
    void onPinsReceived(const QList<PinEntry>& pins);
    void onErrorOccurred(const QString& message);
    void onConnectionStatusChanged(bool on);
    void onNodeInfoReceived(const QString& id, const QString& agent);
    void onSearchTextChanged(const QString& text);
    void onSearchDebounceTimeout();
    void onAutoRefreshTick();
    void onApplicationStateChanged(Qt::ApplicationState state);
    void onRefsReceivedForTable(const QString& rootCid, const QStringList& cids);
    void onDagStatReceived(const QString& cid, long long cumulativeSize);
    void onKindReceived(const QString& cid, const QString& kind);
    void onRpcRequestIssued(const QString& requestDescription);
    void onSelectionChanged();
    void onTableContextMenuRequested(const QPoint& pos);
    void onTableDoubleClicked(const QModelIndex& index);
    void onCopySelectedCID();
    void onOpenInGateway();
    void onOpenFromLocal();
    void onUnpinSelected();
    void onUnpinAll();
    void onUnpinned(const QStringList& cids);
    void onShowIndirectPins(const QString& rootCid);
    void onGcClicked();
    void onDhtStatsClicked();
    void onConfigClicked();
    void onRemoteServicesClicked();
    void onStatusLogClicked();
    void onLogClicked();

private:
    // construction
    void setupMenuBar();
    void setupFileMenu();
    void setupEditMenu();
    void setupHelpMenu();
    void setupShortcuts();
    void setupToolBar();
    void addLoadButtons(QToolBar* bar);
    void addListSelectors(QToolBar* bar);
    void addSearchField(QToolBar* bar);
    void addToolWindowButtons(QToolBar* bar);
    void setupCentralWidget();
    void setupToolBarOverflow();
    void setupPinTable();
    QWidget* newStatsFrame();
    QLabel* newStatsLine(const QString& name, const QString& text);
    void setupStatusBar();
    void connectClient();
    void setupTimers();
    void updateWindowTitleForActivationState();
    void showAboutBox();

    // settings
    void loadSettings();
    void startAutoRefresh();
    void applySettings(const SettingsDialog& dialog);
    void saveSettings();

    // refresh
    void triggerRefresh(bool force);
    void fetchList();
    void setRefreshing(bool on);
    void onContentChanged();
    void onFilterChanged();
    void onStreamEntriesLoaded(const QString& source, int count);
    QList<PinEntry> listForTable(const QList<PinEntry>& pins) const;
    void fitColumns();
    int minimumCidColumnWidth() const;
    bool showsUnpinned() const;
    void setSearchMode(PinFilterProxyModel::SearchMode mode, const QString& hint);

    // table
    bool hasSeveralRowsSelected() const;
    QString firstSelectedCid() const;
    QStringList selectedCids() const;
    void openCurrentRow();
    void unpin(const QStringList& cids);
    bool isRecursivePin(const QModelIndex& index) const;
    void fillRowMenu(QMenu* menu, const QModelIndex& index);
    void openFirstSelected(const QString& message, const std::function<QUrl(const QString& path)>& urlOf);
    /// An entry whose action does not exist yet: it stands in its place, disabled.
    static QAction* addUnavailable(QMenu* menu, const QString& text);

    // tool windows
    enum class ToolWindowId { Gc, DhtStats, Network, Swarm, Config, RemoteServices, StatusLog, RpcLog, Count };
    struct ToolWindow;
    template <typename Dialog> static QDialog* newNodeTool(MainWindow& window);
    template <typename Dialog> static QDialog* newLogWindow(MainWindow& window);
    static const ToolWindow& toolWindow(ToolWindowId id);
    static bool hasToolWindow(ToolWindowId id);
    void showToolWindow(ToolWindowId id, AuxWindowMode mode);
    void configureAuxDialogWindowMode(QDialog* dialog, AuxWindowMode mode);
    void onToolWindowDestroyed(const ToolWindow& tool);
    void deleteToolWindows();

    // metadata
    bool wantsMetadata() const;
    void planMetadata(const QList<PinEntry>& list);
    void planRefs(const QList<PinEntry>& list);
    void planNextFacts();
    void dropPlan();
    void planFacts(const QString& cid);
    void startCountTimer();
    void updateCountLabelsSoon();
    void updateCountLabels();
    int countUpdateIntervalMs() const;
    QString countText() const;
    QString shownDagSizeText() const;
    QString metadataTail() const;

    // status
    void setConnectionDotState(ConnectionStatusDot::State state, const QString& detail);
    void setStatusMessage(const QString& text);
    /// Goes back to "Ready" after `delay`, if the status shown by then still `isOurs`.
    void resetStatusLater(std::chrono::milliseconds delay, std::function<bool(const QString&)> isOurs);
    void showNotification(const QString& text, bool warning);
    void copyPeerId();

    IpfsClient* client;
    PinModel* pinModel;
    PinFilterProxyModel* proxyModel;
    QTimer* autoRefreshTimer;
    QTimer* searchDebounceTimer;
    QTimer* countUpdateTimer;
    QTimer* planTimer;
    QSettings* settings;

    QTableView* pinTable = nullptr;
    QLineEdit* searchEdit = nullptr;
    QRadioButton* searchCidRadio = nullptr;
    QRadioButton* searchNameRadio = nullptr;
    QComboBox* contentCombo = nullptr;
    QComboBox* filterCombo = nullptr;
    QPushButton* refreshButton = nullptr;
    QPushButton* addButton = nullptr;
    ConnectionStatusDot* connectionDot = nullptr;
    QLabel* statusLabel = nullptr;
    QLabel* statsLine1Label = nullptr;
    QLabel* countLabel = nullptr;
    QLabel* peerIdLabel = nullptr;
    QLabel* notificationLabel = nullptr;
    QAction* unpinSelectedAction = nullptr;
    QAction* unpinAllAction = nullptr;

    // null while there is no such window
    QDialog* gcDialog = nullptr;
    QDialog* dhtStatsDialog = nullptr;
    QDialog* networkDialog = nullptr;
    QDialog* swarmDialog = nullptr;
    QDialog* configDialog = nullptr;
    QDialog* remoteServicesDialog = nullptr;
    QDialog* statusLogDialog = nullptr;
    QDialog* rpcLogDialog = nullptr;

    QString contentMode;
    QString typeFilter;
    int refreshIntervalSeconds = 30;
    bool autoRefresh = false;
    bool loadMetadata = true;
    bool sendOrigin = false;
    QString originValue {};
    bool connected = false;
    QString nodeId {};
    QHash<QString, int> streamCounts;

    QSet<QString> refsPending;     ///< recursive pins whose ref count was asked for and has not come
    int planPosition = 0;          ///< the model's first row whose metadata is not planned yet
    QSet<QString> metadataTargets; ///< CIDs of the list whose size and kind are wanted
    QSet<QString> dagDone;         ///< targets whose size has come, from cache or node
    QSet<QString> kindDone;
    QSet<QString> metadataDone;             ///< targets with both
    QHash<QString, long long> dagSizeCache; ///< bytes, of this run
    QHash<QString, QString> kindCache;
    qint64 lastCountLabelUpdateMs = 0; ///< of the last direct update; 0 at the start of each refresh

    QStringList rpcLogLines;
    QStringList statusLogLines;
};
