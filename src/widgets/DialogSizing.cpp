// SPDX-License-Identifier: MIT
#include "DialogSizing.h"

#include "AppSettings.h"
#include "ScreenArea.h"

#include <QDialog>
#include <QEvent>
#include <QGuiApplication>
#include <QHash>
#include <QScreen>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize fallbackSize(640, 480);
constexpr double smallestRatio = 0.2;
constexpr double largestRatio = 1.0;
constexpr QSize frameRoom(8, 40); // what a window manager may draw around a dialog

bool isAboveZero(const QSize& size)
{
    return size.width() > 0 && size.height() > 0;
}

class DialogSizingController : public QObject
{
public:
    DialogSizingController(QDialog* newDialog, const DialogSizing::Options& newOptions)
        : QObject(newDialog)
        , dialog(newDialog)
        , options(newOptions)
    {
    }

    void requestRefit()
    {
        if (followsContent())
            scheduleRefit();
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == parent())
            follow(event->type());
        return QObject::eventFilter(watched, event);
    }

private:
    void follow(QEvent::Type type)
    {
        switch (type) {
        case QEvent::Polish:
            scrollIfTooLarge();
            break;
        case QEvent::Resize:
            growMinimumSize();
            userResized = userResized || (!applyingSize && dialog->isVisible() && initialShowHandled);
            break;
        case QEvent::Show:
            if (!std::exchange(initialShowHandled, true))
                restoreOrFit();
            break;
        case QEvent::Close:
            if (persists())
                save();
            break;
        case QEvent::LayoutRequest:
            growMinimumSize();
            if (dialog->isVisible() && followsContent())
                scheduleRefit();
            break;
        default:
            break;
        }
    }

    bool followsContent() const { return !geometryRestored && !userResized; }
    bool persists() const { return options.persistGeometry && !options.settingsKey.trimmed().isEmpty(); }
    QString geometryKey() const { return options.settingsKey + "/geometry"_L1; }

    void save() const
    {
        QSettings settings = openAppSettings();
        settings.setValue(geometryKey(), dialog->saveGeometry());
    }

    void restoreOrFit()
    {
        const QByteArray saved = persists() ? openAppSettings().value(geometryKey()).toByteArray() : QByteArray();
        geometryRestored = !saved.isEmpty() && dialog->restoreGeometry(saved);
        if (geometryRestored) {
            keepOnScreen(dialog);
            return;
        }
        fitToContent();
        scheduleRefit();
    }

    void scheduleRefit()
    {
        if (refitPending)
            return;
        refitPending = true;
        QTimer::singleShot(0, dialog, [this] {
            refitPending = false;
            if (dialog->isVisible() && followsContent())
                fitToContent();
        });
    }

    QRect availableArea() const
    {
        const QScreen* screen = dialog->screen() ? dialog->screen() : QGuiApplication::primaryScreen();
        return screen ? screen->availableGeometry() : QRect();
    }

    /// Before the first show: a dialog that can't be made as small as the screen gets scroll bars.
    void scrollIfTooLarge()
    {
        QLayout* layout = dialog->layout();
        const QSize room = availableArea().size() - frameRoom;
        if (scrolls || !layout || !isAboveZero(room))
            return;
        const QSize least
            = layout->totalMinimumSize().expandedTo({0, layout->totalMinimumHeightForWidth(room.width())});
        if (least.boundedTo(room) == least)
            return;
        scrolls = true;
        auto* content = new QWidget;
        content->setLayout(layout); // with all widgets that it has
        auto* area = new QScrollArea(dialog);
        area->setWidgetResizable(true);
        area->setFrameShape(QFrame::NoFrame);
        area->setFocusPolicy(Qt::NoFocus); // it follows the focus
        area->setWidget(content);
        auto* column = new QVBoxLayout(dialog);
        column->setContentsMargins({});
        column->addWidget(area);
    }

    /// Nothing is cut off, however large the fonts and however often texts wrap, as far as the screen goes. A box
    /// layout gives a part whose height follows from its width no less than that height, and takes it from the others.
    void growMinimumSize()
    {
        QSize least = options.minimumSize.expandedTo({0, 0});
        if (QLayout* layout = dialog->layout()) {
            layout->activate(); // else the layouts in it answer as they were
            least = least.expandedTo(layout->totalMinimumSize());
            if (layout->hasHeightForWidth())
                least = least.expandedTo({0, layout->totalHeightForWidth(std::max(least.width(), dialog->width()))});
        }
        const QSize room = availableArea().size() - frameRoom;
        const bool wasApplying = std::exchange(applyingSize, true); // nobody else may be taken for who resizes it
        dialog->setMinimumSize(isAboveZero(room) ? least.boundedTo(room) : least);
        applyingSize = wasApplying;
    }

    void fitToContent()
    {
        growMinimumSize();
        const QSize size = fittedSize();
        if (!isAboveZero(size))
            return;
        applyingSize = true;
        dialog->resize(size);
        applyingSize = false;
    }

    QSize baseSize() const
    {
        if (const QSize hint = options.useSizeHint ? dialog->sizeHint() : QSize(); isAboveZero(hint))
            return hint;
        for (const QSize& size : {options.preferredSize, options.minimumSize}) {
            if (isAboveZero(size))
                return size;
        }
        return fallbackSize;
    }

    QSize upperBound(const QSize& base) const
    {
        const QRect available = availableArea();
        if (!available.isValid())
            return base;
        const auto share = [](double ratio, int length) {
            return static_cast<int>(std::clamp(ratio, smallestRatio, largestRatio) * length);
        };
        return {share(options.maxWidthRatio, available.width()), share(options.maxHeightRatio, available.height())};
    }

    QSize fittedSize() const
    {
        const QSize base = baseSize();
        QSize size = base;
        for (const QSize& floor : {options.preferredSize, options.minimumSize}) {
            if (floor.isValid())
                size = size.expandedTo(floor);
        }
        return size.boundedTo(upperBound(base));
    }

    QDialog* dialog; ///< the parent, so it outlives this
    DialogSizing::Options options;
    bool initialShowHandled = false;
    bool refitPending = false;     ///< a refit is posted and has not run
    bool geometryRestored = false; ///< fitting is off for good
    bool userResized = false;      ///< fitting is off for good
    bool applyingSize = false;     ///< inside a resize of our own
    bool scrolls = false;          ///< its content is in a scroll area
};

QHash<QDialog*, DialogSizingController*>& dialogSizingRegistry()
{
    static QHash<QDialog*, DialogSizingController*> registry;
    return registry;
}

} // namespace

void DialogSizing::attach(QDialog* dialog, const Options& options)
{
    if (!dialog || dialogSizingRegistry().contains(dialog))
        return;
    Options own = options;
    if (own.settingsKey.trimmed().isEmpty())
        own.settingsKey = "Dialogs/"_L1 + QLatin1StringView(dialog->metaObject()->className());
    auto* controller = new DialogSizingController(dialog, own);
    dialogSizingRegistry().insert(dialog, controller);
    if (own.minimumSize.isValid())
        dialog->setMinimumSize(own.minimumSize);
    dialog->installEventFilter(controller);
    QObject::connect(dialog, &QObject::destroyed, dialog, [dialog] { dialogSizingRegistry().remove(dialog); });
}

void DialogSizing::requestRefit(QDialog* dialog)
{
    if (DialogSizingController* controller = dialogSizingRegistry().value(dialog))
        controller->requestRefit();
}
