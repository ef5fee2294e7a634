// SPDX-License-Identifier: MIT
#include "Appearance.h"
#include "Detached.h"
#include "MainWindow.h"
#include "OpenFiles.h"
#include "ProductInfo.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

int main(int argc, char* argv[])
{
    disableWindowTabbing();
    raiseOpenFileLimit();
    const QApplication app(argc, argv);
    QApplication::setApplicationName(ProductInfo::name);
    QApplication::setApplicationVersion(ProductInfo::version);
    QApplication::setOrganizationName(u"Norvo"_s);
    QApplication::setOrganizationDomain(ProductInfo::organizationDomain);
    QApplication::setDesktopFileName(u"norvo"_s); // a Wayland desktop finds the icon by it
    QApplication::setWindowIcon(QIcon(u":/icons/app-icon.png"_s));

    QCommandLineParser parser;
    parser.setApplicationDescription(u"%1 - %2"_s.arg(ProductInfo::name, ProductInfo::description));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(app);

    applyFusionLook();
    int code = 0;
    {
        MainWindow window;
        window.show();
        code = QApplication::exec();
    }
    waitForDetached(10s); // a thread that still parses or writes ends before what it uses is gone
    return code;
}
