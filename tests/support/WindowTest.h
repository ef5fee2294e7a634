// SPDX-License-Identifier: MIT
#pragma once

#include "AppSettings.h"
#include "Detached.h"
#include "FakeNode.h"
#include "MainWindow.h"
#include "TestMain.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
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
    QAction* action(const QString& text) const
    {
        for (auto* candidate : window->menuBar()->findChildren<QAction*>()) {
            if (candidate->text().remove(QLatin1Char('&')) == text)
                return candidate;
        }
        return nullptr;
    }
    void trigger(const QString& text) const { action(text)->trigger(); }
    bool isLogged(const QString& text) const
    {
        return !window->statusLog().filter(QStringLiteral("  ") + text).isEmpty();
    }
    /// Presses a button of the modal box; false if there is none.
    static bool press(const QString& text)
    {
        const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        for (QAbstractButton* button : box ? box->buttons() : QList<QAbstractButton*>()) {
            if (button->text().remove(QLatin1Char('&')) == text) {
                button->click();
                return true;
            }
        }
        return false;
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
