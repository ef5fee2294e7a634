// SPDX-License-Identifier: MIT
#pragma once

#include "AppSettings.h"
#include "Detached.h"
#include "FakeNode.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "ModalAnswer.h"
#include "TestMain.h"
#include "WidgetSearch.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>

#include <chrono>
#include <memory>

/// What the tests of the real window have in common. The members are in the order of their lives.
class WindowTest : public QObject
{
protected:
    /// A fresh node whose peer is "x" and that has these pins, and no settings.
    void startNode(const QByteArray& pins)
    {
        failOnWarnings();
        openAppSettings().clear();
        node = std::make_unique<FakeNode>();
        node->answer("/id", NodeAnswer::json(R"({"ID":"x"})"));
        node->answer("/pin/ls", NodeAnswer::json(pins));
    }
    void open() { open(*node); }
    /// And waits until the table has its `count` rows.
    void openLoaded(int count)
    {
        open();
        QVERIFY(waitForRows(count));
    }
    /// Shows a window that asks `served`.
    void open(const NodeServer& served)
    {
        setting(QLatin1StringView("port"), served.port());
        reopen();
    }
    /// Shows a window that asks the node of the one before it.
    void reopen()
    {
        window = std::make_unique<MainWindow>();
        window->show();
        window->activateWindow(); // nobody else does where there is no window manager
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }
    void close()
    {
        window.reset();
        QVERIFY(waitForDetached(std::chrono::seconds(10)));
    }
    static void setting(QLatin1StringView key, const QVariant& value) { openAppSettings().setValue(key, value); }

    IpfsClient* client() const { return window->findChild<IpfsClient*>(); }
    static QString clipboard() { return QGuiApplication::clipboard()->text(); }
    QTableView* table() const { return window->findChild<QTableView*>(); }
    int rows() const { return table()->model()->rowCount(); }
    QStringList cells(int section) const
    {
        QStringList texts;
        for (int row = 0; row < rows(); ++row)
            texts.append(table()->model()->index(row, section).data().toString());
        return texts;
    }
    bool waitForRows(int count) const
    {
        return QTest::qWaitFor([&] { return rows() == count && refreshButton()->isEnabled(); }, 20'000);
    }
    QPushButton* refreshButton() const { return window->findChild<QPushButton*>(QStringLiteral("refreshBtn")); }
    /// An entry of the menus, by its text without "&".
    QAction* action(const QString& text) const { return withText<QAction>(*window->menuBar(), text); }
    void trigger(const QString& text) const { action(text)->trigger(); }
    /// Opens a dialog by its entry in the menus. One that `act` leaves open is cancelled.
    template <typename Dialog, typename Act> void inDialog(const QString& entry, const Act& act) const
    {
        const ModalAnswer<Dialog> answer([&act](Dialog& dialog) {
            act(dialog);
            if (dialog.isVisible())
                dialog.reject();
        });
        trigger(entry);
        QVERIFY(answer.wasGiven());
    }
    bool isLogged(const QString& text) const
    {
        return !window->statusLog().filter(QStringLiteral("  ") + text).isEmpty();
    }
    template <typename Dialog> static Dialog* modal()
    {
        return qobject_cast<Dialog*>(QApplication::activeModalWidget());
    }
    /// Presses a button of the modal box; false if there is none.
    static bool press(const QString& text)
    {
        const auto* box = modal<QMessageBox>();
        auto* found = box ? withText<QPushButton>(*box, text) : nullptr;
        if (found)
            found->click();
        return found;
    }
    QLabel* label(QLatin1StringView name) const { return window->findChild<QLabel*>(name); }
    QString status() const { return label(QLatin1StringView("statusLabel"))->text(); }
    /// The field next to a caption of the tool bar.
    template <typename Field> Field* field(QLatin1StringView caption) const
    {
        for (const auto* text : window->findChildren<QLabel*>()) {
            if (text->text().trimmed() == caption)
                return qobject_cast<Field*>(text->buddy());
        }
        return nullptr;
    }

    std::unique_ptr<FakeNode> node;
    std::unique_ptr<MainWindow> window;
};
