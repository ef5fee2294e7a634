// SPDX-License-Identifier: MIT
// How long the contents of one pin with 50,000 files take to show and to save, in the real dialog.

#include "BenchSupport.h"
#include "Detached.h"
#include "IpfsClient.h"
#include "PinContentsDialog.h"
#include "StatusLabel.h"

#include <QFileDialog>
#include <QPushButton>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Opens the dialog for the pin named "big tree", and saves everything once it has loaded. Each phase ends when the
/// dialog enables its buttons.
class ContentsBench : public Bench
{
public:
    using Bench::Bench;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::EnabledChange && qobject_cast<QWidget*>(watched)->isEnabled())
            QTimer::singleShot(0, this, result.isEmpty() ? &ContentsBench::save : &ContentsBench::finish);
        return false;
    }

private:
    int measure() override
    {
        const QUrl url(options.value(u"url"_s));
        node.setEndpoint(url.host(), static_cast<quint16>(url.port()));
        connect(&node, &IpfsClient::errorOccurred, this, failBench);
        connect(&node, &IpfsClient::catFailed, this, [](const QString&, const QString& text) { failBench(text); });
        connect(&node, &IpfsClient::pinsReceived, this, &ContentsBench::openDialog);
        node.fetchPins(u"recursive"_s, u"base32"_s, true);
        const int code = QCoreApplication::exec();
        return waitForDetached(10s) ? code : 1;
    }

    void openDialog(const QList<PinEntry>& pins)
    {
        const auto tree = std::ranges::find(pins, u"big tree"_s, &PinEntry::name);
        if (tree == pins.end())
            return failBench(u"the node has no big tree"_s);
        start();
        dialog = std::make_unique<PinContentsDialog>(tree->cid, &node, nullptr, tree->name);
        dialog->findChild<QPushButton*>()->installEventFilter(this);
        dialog->show();
    }

    QString status() const { return dialog->findChild<StatusLabel*>()->text(); }

    void save()
    {
        result = {{u"counts"_s, status()},
                  {u"loadSeconds"_s, seconds()},
                  {u"loadStallMs"_s, takeStallMs()},
                  {u"loadPeakRssMiB"_s, peakRssMiB()}};
        dialog->findChild<QPushButton*>()->click();
        auto* picker = dialog->findChild<QFileDialog*>();
        picker->setDirectory(saved.path());
        start();
        static_cast<QDialog*>(picker)->accept();
    }

    void finish()
    {
        result[u"saveSeconds"_s] = seconds();
        result[u"saveStallMs"_s] = takeStallMs();
        result[u"outcome"_s] = status().section(u' ', 0, 2);
        result[u"peakRssMiB"_s] = peakRssMiB();
        print();
    }

    IpfsClient node;
    QTemporaryDir saved;
    std::unique_ptr<PinContentsDialog> dialog;
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    ContentsBench bench(argc, argv, {{u"tree"_s, u"Number of files."_s, u"number"_s, u"50000"_s}});
    return bench.run({{{u"--tree"_s, bench.options.value(u"tree"_s)}}});
}
