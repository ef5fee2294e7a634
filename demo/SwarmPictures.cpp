// SPDX-License-Identifier: MIT
#include "SwarmPictures.h"

#include "AddressTable.h"
#include "MainWindow.h"
#include "PictureSteps.h"
#include "SwarmDialog.h"

#include <QPointer>
#include <QTabWidget>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

/// In the order of the tabs; empty for none.
constexpr std::array tabPictures {"swarm-peers"_L1, ""_L1, "swarm-known"_L1, "swarm-bootstrap"_L1};

} // namespace

void takeSwarmPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take)
{
    window.showSwarmDialog(MainWindow::AuxChildWindow);
    const QPointer<SwarmDialog> dialog = window.findChild<SwarmDialog*>();
    need(dialog, u"the swarm window did not come"_s);
    const QList<AddressTable*> tables = dialog->findChildren<AddressTable*>();
    awaitThat([&] { return std::ranges::all_of(tables, [](const auto* table) { return table->rowCount() > 0; }); },
              u"the swarm did not come"_s);
    auto* tabs = dialog->findChild<QTabWidget*>();
    for (int tab = 0; tab < tabs->count(); ++tab) {
        const auto name = tabPictures.at(static_cast<size_t>(tab));
        tabs->setCurrentIndex(tab);
        if (!name.isEmpty())
            take(dialog, name);
    }
    dialog->close();
    awaitThat([&dialog] { return !dialog; }, u"the swarm window did not close"_s);
}
