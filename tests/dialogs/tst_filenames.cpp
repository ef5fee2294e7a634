// SPDX-License-Identifier: MIT
#include "FileNames.h"
#include "FileWriter.h"
#include "TestMain.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <limits>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 allRoom = std::numeric_limits<quint64>::max();

/// Bounds the size of files, as a full disk would. Returns whether it can be set here.
bool setRoom([[maybe_unused]] quint64 bytes)
{
#ifdef Q_OS_UNIX
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min<rlim_t>(bytes, limit.rlim_max);
    return setrlimit(RLIMIT_FSIZE, &limit) == 0;
#else
    return false;
#endif
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

#ifdef Q_OS_UNIX
/// Root may write into any folder, so for a while the process is somebody else.
class WithoutPrivileges
{
    Q_DISABLE_COPY_MOVE(WithoutPrivileges)

public:
    WithoutPrivileges() { dropped = user != 0 || ::seteuid(nobody) == 0; }
    ~WithoutPrivileges() { dropped = user != 0 || ::seteuid(user) == 0; }
    bool dropped = false;

private:
    static constexpr uid_t nobody = 65534;
    const uid_t user = ::geteuid();
};
#endif

QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden);
}

/// Mixed from texts that have led somewhere else on some system.
QString hostileName(QRandomGenerator& random)
{
    static const QStringList pieces
        = u"..|.|/|\\|C:|//host/share|CON|nul.txt|~|$HOME|%2e%2e|a|é|😀|..\\..|／|．|\u202e| |\t|\r\n|\u00a0|\u2003.|"
          "\0|\xd800|\xdfff|\xffff"_s.split(u'|');
    QString name;
    for (auto count = random.bounded(1, 12); count > 0; --count)
        name += pieces.at(random.bounded(pieces.size()));
    return name;
}

bool isSafeName(const QString& name)
{
    const auto forbidden = [](QChar c) { return c.unicode() < 32 || u"/\\*:?\"<>|"_s.contains(c); };
    return !name.isEmpty() && !name.endsWith(u'.') && !name.endsWith(u' ') && std::ranges::none_of(name, forbidden);
}

} // namespace

class tst_FileNames : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void names()
    {
        const QList<QStringList> rows {{u" \ta b\n "_s, u"a b"_s, u"a b"_s}, // as a name, as a path
                                       {u""_s, u"file"_s, u"file"_s},
                                       {u".."_s, u"file"_s, u"_"_s},
                                       {u". . ."_s, u"file"_s, u"file"_s},
                                       {u"a/b\\c*d:e?f\"g<h>i|j"_s, u"a_b_c_d_e_f_g_h_i_j"_s, u"a/b_c_d_e_f_g_h_i_j"_s},
                                       {u"a\u0001b\u001fc\u007f"_s, u"a_b_c\u007f"_s, u"a_b_c\u007f"_s},
                                       {u"a.txt. .\u2003."_s, u"a.txt"_s, u"a.txt"_s},
                                       {u"..bashrc"_s, u"..bashrc"_s, u"..bashrc"_s},
                                       {u"//etc//passwd/"_s, u"__etc__passwd_"_s, u"etc/passwd"_s},
                                       {u"./a/./../b c"_s, u"._a_._.._b c"_s, u"a/_/b c"_s},
                                       {u"a/.. /b"_s, u"a_.. _b"_s, u"a/file/b"_s}};
        for (const QStringList& row : rows)
            QCOMPARE(QStringList({row.at(0), sanitizeFileName(row.at(0)), sanitizeRelativePath(row.at(0))}), row);
    }

    void noNameLeadsOut()
    {
        const QTemporaryDir outside;
        const QString folder = outside.filePath(u"in/side"_s);
        QRandomGenerator random(20240611);
        for (int i = 0; i < 20'000; ++i) {
            const QString hostile = i == 0 ? QString(10'000, u'.') + u'/' : hostileName(random);
            const QString name = sanitizeFileName(hostile);
            QVERIFY2(isSafeName(name), qPrintable(hostile));
            QCOMPARE(sanitizeFileName(name), name);
            const QString path = sanitizeRelativePath(hostile);
            QVERIFY2(std::ranges::all_of(path.split(u'/'), isSafeName), qPrintable(hostile));
            QCOMPARE(sanitizeRelativePath(path), path);
            if (i < 500) {
                QDir().mkpath(QFileInfo(folder + u'/' + path).path()); // fails where a file is: no matter
                writeFile(folder + u'/' + path, "x");
            }
        }
        QVERIFY(entriesOf(folder).size() > 100);
        QCOMPARE(entriesOf(outside.path()) + entriesOf(outside.filePath(u"in"_s)), QStringList({u"in"_s, u"side"_s}));
    }

    void deviceNames()
    {
        for (const QString& name : u"CON|prn|Aux.txt|NUL.tar.gz|com1|LPT9.x|COM²|con .txt"_s.split(u'|'))
            QVERIFY2(isDeviceName(name), qPrintable(name));
        for (const QString& name : u"CONS|COM|COM0|COM10|xCON|a.con|LPTA|"_s.split(u'|'))
            QVERIFY2(!isDeviceName(name), qPrintable(name));
#ifdef Q_OS_WIN
        QCOMPARE(sanitizeRelativePath(u"a/nul.txt/b"_s), u"a/_nul.txt/b"_s);
#else
        QCOMPARE(sanitizeRelativePath(u"a/nul.txt/b"_s), u"a/nul.txt/b"_s);
#endif
    }

    void sizesBelowTheFirstUnitAreBare()
    {
        QCOMPARE(formatFileSize(-1), u"-1"_s);
        QCOMPARE(formatFileSize(1023), u"1023"_s);
        QCOMPARE(formatFileSize(1024), u"1.0 KB"_s);
    }

    void suffixes()
    {
        QCOMPARE(suffixOf("\x89PNG\r\n\x1a\n"), u".png"_s);
        QCOMPARE(suffixOf("\xff\xd8\xff"), u".jpg"_s);
        QCOMPARE(suffixOf("GIF87a…") + suffixOf("GIF89a"), u".gif.gif"_s);
        QCOMPARE(suffixOf({"RIFF\0\1\2\3WEBP", 12}), u".webp"_s);
        QCOMPARE(suffixOf("%PDF-1.7"), u".pdf"_s);
        for (const char* unknown : {"\x89PNG\r\n\x1a", "GIF88a", "\n%PDF-1.7", "RIFF1234WEB", "RIFF1234WAVE", ""})
            QCOMPARE(suffixOf(unknown), QString());
    }

    void files()
    {
        const QByteArray large(1024 * 1024, 'x');
        const QByteArray small(5000, 'y'); // buffered as a whole, so no write but the last flush meets the limit
        const QList<std::pair<QByteArray, quint64>> writes {
            {large, 1024 * 1024 - 1},        {small, 4999}, {small, 5000}, {QByteArray(), 0},
            {QByteArray("short\0er", 8), 8}, {small, 0},    {large, 5000}};
        const QList<std::pair<QString, bool>> names {{QString(255, u'n'), true}, // no room for a temporary suffix
                                                     {QString(248, u'n'), true},
                                                     {QString(256, u'n'), false},
                                                     {u"no/a.txt"_s, false}};
        for (const auto& [name, writable] : names) {
            const QTemporaryDir folder;
            const QString path = folder.filePath(name);
            QByteArray kept = "unreadable";
            for (const auto& [data, room] : writes) {
                const bool full = setRoom(room) && room < static_cast<quint64>(data.size());
                const WriteResult result = writeFile(path, data);
                setRoom(allRoom);
                QVERIFY2(result.ok == (writable && !full), qPrintable(name + result.message));
                QCOMPARE(result.message.isEmpty(), result.ok);
                QVERIFY(!writable || !full || result.message == u"Failed to write "_s + name);
                if (result.ok)
                    kept = data;
                QCOMPARE(contentOf(path), kept);
                QCOMPARE(entriesOf(folder.path()).size(), kept == "unreadable" ? 0 : 1);
            }
        }
    }

#ifdef Q_OS_UNIX
    void aFileInAFolderThatTakesNoNewOnes()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.txt"_s);
        QVERIFY(writeFile(path, "old content").ok);
        const QFile::Permissions readers = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
        const QFile::Permissions entrants = readers | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
        QVERIFY(QFile::setPermissions(path, readers | QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther));
        QVERIFY(QFile::setPermissions(folder.path(), entrants));
        {
            const WithoutPrivileges other;
            QVERIFY(other.dropped);
            QCOMPARE(writeFile(path, "new").message, QString());
            QCOMPARE(contentOf(path), "new");
            QVERIFY(setRoom(2));
            QCOMPARE(writeFile(path, "newer").message, u"Failed to write a.txt, which has lost its former content"_s);
            setRoom(allRoom);
            QVERIFY(contentOf(path).size() <= 2);
            QVERIFY(writeFile(folder.filePath(u"b.txt"_s), "b").message.startsWith(u"Cannot write: "_s));
            QVERIFY(QFile::exists(path));
        }
        QVERIFY(QFile::setPermissions(folder.path(), entrants | QFile::WriteOwner));
    }
#endif
};

NORVO_TEST_MAIN(QCoreApplication, tst_FileNames)
#include "tst_filenames.moc"
