#pragma once

#include <QApplication>
#include <QTimer>

#include <chrono>
#include <functional>

/// Answers the next modal dialog of type `Dialog`. Looks for it while the dialog's own event loop runs; a dialog of
/// another type is left alone.
template <typename Dialog> class ModalAnswer
{
public:
    explicit ModalAnswer(std::function<void(Dialog&)> newAnswer)
        : answer(std::move(newAnswer))
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { look(); });
        timer.start(std::chrono::milliseconds(5));
    }
    bool wasGiven() const { return given; }

private:
    void look()
    {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        timer.stop();
        given = true;
        answer(*dialog);
    }

    std::function<void(Dialog&)> answer;
    QTimer timer;
    bool given = false;
};
