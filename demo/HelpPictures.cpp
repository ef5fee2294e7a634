// SPDX-License-Identifier: MIT
#include "HelpPictures.h"

#include "MainWindow.h"
#include "PictureSteps.h"
#include "ProblemReportDialog.h"
#include "ShortcutsDialog.h"

#include <QMenuBar>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

QAction* entryOf(const QWidget& menu, const QString& text)
{
    for (QAction* action : menu.actions()) {
        if (action->text().remove(u'&') == text)
            return action;
    }
    fail(u"there is no entry "_s + text);
}

template <typename Dialog> Dialog* openedBy(const MainWindow& window, const QString& entry)
{
    entryOf(*entryOf(*window.menuBar(), u"Help"_s)->menu(), entry)->trigger();
    auto* dialog = window.findChild<Dialog*>();
    need(dialog, u"no window came after: "_s + entry);
    return dialog;
}

void closeWindow(QWidget* widget)
{
    const QPointer<QWidget> guard = widget;
    widget->close();
    awaitThat([&guard] { return !guard; }, u"a window did not close"_s);
}

} // namespace

void takeHelpPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take)
{
    QMenu* tools = entryOf(*window.menuBar(), u"Tools"_s)->menu();
    tools->popup(window.mapToGlobal(window.menuBar()->actionGeometry(tools->menuAction()).bottomLeft()));
    take(tools, "tools-menu"_L1);
    tools->close();

    auto* shortcuts = openedBy<ShortcutsDialog>(window, u"Keyboard shortcuts"_s);
    take(shortcuts, "shortcuts"_L1);
    closeWindow(shortcuts);

    auto* report = openedBy<ProblemReportDialog>(window, u"Report a problem…"_s);
    report->showReport(
        {.facts = {u"Norvo 1.1.3"_s, u"Qt: 6.4.2 (built with 6.4.2)"_s, u"libcurl: 7.88.1 (built with 7.88.1)"_s,
                   u"System: Debian GNU/Linux 12 (bookworm), linux 6.1.0-26-amd64, x86_64 (built for "
                   u"x86_64)"_s,
                   u"Window system: xcb, style fusion, font Noto Sans 10 pt, locale en_GB"_s,
                   u"Screen: 1920 x 1080, scale 1, 96 dpi"_s}, // of no real machine
         .agent = u"kubo/0.43.0"_s,
         .statusLog = window.statusLog()});
    take(report, "problem-report"_L1);
    closeWindow(report);
}
