// SPDX-License-Identifier: MIT
#include "TestMain.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

int runTestObject(QObject& test, int argc, char* argv[])
{
    const QTemporaryDir folder;
    for (const auto format : {QSettings::NativeFormat, QSettings::IniFormat})
        QSettings::setPath(format, QSettings::UserScope, folder.path());
    QCoreApplication::setApplicationName(u"Norvo"_s);
    QCoreApplication::setApplicationVersion(u"1.1.3"_s);
    return QTest::qExec(&test, argc, argv);
}

void failOnWarnings()
{
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support )"_s));
}
