// SPDX-License-Identifier: MIT
#pragma once

#include "ConfigDialog.h"
#include "ConfigTree.h"
#include "DialogTest.h"

#include <QComboBox>
#include <QJsonDocument>
#include <QJsonObject>

/// The dialog of a scripted node's configuration, shown and loaded anew for each test.
class ConfigDialogTest : public DialogTest<ConfigDialog>
{
protected:
    const QByteArray keyPath = "/config";
    const QByteArray showPath = "/config/show";
    const QByteArray replacePath = "/config/replace";

    void start(const QByteArray& config)
    {
        startNode();
        node->answer(showPath, NodeAnswer::json(config));
        node->answer(replacePath, NodeAnswer::json({}));
        node->route(keyPath, answerToKey);
        open();
        QTRY_VERIFY(messages.size() == 2 && isIdle());
    }
    void open()
    {
        make(client.get());
        showActive();
    }
    void fill(const QString& key, const QString& value, const QString& mode = QStringLiteral("String")) const
    {
        field(0)->setText(key);
        field(1)->setText(value);
        box(0)->setCurrentText(mode);
    }
    void verifyFailure(const QString& problem) const
    {
        QCOMPARE(status()->text(), problem);
        QVERIFY(isRed());
        QCOMPARE(messages.constLast(), QStringLiteral("Config error: ") + problem);
    }
    void refreshWith(const QByteArray& config)
    {
        node->answer(showPath, NodeAnswer::json(config));
        button("Refresh")->click();
        QTRY_VERIFY(isIdle());
    }
    /// Answers the question that `act` raises, which is `expected`, as its title and its text.
    template <typename Act>
    void answerNext(QMessageBox::StandardButton choice, const Act& act, const QString& expected = {})
    {
        const ModalAnswer<QMessageBox> answer([&](QMessageBox& question) {
            if (!expected.isEmpty())
                QCOMPARE(question.windowTitle() + QLatin1Char('|') + question.text(), expected);
            QCOMPARE(question.textFormat(), Qt::PlainText);
            QCOMPARE(question.standardButton(question.defaultButton()), QMessageBox::No);
            question.button(choice)->click();
        });
        act();
        QTRY_VERIFY(answer.wasGiven());
    }
    /// What the node was asked to set last: its arguments and its flag.
    QString sent() const
    {
        const NodeRequest request = node->requests(keyPath).constLast();
        QStringList parts = request.values(QStringLiteral("arg"));
        for (const char* flag : {"bool", "json"}) {
            if (request.value(QString::fromLatin1(flag)) == QLatin1String("true"))
                parts.append(QString::fromLatin1(flag));
        }
        return parts.join(QLatin1Char('|'));
    }
    /// Whether no request runs.
    bool isIdle() const { return button("Set")->isEnabled(); }
    ConfigTree* tree() const { return dialog->findChild<ConfigTree*>(); }
    QLineEdit* field(int place) const { return dialog->findChildren<QLineEdit*>().value(place); }
    QComboBox* box(int place) const { return dialog->findChildren<QComboBox*>().value(place); }
    QPushButton* restore() const { return button("Restore Backup"); }

private:
    /// What a node answers to a read and to a write.
    static NodeAnswer answerToKey(const NodeRequest& request)
    {
        const QStringList arguments = request.values(QStringLiteral("arg"));
        const QJsonObject answer {{QStringLiteral("Key"), arguments.value(0)},
                                  {QStringLiteral("Value"), arguments.value(1)}};
        return NodeAnswer::json(QJsonDocument(answer).toJson(QJsonDocument::Compact));
    }
};
