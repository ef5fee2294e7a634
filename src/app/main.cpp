// SPDX-License-Identifier: MIT
#include "Appearance.h"
#include "Detached.h"
#include "MainWindow.h"
#include "OpenFiles.h"
#include "ProductInfo.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>

#include <algorithm>
#include <array>
#include <string_view>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace std::string_view_literals;

namespace {

void setProductInfo()
{
    QCoreApplication::setApplicationName(ProductInfo::name);
    QCoreApplication::setApplicationVersion(ProductInfo::version);
    QCoreApplication::setOrganizationName(u"Norvo"_s);
    QCoreApplication::setOrganizationDomain(ProductInfo::organizationDomain);
}

/// Ends the program if it is only asked what it is, or does not know an option.
void processArguments(const QCoreApplication& app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(u"%1 - %2"_s.arg(ProductInfo::name, ProductInfo::description));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(app);
}

/// With other options it is Qt's to say which of them it knows, and that needs a display.
bool asksForText(int argc, char* argv[])
{
    constexpr std::array questions {"-h"sv, "--help"sv, "-v"sv, "--version"sv};
    return argc == 2 && std::ranges::find(questions, std::string_view(argv[1])) != questions.end();
}

} // namespace

int main(int argc, char* argv[])
{
    setProductInfo();
    if (asksForText(argc, argv)) // needs no display
        processArguments(QCoreApplication(argc, argv));

    returnLargeBlocks();
    disableWindowTabbing();
    raiseOpenFileLimit();
    const QApplication app(argc, argv);
    QApplication::setDesktopFileName(u"norvo"_s); // a Wayland desktop finds the icon by it
    QApplication::setWindowIcon(QIcon(u":/icons/app-icon.png"_s));
    processArguments(app);

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
