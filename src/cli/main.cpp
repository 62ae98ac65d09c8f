#include <QApplication>
#include <clocale>
#include <csignal>

#include "cli/logging.hpp"
#include "cli/output.hpp"
#include "cli/subcommands.hpp"
#include "cli/usage.hpp"

int main(int argc, char** argv) {
    using namespace kova::cli;
    // The program never shows a window, so it needs no display; a user never has to say so.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    // A file above the limit of the shell is a save that fails, and no reason to die.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        LogSettings log;
        log.fileName = "kovacad-cli.log";
        setUpLogging(log);

        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        // Qt takes words such as -style out of what it is given; all arguments are this program's own.
        int programOnly = 1;
        QApplication application(programOnly, argv);
        // Qt takes the user's locale, decimal comma and all; numbers of drawings and programs have a point.
        std::setlocale(LC_NUMERIC, "C");
        QCoreApplication::setApplicationName(QStringLiteral("KovaCAD CLI"));
        QCoreApplication::setApplicationVersion(QString::fromLatin1(kVersion));
        QGuiApplication::setQuitOnLastWindowClosed(false);

        std::vector<std::string> arguments;
        // As they stand: paths are bytes, and one that is no UTF-8 would become another file's.
        for (int i = 1; i < argc; ++i) arguments.emplace_back(argv[i]);
        return dispatch(arguments);
    } catch (const std::exception& error) {
        printError(error.what());
        return kExitFailed;
    }
}
