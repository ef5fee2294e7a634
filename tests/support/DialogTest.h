// SPDX-License-Identifier: MIT
#pragma once

#include "AppSettings.h"
#include "Detached.h"
#include "FakeNode.h"
#include "IpfsClient.h"
#include "ModalAnswer.h"
#include "NodeWords.h"
#include "TestMain.h"
#include "WidgetSearch.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <chrono>
#include <memory>
#include <utility>

/// What the tests of a dialog have in common: a scripted node, a client of it, and what the dialog reports.
template <typename Dialog> class DialogTest : public QObject
{
protected:
    /// A fresh node, a client of it and no settings.
    void startNode()
    {
        failOnWarnings();
        openAppSettings().clear();
        node = std::make_unique<FakeNode>();
        client = std::make_unique<IpfsClient>();
        client->setEndpoint(QStringLiteral("127.0.0.1"), node->port());
        messages.clear();
    }
    /// A new dialog, which is not shown.
    template <typename... Arguments> void make(Arguments&&... arguments)
    {
        dialog = std::make_unique<Dialog>(std::forward<Arguments>(arguments)...);
        if constexpr (requires { &Dialog::statusMessageRequested; })
            connect(dialog.get(), &Dialog::statusMessageRequested, this,
                    [this](const QString& text) { messages.append(text); });
    }
    void showActive() const
    {
        dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    }
    void close()
    {
        dialog.reset();
        QVERIFY(waitForDetached(std::chrono::seconds(10)));
    }

    /// By its text without "&".
    QPushButton* button(const char* text) const { return withText<QPushButton>(*dialog, QString::fromUtf8(text)); }
    StatusLabel* status() const { return dialog->template findChild<StatusLabel*>(); }
    bool isRed() const { return status()->styleSheet() == QStringLiteral("color: darkred;"); }
    /// What the node said of the dialog's calls.
    NodeWords* words() const { return dialog->template findChild<NodeWords*>(); }
    static QString clipboard() { return QGuiApplication::clipboard()->text(); }

    std::unique_ptr<FakeNode> node;
    std::unique_ptr<IpfsClient> client;
    std::unique_ptr<Dialog> dialog;
    QStringList messages; ///< for the main window
};
