#include "FileNames.h"
#include "FileWriter.h"
#include "TestMain.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;

namespace {

/// Texts that have led somewhere else on some system, and what they are mixed with.
QStringList hostilePieces()
{
    QStringList pieces
        = u".. . / \\ C: //host/share CON nul.txt ~ $HOME %2e%2e a é 😀 ..\\.. ／ ．． \u202e"_s.split(u' ');
    pieces.append({u" "_s, u"\t"_s, u"\r\n"_s, u"\u00a0"_s, u"\u2003."_s});
    for (const char16_t unit : {u'\0', char16_t {0xd800}, char16_t {0xdfff}, char16_t {0xffff}})
        pieces.append(QString(QChar(unit)));
    return pieces;
}

class HostileNames
{
public:
    QString next()
    {
        QString text;
        for (auto count = random.bounded(1, 12); count > 0; --count)
            text += pieces.at(random.bounded(pieces.size()));
        return text;
    }

private:
    const QStringList pieces = hostilePieces();
    QRandomGenerator random {20240611};
};

#ifdef Q_OS_UNIX
/// While it lives no file can grow beyond `bytes`, which stands for a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit {.rlim_cur = bytes, .rlim_max = before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }

private:
    rlimit before {};
};
#endif

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden);
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

    void names_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("clean");
        QTest::newRow("ordinary") << u"photo 1.jpg"_s << u"photo 1.jpg"_s;
        QTest::newRow("blanks around it go") << u" \ta b\n "_s << u"a b"_s;
        QTest::newRow("nothing") << QString() << u"file"_s;
        QTest::newRow("blanks alone") << u" \u00a0 "_s << u"file"_s;
        QTest::newRow("two dots") << u".."_s << u"file"_s;
        QTest::newRow("dots and blanks") << u". . ."_s << u"file"_s;
        QTest::newRow("all reserved") << u"a/b\\c*d:e?f\"g<h>i|j"_s << u"a_b_c_d_e_f_g_h_i_j"_s;
        QTest::newRow("control characters") << u"a\u0001b\u001fc\u007f"_s << u"a_b_c\u007f"_s;
        QTest::newRow("dots at the end go") << u"a.txt. .."_s << u"a.txt"_s;
        QTest::newRow("a wide blank at the end goes too") << u"a\u2003."_s << u"a"_s;
        QTest::newRow("dots at the start stay") << u"..bashrc"_s << u"..bashrc"_s;
        QTest::newRow("way up") << u"../../etc/passwd"_s << u".._.._etc_passwd"_s;
    }
    void names()
    {
        QFETCH(const QString, name);
        QTEST(sanitizeFileName(name), "clean");
    }

    void paths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("clean");
        QTest::newRow("ordinary") << u"a/b c/d.txt"_s << u"a/b c/d.txt"_s;
        QTest::newRow("absolute") << u"//etc//passwd/"_s << u"etc/passwd"_s;
        QTest::newRow("one dot is dropped, two are not") << u"./a/./../b"_s << u"a/_/b"_s;
        QTest::newRow("dots and a blank are a name") << u"a/.. /b"_s << u"a/file/b"_s;
        QTest::newRow("nothing left") << u"/./."_s << u"file"_s;
        QTest::newRow("drive and backslashes") << u"C:\\a/b"_s << u"C__a/b"_s;
    }
    void paths()
    {
        QFETCH(const QString, path);
        QTEST(sanitizeRelativePath(path), "clean");
    }

    void noNameLeadsOut()
    {
        HostileNames names;
        const QString folder = u"/some/folder"_s;
        for (int i = 0; i < 20'000; ++i) {
            const QString hostile = i == 0 ? QString(10'000, u'.') + u'/' : names.next();
            const QString name = sanitizeFileName(hostile);
            QVERIFY2(isSafeName(name), qPrintable(hostile));
            QCOMPARE(sanitizeFileName(name), name);
            const QString path = sanitizeRelativePath(hostile);
            QVERIFY2(std::ranges::all_of(path.split(u'/'), isSafeName), qPrintable(hostile));
            QCOMPARE(sanitizeRelativePath(path), path);
            QCOMPARE(QDir::cleanPath(folder + u'/' + path), folder + u'/' + path);
        }
    }

    void nothingIsMadeOutsideTheFolder()
    {
        const QTemporaryDir outside;
        const QDir folder(outside.filePath(u"in/side"_s));
        QVERIFY(folder.mkpath(u"."_s));
        HostileNames names;
        for (int i = 0; i < 500; ++i) {
            const QString path = folder.path() + u'/' + sanitizeRelativePath(names.next());
            QFileInfo(path).absoluteDir().mkpath(u"."_s); // fails where a file of that name is: no matter
            QFile file(path);
            if (file.open(QIODevice::WriteOnly))
                file.write("x");
        }
        QVERIFY(entriesOf(folder.path()).size() > 100);
        QCOMPARE(entriesOf(outside.path()), QStringList {u"in"_s});
        QCOMPARE(entriesOf(outside.filePath(u"in"_s)), QStringList {u"side"_s});
    }

    void deviceNames()
    {
        for (const QString& name :
             {u"CON"_s, u"prn"_s, u"Aux.txt"_s, u"NUL.tar.gz"_s, u"com1"_s, u"LPT9.x"_s, u"COM²"_s, u"con .txt"_s})
            QVERIFY2(isDeviceName(name), qPrintable(name));
        for (const QString& name :
             {u"CONS"_s, u"COM"_s, u"COM0"_s, u"COM10"_s, u"xCON"_s, u"_CON"_s, u"a.con"_s, u"LPTA"_s, QString()})
            QVERIFY2(!isDeviceName(name), qPrintable(name));
#ifdef Q_OS_WIN
        QCOMPARE(sanitizeRelativePath(u"a/nul.txt/b"_s), u"a/_nul.txt/b"_s);
#else
        QCOMPARE(sanitizeRelativePath(u"a/nul.txt/b"_s), u"a/nul.txt/b"_s);
#endif
    }

    void sizes()
    {
        const QList<std::pair<qint64, QString>> texts {{-1, u"-1"_s},
                                                       {1023, u"1023"_s},
                                                       {1024, u"1.0 KB"_s},
                                                       {1'048'575, u"1024.0 KB"_s},
                                                       {1'048'576, u"1.0 MB"_s},
                                                       {1'099'511'627'776, u"1024.0 GB"_s}};
        for (const auto& [bytes, text] : texts)
            QCOMPARE(formatFileSize(bytes), text);
    }

    void suffixes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("png") << QByteArray("\x89PNG\r\n\x1a\n") << u".png"_s;
        QTest::newRow("png cut short") << QByteArray("\x89PNG\r\n\x1a") << QString();
        QTest::newRow("jpg") << QByteArray("\xff\xd8\xff") << u".jpg"_s;
        QTest::newRow("gif") << QByteArray("GIF87a…") << u".gif"_s;
        QTest::newRow("newer gif") << QByteArray("GIF89a") << u".gif"_s;
        QTest::newRow("no gif") << QByteArray("GIF88a") << QString();
        QTest::newRow("webp") << QByteArray("RIFF\0\1\2\3WEBP", 12) << u".webp"_s;
        QTest::newRow("webp cut short") << QByteArray("RIFF1234WEB") << QString();
        QTest::newRow("another riff") << QByteArray("RIFF1234WAVE") << QString();
        QTest::newRow("pdf") << QByteArray("%PDF-1.7") << u".pdf"_s;
        QTest::newRow("pdf further in") << QByteArray("\n%PDF-1.7") << QString();
        QTest::newRow("nothing") << QByteArray() << QString();
    }
    void suffixes()
    {
        QFETCH(const QByteArray, bytes);
        QTEST(suffixOf(bytes), "suffix");
    }

    void files_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("ok");
        QTest::newRow("ordinary") << u"a.txt"_s << true;
        QTest::newRow("longest name") << QString(255, u'n') << true;
        QTest::newRow("just room for a suffix") << QString(248, u'n') << true;
        QTest::newRow("too long") << QString(256, u'n') << false;
        QTest::newRow("in a folder that is not there") << u"no/a.txt"_s << false;
    }
    void files()
    {
        QFETCH(const QString, name);
        QFETCH(const bool, ok);
        const QTemporaryDir folder;
        const QString path = folder.filePath(name);
        for (const QByteArray& data : {QByteArray(5000, 'x'), QByteArray("short\0er", 8), QByteArray()}) {
            const WriteResult result = writeFile(path, data);
            QVERIFY2(result.ok == ok, qPrintable(result.message));
            QCOMPARE(result.message.isEmpty(), ok);
            QCOMPARE(contentOf(path), ok ? data : QByteArray("unreadable"));
        }
        QCOMPARE(entriesOf(folder.path()).size(), ok ? 1 : 0);
    }

    void aFileThatDoesNotFitLeavesNothing()
    {
#ifdef Q_OS_UNIX
        constexpr int room = 1024 * 1024;
        const FileSizeLimit limit(room);
        for (const QString& name : {u"a.txt"_s, QString(255, u'n')}) {
            const QTemporaryDir folder;
            const QString path = folder.filePath(name);
            QCOMPARE(writeFile(path, QByteArray(room + 1, 'x')).message, u"Failed to write "_s + name);
            QCOMPARE(entriesOf(folder.path()), QStringList());
            QVERIFY(writeFile(path, "before").ok);
            QCOMPARE(writeFile(path, QByteArray(room + 1, 'x')).message, u"Failed to write "_s + name);
            QCOMPARE(contentOf(path), "before");
            QCOMPARE(entriesOf(folder.path()), QStringList {name});
        }
#else
        QSKIP("no limit can be set here");
#endif
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_FileNames)
#include "tst_filenames.moc"
