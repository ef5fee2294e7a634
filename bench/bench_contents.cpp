// How long the contents of one pin with 50,000 files take to show and to save, in the real dialog.

#include "BenchSupport.h"
#include "Detached.h"
#include "IpfsClient.h"
#include "PinContentsDialog.h"
#include "StatusLabel.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileDialog>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QUrl>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Opens the dialog for the pin named "big tree", and saves everything once it has loaded. Each phase ends when the
/// dialog enables its buttons.
class Measurement : public QObject
{
public:
    explicit Measurement(const QString& url)
    {
        const QUrl endpoint(url);
        client.setEndpoint(endpoint.host(), static_cast<quint16>(endpoint.port()));
        connect(&client, &IpfsClient::errorOccurred, this, &Measurement::fail);
        connect(&client, &IpfsClient::catFailed, this, [this](const QString&, const QString& text) { fail(text); });
        connect(&client, &IpfsClient::pinsReceived, this, &Measurement::openDialog);
        client.fetchPins(u"recursive"_s, u"base32"_s, true);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::EnabledChange && qobject_cast<QWidget*>(watched)->isEnabled())
            QTimer::singleShot(0, this, &Measurement::endPhase);
        return false;
    }

private:
    double takeSeconds() { return static_cast<double>(clock.restart()) / 1e3; }

    void fail(const QString& message)
    {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        QCoreApplication::exit(1);
    }

    void openDialog(const QList<PinEntry>& pins)
    {
        const auto tree = std::ranges::find(pins, u"big tree"_s, &PinEntry::name);
        if (tree == pins.end())
            return fail(u"the node has no big tree"_s);
        stalls.takeLongest();
        clock.start();
        dialog = std::make_unique<PinContentsDialog>(tree->cid, &client, nullptr, tree->name);
        saveAll = dialog->findChild<QPushButton*>();
        saveAll->installEventFilter(this);
        dialog->show();
    }

    void endPhase()
    {
        if (counts.isEmpty())
            startSave();
        else
            finish();
    }

    void startSave()
    {
        loadSeconds = takeSeconds();
        loadStall = stalls.takeLongest();
        loadRss = peakRssMiB();
        counts = dialog->findChild<StatusLabel*>()->text();
        saveAll->click();
        auto* picker = dialog->findChild<QFileDialog*>();
        picker->setDirectory(folder.path());
        stalls.takeLongest();
        clock.start();
        static_cast<QDialog*>(picker)->accept();
    }

    void finish()
    {
        const double saveSeconds = takeSeconds();
        printResult({{u"counts"_s, counts},
                     {u"outcome"_s, dialog->findChild<StatusLabel*>()->text().section(u' ', 0, 2)},
                     {u"loadSeconds"_s, rounded(loadSeconds)},
                     {u"loadStallMs"_s, rounded(loadStall)},
                     {u"loadPeakRssMiB"_s, rounded(loadRss)},
                     {u"saveSeconds"_s, rounded(saveSeconds)},
                     {u"saveStallMs"_s, rounded(stalls.takeLongest())},
                     {u"peakRssMiB"_s, rounded(peakRssMiB())}});
    }

    IpfsClient client;
    QTemporaryDir folder;
    std::unique_ptr<PinContentsDialog> dialog;
    QPushButton* saveAll = nullptr;
    StallMeter stalls;
    QElapsedTimer clock;
    QString counts;
    double loadSeconds = 0;
    double loadStall = 0;
    double loadRss = 0;
};

int measure(const QString& url)
{
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    const Measurement measurement(url);
    const int result = QCoreApplication::exec();
    return waitForDetached(10s) ? result : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{u"url"_s, u"Measure this node alone."_s, u"url"_s},
                       {u"tree"_s, u"Number of files."_s, u"number"_s, u"50000"_s}});
    parser.process(app);
    if (parser.isSet(u"url"_s))
        return measure(parser.value(u"url"_s));
    const DemoProcess node({u"--tree"_s, parser.value(u"tree"_s)});
    return !node.url().isEmpty() && runInOwnProcess({u"--url"_s, node.url()}) ? 0 : 1;
}
