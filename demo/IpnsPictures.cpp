// SPDX-License-Identifier: MIT
#include "IpnsPictures.h"

#include "ActionBox.h"
#include "MainWindow.h"
#include "PictureSteps.h"

#include <QComboBox>
#include <QInputDialog>
#include <QMenuBar>
#include <QTableView>

#include <algorithm>

using namespace Qt::StringLiterals;

void takeIpnsPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take)
{
    window.findChild<QTableView*>()->selectRow(0);
    const QList<QAction*> actions = window.menuBar()->findChildren<QAction*>();
    const auto publish
        = std::ranges::find_if(actions, [](auto* any) { return any->text().remove(u'&') == "Publish to IPNS..."_L1; });
    need(publish != actions.end(), u"there is no entry to publish with"_s);
    (*publish)->trigger();
    awaitThat([&window] { return window.findChild<QInputDialog*>(); }, u"the keys did not come"_s);
    auto* choice = window.findChild<QInputDialog*>();
    choice->findChild<QComboBox*>()->setCurrentText(u"website"_s);
    take(choice, "ipns-key"_L1);
    choice->accept();
    awaitThat([&window] { return window.findChild<ActionBox*>(); }, u"nothing was published"_s);
    auto* result = window.findChild<ActionBox*>();
    take(result, "ipns-result"_L1);
    result->accept();
}
