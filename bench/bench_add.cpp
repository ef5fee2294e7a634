// SPDX-License-Identifier: MIT
// How fast the real window adds files, from the accepted dialog to the result box: one of 2 GiB, 10,000 of 4 KiB and
// with --many 200,000 of 100 bytes. Before that, curl sends the same files, or a thousand of them, to the same node.

#include "ActionBox.h"
#include "AddToIpfsDialog.h"
#include "BenchSupport.h"
#include "IpfsClient.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTableView>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto filePrefix = "file-"_L1;
constexpr qint64 mostByCurl = 1000; // files
constexpr double megabyte = 1e6;

class AddBench : public Bench
{
public:
    using Bench::Bench;

    /// The dialog gets the files and is accepted, the result box is closed.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Show)
            return false;
        if (auto* dialog = qobject_cast<AddToIpfsDialog*>(watched))
            QTimer::singleShot(0, dialog, [this, dialog] { fill(*dialog); });
        if (auto* box = qobject_cast<ActionBox*>(watched)) {
            secondsToBox = seconds();
            QTimer::singleShot(0, box, &QDialog::accept);
        }
        return false;
    }

private:
    int measure() override
    {
        fileCount = options.value(u"files"_s).toInt();
        fileSize = options.value(u"bytes"_s).toLongLong();
        result = {{u"files"_s, fileCount}, {u"fileBytes"_s, fileSize}};
        if (!makeFiles() || !sendByCurl())
            return 1;
        return Bench::measure();
    }

    QString nameOf(qint64 file) const
    {
        const int folders = options.value(u"folders"_s).toInt();
        const QString name = filePrefix + QString::number(file);
        return folders == 0 ? name : u"folder-%1/%2"_s.arg(QString::number(file * folders / fileCount), name);
    }

    /// All different, and read once, so that no reader finds more of them in memory than the other.
    bool makeFiles() const
    {
        QByteArray buffer(1024 * 1024, Qt::Uninitialized);
        for (int i = 0; i < fileCount; ++i) {
            QFile file(sample.filePath(nameOf(i)));
            if (!QFileInfo(file).dir().mkpath(u"."_s) || !file.open(QIODevice::ReadWrite)
                || file.write(QByteArray::number(i)) < 0 || !file.resize(fileSize) || !file.seek(0))
                return fail(file.errorString());
            while (file.read(buffer.data(), buffer.size()) > 0) { }
        }
        return true;
    }

    bool sendByCurl()
    {
        const qint64 count = std::min<qint64>(fileCount, mostByCurl);
        QFile config(home.filePath(u"curl"_s));
        config.open(QIODevice::WriteOnly);
        for (qint64 i = 0; i < count; ++i) {
            const QString name = nameOf(i * fileCount / count);
            const QString part = u"file=@%1;filename=%2;type=application/octet-stream"_s;
            config.write(u"form = \"%1\"\n"_s.arg(part.arg(sample.filePath(name), name)).toUtf8());
        }
        config.close();
        const QString query = u"recursive=true&wrap-with-directory=true&pin=true&only-hash=false&cid-version=1"_s;
        const QString url = u"%1/api/v0/add?%2"_s.arg(options.value(u"url"_s), query);
        start();
        if (QProcess::execute(u"curl"_s,
                              {u"--silent"_s, u"--show-error"_s, u"--fail"_s, u"--header"_s, u"Expect:"_s,
                               u"--output"_s, QProcess::nullDevice(), u"--config"_s, config.fileName(), url})
            != 0)
            return fail(u"curl could not add the files"_s);
        result[u"curlFiles"_s] = count;
        result[u"curlSeconds"_s] = seconds();
        curlRate = static_cast<double>(count * fileSize) / megabyte / seconds();
        return true;
    }

    void follow() override
    {
        qputenv("HOME", home.path().toLocal8Bit()); // the dialog shows it
        qApp->installEventFilter(this);
        connect(client, &IpfsClient::pinsReceived, this, &AddBench::addSoon, Qt::SingleShotConnection);
        connect(client, &IpfsClient::rpcRequestIssued, this, &AddBench::begin);
        connect(client, &IpfsClient::addBytesSent, this, &AddBench::noteProgress);
        connect(client, &IpfsClient::addProgress, this, &AddBench::noteProgress);
        connect(client, &IpfsClient::addShortfall, this, [] { failBench(u"something is missing"_s); });
        connect(client, &IpfsClient::addFailed, this, failBench);
        connect(client, &IpfsClient::addCompleted, this, &AddBench::finish); // after the box, which the window executes
    }

    void addSoon() { QTimer::singleShot(0, this, &AddBench::add); }

    void add()
    {
        rssBefore = peakRssMiB();
        QMetaObject::invokeMethod(table->window(), "onAddToIpfsClicked");
        result[u"assembleSeconds"_s] = seconds();
        takeStallMs();
    }

    void fill(AddToIpfsDialog& dialog) const
    {
        QStringList paths = QDir(sample.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        for (QString& path : paths)
            path = sample.filePath(path);
        dialog.addPaths(paths);
        dialog.accept();
    }

    void begin(const QString& request)
    {
        if (request.contains(u"/add?"_s))
            start();
    }

    void noteProgress()
    {
        if (secondsToFirstProgress < 0)
            secondsToFirstProgress = seconds();
    }

    void finish(const QString& rootCid, const QList<AddEntry>& entries)
    {
        const auto isFile = [](const AddEntry& entry) { return entry.name.section(u'/', -1).startsWith(filePrefix); };
        const auto reported = std::ranges::count_if(entries, isFile);
        if (rootCid.isEmpty() || reported != fileCount)
            return failBench(u"the node reported %1 files"_s.arg(reported));
        const double rate = static_cast<double>(fileCount * fileSize) / megabyte / secondsToBox;
        result[u"filesReported"_s] = static_cast<qint64>(reported);
        result[u"seconds"_s] = secondsToBox;
        result[u"secondsToFirstProgress"_s] = secondsToFirstProgress;
        result[u"megabytesPerSecond"_s] = rate;
        result[u"curlMegabytesPerSecond"_s] = curlRate;
        result[u"shareOfCurl"_s] = rate / curlRate;
        result[u"longestStallMs"_s] = takeStallMs();
        result[u"memoryMiB"_s] = peakRssMiB() - rssBefore;
        print();
    }

    static bool fail(const QString& message)
    {
        failBench(message);
        return false;
    }

    QTemporaryDir sample;
    QTemporaryDir home;
    qint64 fileCount = 0;
    qint64 fileSize = 0; ///< bytes
    double curlRate = 0; ///< megabytes a second
    double rssBefore = 0;
    double secondsToFirstProgress = -1;
    double secondsToBox = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    AddBench bench(argc, argv,
                   {{u"many"_s, u"Add 200,000 files as well."_s},
                    {u"files"_s, u"Number of files."_s, u"number"_s},
                    {u"folders"_s, u"Folders that they are in."_s, u"number"_s},
                    {u"bytes"_s, u"Size of each."_s, u"number"_s}});
    bench.settings = {{u"loadMetadata"_s, false}};
    const auto files = [](const QString& count, const QString& folders, const QString& bytes) {
        return Demo {{}, {{u"--files"_s, count, u"--folders"_s, folders, u"--bytes"_s, bytes}}};
    };
    QList<Demo> demos {files(u"1"_s, u"0"_s, u"2147483648"_s), files(u"10000"_s, u"100"_s, u"4096"_s)};
    if (bench.options.isSet(u"many"_s))
        demos.append(files(u"200000"_s, u"2000"_s, u"100"_s));
    return bench.run(demos);
}
