// SPDX-License-Identifier: MIT
#include "ConfigPresets.h"
#include "ConfigValues.h"
#include "TestFiles.h"
#include "TestMain.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

const QString noList = u"Import file must be a JSON array of presets."_s;

/// "name|key|value|mode" of each.
QStringList textsOf(const QList<ConfigPreset>& presets)
{
    QStringList texts;
    for (const ConfigPreset& preset : presets)
        texts.append(QStringList({preset.name, preset.key, preset.value, preset.mode}).join(u'|'));
    return texts;
}

QVariantMap entry(const QString& name, const QVariant& value = u"v"_s, const QString& key = u"k"_s)
{
    return {{u"name"_s, name}, {u"key"_s, key}, {u"value"_s, value}, {u"mode"_s, u"String"_s}};
}

} // namespace

class tst_ConfigValues : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    /// What JSON mode sends, and what is shown of that value; what is sent reads back as the same.
    void values_data()
    {
        // sent: none if the text is refused
        addColumns<QString, QString, QString>("typed", "sent", "shown");
        const auto row = [](const QString& typed, const QString& sent, const QString& shown) {
            QTest::newRow(qPrintable(typed)) << typed << sent << shown;
        };
        const auto same = [&row](const QString& typed) { row(typed, typed, typed); };
        for (const QString& text :
             {u"0"_s, u"-12"_s, u"0.1"_s, u"999999"_s, u"true"_s, u"[]"_s, u"{}"_s, u"[1,\"a\"]"_s,
              u"{\"a\":{\"b\":null}}"_s, u"[1234567,9007199254740993,1e+21,0.1,1e-07]"_s})
            same(text);
        row(u" 1234567\n"_s, u"1234567"_s, u"1.23457e+06"_s);
        row(u"1000000"_s, u"1e+06"_s, u"1e+06"_s);
        row(u"9007199254740993"_s, u"9007199254740993"_s, u"9.0072e+15"_s);
        row(u"10000000000000001"_s, u"10000000000000001"_s, u"1e+16"_s);
        row(u"9223372036854775807"_s, u"9223372036854775807"_s, u"9.22337e+18"_s);
        row(u"-9223372036854775808"_s, u"-9223372036854775808"_s, u"-9.22337e+18"_s);
        row(u"1e21"_s, u"1e+21"_s, u"1e+21"_s);
        row(u"1e-7"_s, u"1e-07"_s, u"1e-07"_s);
        row(u"0.30000000000000004"_s, u"0.30000000000000004"_s, u"0.3"_s);
        row(u"{\"b\": [9007199254740993, 1e-7 ]}"_s, u"{\"b\":[9007199254740993,1e-07]}"_s,
            u"{\"b\":[9007199254740993,1e-07]}"_s);
        row(u"-0"_s, u"0"_s, u"0"_s);
        row(u"-0.0"_s, u"0"_s, u"0"_s);
        row(u"null"_s, u"null"_s, QString());
        row(u"1,\"x\":2"_s, u"1"_s, u"1"_s);
        for (const QString& text :
             {u""_s, u"abc"_s, u"[1"_s, u"1}"_s, u"1e400"_s, u"'a'"_s, u"%1"_s, QString(2000, u'[')})
            QTest::addRow("refused %d: %.20s", int(text.size()), qPrintable(text)) << text << QString() << QString();
    }
    void values()
    {
        QFETCH(const QString, typed);
        QFETCH(const QString, sent);
        QJsonValue value(u"untouched"_s);
        QCOMPARE(parseJsonValueText(typed, &value), !sent.isEmpty());
        if (sent.isEmpty()) {
            QCOMPARE(value, QJsonValue(u"untouched"_s));
            return;
        }
        QCOMPARE(jsonValueToCompactString(value), sent);
        QTEST(jsonValueToDisplayString(value), "shown");
        QCOMPARE(jsonNumberInFull(value), value.isDouble() && sent != jsonValueToDisplayString(value) ? sent : u""_s);
        QJsonValue again;
        QVERIFY(parseJsonValueText(sent, &again) && again == value);
        QCOMPARE(jsonValueToCompactString(again), sent);
    }

    void valuesWithoutAText()
    {
        QCOMPARE(jsonValueToCompactString(QJsonValue::Undefined), QString());
        QCOMPARE(jsonValueToCompactString(u"true"_s) + jsonValueToDisplayString(u"\"q\""_s), u"true\"q\""_s);
        QVERIFY(!parseJsonValueText(u"1"_s, nullptr));
    }

    void riskyKeys()
    {
        for (const auto* key : {"Swarm", "swarm.ConnMgr", " ADDRESSES.API ", "Addresses.Gateway.x", "Bootstrap",
                                "Identity.PeerID", "datastore.", "swarm.."})
            QVERIFY2(isRiskyConfigKey(QString::fromLatin1(key)), key);
        for (const auto* key :
             {"SwarmKey", "Addresses", "Addresses.Swarm", "API", "", ".", "X.Swarm", "Addresses.APIs"})
            QVERIFY2(!isRiskyConfigKey(QString::fromLatin1(key)), key);
    }

    /// A text field turns some characters into others, and a restored document must hold every digit.
    void theEditorsTextIsTheDocument()
    {
        const QByteArray json
            = "{\"n\":[1234567,9007199254740993,1e21,0.1,1e-7],\"s\":\"\xC2\xA0 \xE2\x80\xA8\xE2\x80\xA9"
              "\xEF\xB7\x90 \xC3\xA9\\n\"}";
        const QJsonObject config = QJsonDocument::fromJson(json).object();
        const QString text = configForEditor(config);
        QCOMPARE(QJsonDocument::fromJson(text.toUtf8()).object(), config);
        QVERIFY(text.contains(u"\\u00a0 \\u2028\\u2029\\ufdd0 é\\n"_s)
                && text.contains(u"\n        9007199254740993,\n"_s));
    }

    void presetFiles_data()
    {
        const auto row = addColumns<QByteArray, QStringList>("json", "expected");
        row("trimmed, but for the value", R"([{"name":" n ","key":"k\t","value":" v ","mode":" Bool","custom":true}])",
            {u"n|k| v |Bool"_s});
        row("value that is no text", R"([{"name":"n","key":"k","value":true,"mode":"JSON"}])", {u"n|k||JSON"_s});
        row("passed over",
            R"([7,null,[],{"name":"n","key":"k","mode":"json"},{"name":" ","key":"k","mode":"JSON"},)"
            R"({"name":"n","mode":"JSON"},{"name":1,"key":"k","mode":"JSON"},{"name":"ok","key":"k","mode":"String"}])",
            {u"ok|k||String"_s});
        row("empty", "[]", {});
        for (const char* text : {"", "{}", "[", "null", "\xff"})
            row(text, text, {u"no list"_s});
    }
    void presetFiles()
    {
        QFETCH(const QByteArray, json);
        const std::optional<QList<ConfigPreset>> presets = presetsFromJson(json);
        QTEST(presets ? textsOf(*presets) : QStringList {u"no list"_s}, "expected");
        if (presets)
            QCOMPARE(presetsFromJson(presetsToJson(*presets)), presets);
    }

    /// An import replaces by name, in place, and leaves only what is complete; a save or a deletion goes by the stored
    /// name as it is.
    void theStoredList()
    {
        const QVariantList stored {entry(u" a "_s, 1), 7, entry(u"b"_s, u"old"_s), entry(u"c"_s, u"v"_s, u" "_s),
                                   entry(u"b"_s, u"twin"_s)};
        QCOMPARE(textsOf(presetsOfEntries(stored)),
                 QStringList({u"a|k|1|String"_s, u"b|k|old|String"_s, u"b|k|twin|String"_s}));
        QCOMPARE(entryNamed(stored, u"b"_s), 2);
        QCOMPARE(entryNamed(stored, u"a"_s), -1);
        QCOMPARE(entriesWithout(stored, u"b"_s), QVariantList({stored.at(0), 7, stored.at(3)}));
        const QList<ConfigPreset> imported {presetOfEntry(entry(u"d"_s)), presetOfEntry(entry(u"b"_s, u"new"_s)),
                                            presetOfEntry(entry(u"d"_s, u"later"_s))};
        QCOMPARE(textsOf(presetsOfEntries(mergedEntries(stored, imported))),
                 QStringList({u"a|k|1|String"_s, u"b|k|new|String"_s, u"d|k|later|String"_s}));
        QCOMPARE(mergedEntries(stored, imported).size(), 3);
    }

    void filesThatAreNotRead_data()
    {
        // file: in the test's folder
        const auto row = addColumns<QString, QString, QString>("file", "error", "detail");
        const QString notRegular = u"It is not a regular file."_s;
        row("large", u"large"_s, noList, u"The file has 100.0 MB; at most 8.0 MB are read."_s);
        row("a byte too large", u"larger"_s, noList, u"The file has 8.0 MB; at most 8.0 MB are read."_s);
        row("as large as may be", u"limit"_s, QString(), QString());
        row("folder", u"."_s, u"Could not open file: file to open is a directory"_s, QString());
        row("gone", u"gone"_s, u"Could not open file: No such file or directory"_s, QString());
        row("device without an end", u"/dev/zero"_s, noList, notRegular);
        row("pipe that nobody writes to", u"pipe"_s, noList, notRegular);
        row("file that can't be read", u"/proc/self/mem"_s, u"Could not open file: Input/output error"_s, QString());
    }
    void filesThatAreNotRead()
    {
        QFETCH(const QString, file);
        const QTemporaryDir folder;
        QDir::setCurrent(folder.path());
        constexpr qint64 limit = 8LL * 1024 * 1024;
        for (const auto& [name, size] :
             {std::pair("large", 100LL * 1024 * 1024), {"larger", limit + 1}, {"limit", limit}}) {
            writeTestFile(folder.path(), QString::fromLatin1(name), "[]");
            QVERIFY(QFile::resize(QString::fromLatin1(name), size)); // takes no room on the disk
        }
        QCOMPARE(mkfifo("pipe", 0600), 0);
        const PresetFile read = readPresetFile(file);
        QTEST(read.error, "error");
        QTEST(read.detail, "detail");
        QCOMPARE(read.content.size(), read.error.isEmpty() ? limit : 0);
        QDir::setCurrent(QDir::rootPath());
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_ConfigValues)

#include "tst_configvalues.moc"
