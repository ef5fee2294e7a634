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
    returnLargeBlocks();
    disableWindowTabbing();
    raiseOpenFileLimit();
    const QApplication app(argc, argv);
    QApplication::setApplicationName(u"Norvo"_s);
    QApplication::setApplicationVersion(ProductInfo::version);
    QApplication::setOrganizationName(u"Norvo"_s);
    QApplication::setOrganizationDomain(ProductInfo::organizationDomain);
    QApplication::setWindowIcon(QIcon(u":/icons/app-icon.png"_s));

    QCommandLineParser parser;
    parser.setApplicationDescription(u"Norvo - IPFS pin management GUI"_s);
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
