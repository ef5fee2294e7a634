// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ActionBox.h"
#include "ActivationDialog.h"
#include "PinContentsDialog.h"
#include "PinToolBar.h"
#include "ProductInfo.h"
#include "WidgetBuilders.h"

#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int aboutIconSize = 64;

/// F5 everywhere, and what else the platform refreshes by.
QList<QKeySequence> refreshKeys()
{
    QList<QKeySequence> keys {QKeySequence(Qt::Key_F5)};
    for (const QKeySequence& key : QKeySequence::keyBindings(QKeySequence::Refresh)) {
        if (!keys.contains(key))
            keys.append(key);
    }
    return keys;
}

} // namespace

void MainWindow::setupMenuBar()
{
    setupFileMenu();
    setupEditMenu();
    setupToolsMenu();
    setupHelpMenu();
}

void MainWindow::setupFileMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    addToIpfsAction = menu->addAction(tr("Add to &IPFS…"), this, &MainWindow::onAddToIpfsClicked);
    menu->addSeparator();
    menu->addAction(tr("&Settings..."), Qt::CTRL | Qt::Key_Comma, this, &MainWindow::onSettingsClicked);
    menu->addAction(tr("Remote &Services..."), this, &MainWindow::onRemoteServicesClicked)
        ->setEnabled(toolWindows->canShow(ToolWindows::RemoteServices));
    menu->addSeparator();
    menu->addAction(tr("&Quit"), QKeySequence::Quit, this, &MainWindow::quit);
}

void MainWindow::setupEditMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Edit"));
    menu->addAction(tr("&Copy CID"), QKeySequence::Copy, this, &MainWindow::onCopySelectedCID);
    menu->addAction(tr("Open from &gateway"), Qt::CTRL | Qt::Key_G, this, &MainWindow::onOpenInGateway);
    menu->addAction(tr("Open from &local"), Qt::CTRL | Qt::Key_L, this, &MainWindow::onOpenFromLocal);
    menu->addAction(tr("Open via I&PNS..."), this, &MainWindow::onOpenViaIpnsClicked);
    publishToIpnsAction = menu->addAction(tr("Publish to &IPNS..."), this, &MainWindow::onPublishToIpnsClicked);
    menu->addAction(tr("&Resolve IPNS..."), this, &MainWindow::onResolveIpnsClicked);
    menu->addSeparator();
    unpinSelectedAction = menu->addAction(tr("Unpin selected"), this, &MainWindow::onUnpinSelected);
    unpinAllAction = menu->addAction(tr("Unpin all listed CIDs"), this, &MainWindow::onUnpinAll);
    for (QAction* action : {publishToIpnsAction, unpinSelectedAction, unpinAllAction})
        action->setEnabled(false);
    menu->addSeparator();
    menu->addAction(tr("&Find"), this, [this] { toolBar->focusSearch(); })
        ->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_F), QKeySequence(Qt::Key_Slash)});
    QAction* refresh = menu->addAction(tr("R&efresh"), this, &MainWindow::onRefreshClicked);
    refresh->setShortcuts(refreshKeys());
    refresh->setShortcutContext(Qt::ApplicationShortcut);
}

/// Its keys are the places in the menu. They lead from one tool window to another as well.
void MainWindow::setupToolsMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Tools"));
    int place = 0;
    const auto addTool = [this, menu, &place](ToolWindows::Id id) {
        QAction* action = menu->addAction(ToolWindows::caption(id), QKeySequence(Qt::CTRL | (Qt::Key_1 + place)), this,
                                          [this, id] { toolWindows->show(id, AuxChildWindow); });
        action->setShortcutContext(Qt::ApplicationShortcut);
        action->setEnabled(toolWindows->canShow(id));
        ++place;
    };
    std::ranges::for_each(ToolWindows::onToolBar, addTool);
    menu->addSeparator();
    addTool(ToolWindows::RemoteServices);
}

void MainWindow::setupHelpMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Help"));
    menu->addAction(tr("User &guide"), Qt::Key_F1, this, &MainWindow::openUserGuide)
        ->setShortcutContext(Qt::ApplicationShortcut);
    menu->addAction(tr("&Keyboard shortcuts"), this, &MainWindow::showShortcuts);
    menu->addAction(tr("Report a &problem…"), this, &MainWindow::reportProblem);
    menu->addSeparator();
    menu->addAction(tr("&Activation..."), this, &MainWindow::onActivationClicked);
    menu->addSeparator();
    menu->addAction(tr("About Norvo"), this, &MainWindow::showAboutBox);
    menu->addAction(tr("About Qt"), qApp, &QApplication::aboutQt);
}

void MainWindow::onActivationClicked()
{
    ActivationDialog dialog(this);
    dialog.exec();
}

void MainWindow::showAboutBox()
{
    const QPointer<QMessageBox> box = new QMessageBox(this);
    box->setWindowTitle(tr("About Norvo"));
    box->setIconPixmap(QApplication::windowIcon().pixmap(aboutIconSize, aboutIconSize));
    box->setTextFormat(Qt::RichText);
    box->setText(tr("<h3>Norvo %1</h3><p>A Qt-based desktop application for viewing locally pinned CIDs from a running "
                    "<b>Kubo</b> IPFS node via its RPC API.</p><p>Supports Linux, macOS and Windows.</p>"
                    "<p><a href=\"%2\">%2</a></p>")
                     .arg(QApplication::applicationVersion().toHtmlEscaped(), ProductInfo::webUrl));
    box->setStandardButtons(QMessageBox::Close);
    box->setDefaultButton(QMessageBox::Close);
    box->setEscapeButton(QMessageBox::Close);
    const QPushButton* update = box->addButton(tr("Check for update"), QMessageBox::ActionRole);
    for (QLabel* label : box->findChildren<QLabel*>()) {
        label->setOpenExternalLinks(true);
        if (label->text().contains("href="_L1))
            label->setTextInteractionFlags(Qt::TextBrowserInteraction); // the link is reached by Tab
    }
    box->exec();
    if (!box) // it went with this window
        return;
    const bool wantsUpdate = box->clickedButton() == update;
    delete box;
    if (wantsUpdate)
        checkForUpdates();
}

/// Closes this window first: the application would close the dialogs in any order, and those end what they do.
void MainWindow::quit()
{
    if (close() && !isVisible()) // a close that is asking already returns true
        QCoreApplication::quit();
}

/// Empty if nothing is under way that would be cut.
QString MainWindow::quitQuestion() const
{
    if (currentAdd.isRunning)
        return tr("An add is still running. Quit anyway?");
    const auto dialogs = findChildren<PinContentsDialog*>();
    return std::ranges::any_of(dialogs, &PinContentsDialog::isSaving) ? tr("A save is still running. Quit anyway?")
                                                                      : QString();
}

bool MainWindow::mayClose()
{
    const QString question = quitQuestion();
    return question.isEmpty() || askYesNo(QMessageBox::Question, u"Norvo"_s, question, this);
}
