// SPDX-License-Identifier: MIT
#include "ActionBox.h"
#include "ActivationDialog.h"
#include "AddToIpfsDialog.h"
#include "Appearance.h"
#include "DemoNode.h"
#include "DialogSizing.h"
#include "IndirectPinsDialog.h"
#include "IpfsClient.h"
#include "PinContentsDialog.h"
#include "SettingsDialog.h"
#include "StatusLabel.h"
#include "TextQuestion.h"
#include "WindowTest.h"

#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QScreen>
#include <QSet>
#include <QVBoxLayout>

#include <cmath>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr int largePointSize = 18;
constexpr int settleTime = 1000; // milliseconds, for layouts

using Open = std::function<QWidget*(MainWindow&)>;
using ShowTool = void (MainWindow::*)(MainWindow::AuxWindowMode);

QWidget* opened(QDialog* dialog)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
    return dialog;
}

IpfsClient* clientOf(const MainWindow& window)
{
    return window.findChild<IpfsClient*>();
}

bool isReached(const QWidget* widget, const QWidget* window)
{
    const bool isPart = qobject_cast<QAbstractSpinBox*>(widget->parentWidget())
        || qobject_cast<QComboBox*>(widget->parentWidget()) || widget->focusProxy();
    return !isPart && widget->window() == window && widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus);
}

/// A combo box is called by what it shows, so it needs a label or a description.
bool isNamed(QWidget* widget)
{
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(widget);
    if (!qobject_cast<QComboBox*>(widget))
        return !interface->text(QAccessible::Name).isEmpty();
    return !interface->relations(QAccessible::Label).isEmpty() || !interface->text(QAccessible::Description).isEmpty();
}

QString textOf(const QWidget* widget)
{
    return QLatin1StringView(widget->metaObject()->className()) + u' ' + widget->property("text").toString();
}

bool isCutOff(const QWidget* widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        if (label->inherits("PeerLabel") || label->objectName() == "statusLabel"_L1)
            return false; // what they cut is in their tool tips
        return label->wordWrap() ? label->heightForWidth(label->width()) > label->height()
                                 : label->sizeHint().width() > label->width();
    }
    if (const auto* box = qobject_cast<const QGroupBox*>(widget))
        return box->fontMetrics().horizontalAdvance(box->title()) > box->width();
    const auto* button = qobject_cast<const QAbstractButton*>(widget);
    return button && !button->text().isEmpty()
        && (button->sizeHint().width() > button->width() || button->sizeHint().height() > button->height());
}

double luminance(const QColor& color)
{
    const auto linear
        = [](double part) { return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& ink, const QColor& ground)
{
    const auto [darker, lighter] = std::minmax({luminance(ink), luminance(ground)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

/// What each window owes those who use no mouse, see little, or read from right to left.
class tst_Accessibility : public WindowTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QApplication::setCursorFlashTime(0);
        applyFusionLook();
    }
    void init()
    {
        failOnWarnings();
        openAppSettings().clear();
        demo = std::make_unique<DemoNode>(DemoOptions {.port = 0, .pins = 8, .remoteServices = {u"harbour"_s}});
    }
    void cleanup()
    {
        close();
        QApplication::setFont({});
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }

    void windows_data()
    {
        QTest::addColumn<Open>("show");
        QTest::addColumn<bool>("hard"); // a large font, right to left, and as small as it can be made
        const auto row = [](const char* name, const Open& show) {
            QTest::newRow(name) << show << false;
            QTest::addRow("%s, hard", name) << show << true;
        };
        row("main window", [](MainWindow& owner) { return &owner; });
        row("settings", [](MainWindow& owner) { return opened(new SettingsDialog(&owner)); });
        row("activation", [](MainWindow& owner) { return opened(new ActivationDialog(&owner)); });
        row("add", [](MainWindow& owner) { return opened(new AddToIpfsDialog(clientOf(owner), false, &owner)); });
        row("indirect pins",
            [](MainWindow& owner) { return opened(new IndirectPinsDialog(u"bafya"_s, clientOf(owner), &owner)); });
        row("contents",
            [](MainWindow& owner) { return opened(new PinContentsDialog(u"bafya"_s, clientOf(owner), &owner, {})); });
        const auto tool = [&row](const char* name, ShowTool show) {
            row(name, [show](MainWindow& owner) -> QWidget* {
                (owner.*show)(MainWindow::AuxChildWindow);
                return owner.findChildren<QDialog*>().constLast();
            });
        };
        tool("GC", &MainWindow::showGcDialog);
        tool("DHT", &MainWindow::showDhtStatsDialog);
        tool("network", &MainWindow::showNetworkDialog);
        tool("swarm", &MainWindow::showSwarmDialog);
        tool("config", &MainWindow::showConfigDialog);
        tool("remote services", &MainWindow::showRemoteServicesDialog);
        tool("status log", &MainWindow::showStatusLogDialog);
        tool("RPC log", &MainWindow::showRpcLogDialog);
        for (const auto& entry : {u"Keyboard shortcuts"_s, u"Report a problem…"_s}) {
            row(qPrintable(entry), [entry](MainWindow& owner) -> QWidget* {
                withText<QAction>(*owner.menuBar(), entry)->trigger();
                return owner.findChildren<QDialog*>().constLast();
            });
        }
        row("question", [](MainWindow& owner) -> QWidget* {
            return askForText({.title = u"a"_s, .label = QString(59, u'b')}, &owner, [](const QString&) {});
        });
        row("box", [](MainWindow& owner) -> QWidget* {
            auto* box = new ActionBox(QMessageBox::Information, u"a"_s, QString(64, u'b'), {u"Copy"_s}, &owner);
            box->openFor([](int) {});
            return box;
        });
    }
    void windows()
    {
        QFETCH(const Open, show);
        QFETCH(const bool, hard);
        if (hard) {
            QApplication::setFont(QFont(QApplication::font().family(), largePointSize));
            QApplication::setLayoutDirection(Qt::RightToLeft);
        }
        open(*demo);
        QTRY_VERIFY(refreshButton()->isEnabled());
        QPointer<QWidget> shown = show(*window);
        shown->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(shown));
        QTRY_VERIFY(isSettled(*shown));
        if (hard)
            shown->resize(1, 1);
        QStringList faults;
        const bool isFine = QTest::qWaitFor([&] { return (faults = faultsOf(*shown)).isEmpty(); }, settleTime);
        QVERIFY2(isFine, qPrintable(faults.join(u'\n')));
        if (shown == window.get())
            return;
        QTest::keyClick(shown, Qt::Key_Escape);
        QTRY_VERIFY(!shown || shown->isHidden());
    }

    void aDialogThatIsTooLargeScrolls()
    {
        QDialog dialog;
        DialogSizing::attach(&dialog, {.maxWidthRatio = 1, .maxHeightRatio = 1});
        auto* column = new QVBoxLayout(&dialog);
        auto* field = new QLineEdit(&dialog);
        auto* button = new QPushButton(u"far down"_s, &dialog);
        column->addWidget(field);
        column->addSpacing(2000);
        column->addWidget(button);
        dialog.show();
        QVERIFY(dialog.height() <= dialog.screen()->availableSize().height());
        QVERIFY(field->isVisible() && !field->visibleRegion().isEmpty());
        QTRY_VERIFY(button->visibleRegion().isEmpty());
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        field->setFocus();
        QTest::keyClick(field, Qt::Key_Tab);
        QTRY_VERIFY(button->hasFocus() && !button->visibleRegion().isEmpty());
    }

    void textsAreReadable_data()
    {
        QTest::addColumn<QColor>("ink");
        QTest::addColumn<QColor>("ground");
        const QPalette dark = darkPalette();
        const auto row
            = [](const char* name, const QPalette& colors, QPalette::ColorRole ink, QPalette::ColorRole ground) {
                  QTest::newRow(name) << colors.color(ink) << colors.color(ground);
              };
        row("window", dark, QPalette::WindowText, QPalette::Window);
        row("field", dark, QPalette::Text, QPalette::Base);
        row("every other row", dark, QPalette::Text, QPalette::AlternateBase);
        row("button", dark, QPalette::ButtonText, QPalette::Button);
        row("selected", dark, QPalette::HighlightedText, QPalette::Highlight);
        row("placeholder", dark, QPalette::PlaceholderText, QPalette::Base);
        row("tool tip", toolTipPalette(), QPalette::ToolTipText, QPalette::ToolTipBase);
        for (const auto say : {&StatusLabel::showHint, &StatusLabel::showProgress, &StatusLabel::showFailure}) {
            StatusLabel label;
            (label.*say)(u"x"_s);
            label.ensurePolished();
            QVERIFY(label.autoFillBackground() || label.styleSheet().isEmpty());
            QTest::addRow("status, %s", qPrintable(label.styleSheet()))
                << label.palette().color(label.foregroundRole()) << label.palette().color(QPalette::Window);
        }
    }
    void textsAreReadable()
    {
        QFETCH(const QColor, ink);
        QFETCH(const QColor, ground);
        const double ratio = contrast(ink, ground);
        QVERIFY2(ratio >= 4.5, qPrintable(QString::number(ratio)));
    }

private:
    static bool isSettled(const QWidget& shown)
    {
        const QList<StatusLabel*> labels = shown.findChildren<StatusLabel*>();
        return std::ranges::none_of(labels, [](auto* label) { return label->text().startsWith("Loading"_L1); });
    }

    static QStringList faultsOf(QWidget& shown)
    {
        QStringList faults;
        if (!shown.screen()->availableGeometry().contains(QRect({}, shown.size())))
            faults.append(u"larger than the screen"_s);
        QSet<QWidget*> missed;
        for (auto* widget : shown.findChildren<QWidget*>()) {
            if (widget->isVisible() && widget->window() == &shown && isCutOff(widget))
                faults.append(u"cut off: "_s + textOf(widget));
            if (!isReached(widget, &shown))
                continue;
            if (!isNamed(widget))
                faults.append(u"without a name: "_s + textOf(widget));
            if (widget->isEnabled())
                missed.insert(widget);
        }
        return faults + faultsOfTabKey(shown, missed);
    }

    /// Goes round by the Tab key once, and looks whether each stop can be seen.
    static QStringList faultsOfTabKey(QWidget& shown, QSet<QWidget*> missed)
    {
        QStringList faults;
        for (qsizetype stop = missed.size(); stop > 0; --stop) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QWidget* widget = QApplication::focusWidget();
            while (widget->parentWidget() && !missed.contains(widget) && widget != &shown)
                widget = widget->parentWidget(); // a field is a part of its combo box
            missed.remove(widget);
            const QImage with = widget->grab().toImage();
            widget = QApplication::focusWidget();
            widget->clearFocus();
            const auto* button = qobject_cast<QPushButton*>(widget);
            const bool isDefault = button && button->isDefault(); // has the frame of the focus already
            if (!isDefault && widget->grab().toImage() == with)
                faults.append(u"focus not seen: "_s + textOf(widget));
            widget->setFocus(Qt::TabFocusReason);
        }
        for (const QWidget* widget : std::as_const(missed))
            faults.append(u"not reached: "_s + textOf(widget));
        return faults;
    }

    std::unique_ptr<DemoNode> demo;
};

NORVO_TEST_MAIN(QApplication, tst_Accessibility)
#include "tst_accessibility.moc"
