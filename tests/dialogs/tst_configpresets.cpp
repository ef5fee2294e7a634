// SPDX-License-Identifier: MIT
#include "ConfigDialogTest.h"
#include "TestFiles.h"

#include <QFileDialog>
#include <QInputDialog>

using namespace Qt::StringLiterals;

/// The presets of the window of the node's configuration.
class tst_ConfigPresets : public ConfigDialogTest
{
    Q_OBJECT

private slots:
    void init() { start("{}"); }
    void cleanup() { close(); }

    void areAppliedThroughSet()
    {
        store({entry(u"later"_s, {}, u"Later"_s), entry(u" mine\n<b>"_s, u" v "_s)});
        dialog.reset();
        open();
        QTRY_VERIFY(isIdle());
        const auto apply = [this](int place) {
            box(1)->setCurrentIndex(place);
            button("Apply Preset")->click();
        };
        QStringList labels;
        for (int i = 0; i < box(1)->count(); ++i)
            labels.append(box(1)->itemText(i));
        QCOMPARE(labels.join(u'|'),
                 u"Select preset…|API: localhost:5001|Gateway: localhost:8080|Bootstrap: empty list []|"
                 "Discovery.MDNS.Enabled = true|Discovery.MDNS.Enabled = false|Custom: later|Custom: mine <b>"_s);
        QVERIFY(!box(1)->itemData(0).isValid());
        apply(0);
        verifyFailure(u"Select a preset first."_s);
        apply(6); // without a value, and in a mode that there is not
        verifyFailure(u"Config value is required."_s);
        QCOMPARE(field(0)->text() + box(0)->currentText(), u"k"_s + u"String"_s);

        int place = 1;
        for (const QString& write :
             {u"Addresses.API|/ip4/127.0.0.1/tcp/5001"_s, u"Addresses.Gateway|/ip4/127.0.0.1/tcp/8080"_s,
              u"Bootstrap|[]|json"_s, u"Discovery.MDNS.Enabled|true|bool"_s, u"Discovery.MDNS.Enabled|false|bool"_s}) {
            if (place <= 3)
                answerNext(QMessageBox::Yes, [&] { apply(place); });
            else
                apply(place);
            QTRY_COMPARE(node->count(keyPath), place);
            QCOMPARE(sent(), write);
            QTRY_VERIFY(isIdle());
            ++place;
        }
        apply(7);
        QTRY_COMPARE(node->count(keyPath), 6);
        QCOMPARE(sent(), u"k| v "_s);
    }

    void areSavedAndDeleted()
    {
        button("Delete Preset")->click();
        verifyFailure(u"Select a custom preset to delete."_s);
        fill(u"k"_s, u" "_s);
        button("Save Preset")->click();
        verifyFailure(u"Enter key and value before saving a preset."_s);
        fill(u" k "_s, u" v "_s, u"Bool"_s); // not judged before it is applied
        save(u" \t"_s);
        QTRY_COMPARE(status()->text(), u"Preset name is required."_s);
        save(u" <b>mine "_s);
        QTRY_COMPARE(status()->text(), u"Saved preset '<b>mine'."_s);
        QVERIFY(status()->styleSheet().isEmpty());
        QCOMPARE(box(1)->currentText(), u"Custom: <b>mine"_s);
        QVariantMap data = entry(u"<b>mine"_s, u" v "_s, u"Bool"_s);
        data.insert(u"custom"_s, true);
        QCOMPARE(box(1)->currentData().toMap(), data);
        for (const auto choice : {QMessageBox::No, QMessageBox::Yes}) {
            field(1)->setText(u"new"_s);
            answerNext(
                choice, [this] { save(u"<b>mine"_s); },
                u"Overwrite preset|A preset named '<b>mine' already exists. Overwrite it?"_s);
            QTRY_COMPARE(stored().constFirst().toMap().value(u"value"_s).toString(),
                         choice == QMessageBox::Yes ? u"new"_s : u" v "_s);
        }
        save(u"builtin-api-localhost"_s);
        QTRY_COMPARE(box(1)->currentText(), u"API: localhost:5001"_s); // the first of that name
        QCOMPARE(stored().size(), 2);
        button("Delete Preset")->click();
        verifyFailure(u"Select a custom preset to delete."_s);
        for (const auto choice : {QMessageBox::No, QMessageBox::Yes}) {
            box(1)->setCurrentIndex(6);
            answerNext(
                choice, [this] { button("Delete Preset")->click(); }, u"Delete preset|Delete preset '<b>mine'?"_s);
            QCOMPARE(stored().size(), choice == QMessageBox::Yes ? 1 : 2);
        }
        QCOMPARE(status()->text(), u"Deleted preset '<b>mine'."_s);
        QCOMPARE(box(1)->currentIndex(), 0);
        QCOMPARE(node->requests().size(), 1); // the node has no part in it
    }

    void travelAsAFile()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"norvo-config-presets.json"_s);
        button("Export Presets")->click();
        verifyFailure(u"No custom presets to export."_s);
        store({7});
        writeTestFile(folder.path(), u"norvo-config-presets.json"_s, "old");
        pick("Export Presets", u"Export custom presets"_s, path, u"No valid custom presets to export."_s);
        QCOMPARE(contentOf(path), "old");
        const QByteArray file
            = R"([{"name":"n","key":"k","value":" v","mode":"JSON"},{"name":"n","key":"k2","mode":"Bool"}])";
        pick("Import Presets", u"Import custom presets"_s, writeTestFile(folder.path(), u"in.json"_s, file),
             u"Imported 2 preset(s)."_s);
        QCOMPARE(box(1)->itemText(box(1)->count() - 1), u"Custom: n"_s);
        store(stored() << 7 << entry(u" o "_s, u" \""_s));
        pick("Export Presets", u"Export custom presets"_s, path, u"Exported 2 preset(s)."_s);
        QCOMPARE(contentOf(path),
                 "[\n    {\n        \"key\": \"k2\",\n        \"mode\": \"Bool\",\n        \"name\": \"n\",\n"
                 "        \"value\": \"\"\n    },\n    {\n        \"key\": \"k\",\n        \"mode\": \"String\",\n"
                 "        \"name\": \"o\",\n        \"value\": \" \\\"\"\n    }\n]\n");
        const QVariantList before = stored();
        pick("Import Presets", u"Import custom presets"_s, writeTestFile(folder.path(), u"bad.json"_s, "[7]"),
             u"No valid presets found in file."_s);
        QVERIFY(QFile::resize(path, 9 * 1024 * 1024));
        pick("Import Presets", u"Import custom presets"_s, path, u"Import file must be a JSON array of presets."_s);
        QCOMPARE(status()->toolTip(), u"The file has 9.0 MB; at most 8.0 MB are read."_s);
        QCOMPARE(stored(), before);
        // Where nothing can be written; no rights stop the tests that root runs.
        pick("Export Presets", u"Export custom presets"_s, u"/proc/self/none.json"_s, u"Could not write file: "_s);
        QVERIFY(status()->toolTip().isEmpty());
    }

private:
    static QVariantList stored() { return openAppSettings().value("ConfigDialog/customPresets"_L1).toList(); }
    static void store(const QVariantList& entries)
    {
        QSettings settings = openAppSettings();
        settings.setValue("ConfigDialog/customPresets"_L1, entries);
    }
    static QVariantMap entry(const QString& name, const QString& value, const QString& mode = u"String"_s)
    {
        return {{u"name"_s, name}, {u"key"_s, u"k"_s}, {u"value"_s, value}, {u"mode"_s, mode}};
    }
    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void save(const QString& name)
    {
        const ModalAnswer<QInputDialog> answer([&name](QInputDialog& question) {
            QCOMPARE(question.windowTitle() + question.labelText() + question.textValue(),
                     u"Save presetPreset name:"_s);
            question.setTextValue(name);
            question.accept();
        });
        button("Save Preset")->click();
        QTRY_VERIFY(answer.wasGiven());
    }
    /// Chooses a file, after which the status begins with `outcome`.
    void pick(const char* action, const QString& title, const QString& path, const QString& outcome)
    {
        const ModalAnswer<QFileDialog> answer([&](QFileDialog& picker) {
            QCOMPARE(picker.windowTitle(), title);
            QCOMPARE(picker.nameFilters(), QStringList({u"JSON files (*.json)"_s, u"All files (*)"_s}));
            emit picker.fileSelected(path);
            picker.reject();
        });
        button(action)->click();
        QTRY_VERIFY(answer.wasGiven());
        QVERIFY2(status()->text().startsWith(outcome), qPrintable(status()->text()));
    }
};

NORVO_TEST_MAIN(QApplication, tst_ConfigPresets)

#include "tst_configpresets.moc"
