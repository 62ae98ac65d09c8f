#include "cli/logging.hpp"

#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <QtGlobal>
#include <QString>
#include <filesystem>

#include "cli/output.hpp"

namespace kova::cli {

namespace fs = std::filesystem;

void setUpLogging(const LogSettings& settings) {
    fs::path directory = settings.directory;
    if (directory.empty()) {
        std::error_code error;
        directory = fs::temp_directory_path(error);
        if (error) directory = "/tmp";
        directory = directory / "kovacad" / "logs";
    }

    auto console = std::make_shared<spdlog::sinks::stdout_color_sink_mt>();
    console->set_pattern("[%H:%M:%S.%e] [%n] [%^%l%$] %v");
    console->set_level(static_cast<spdlog::level::level_enum>(settings.consoleLevel));
    std::vector<spdlog::sink_ptr> sinks{console};
    try {
        fs::create_directories(directory);
        auto file = std::make_shared<spdlog::sinks::rotating_file_sink_mt>((directory / settings.fileName).string(),
                                                                           settings.maxFileSize, settings.maxFiles);
        file->set_pattern("[%Y-%m-%d %H:%M:%S.%e] [%n] [%l] [%s:%#] %v");
        file->set_level(static_cast<spdlog::level::level_enum>(settings.fileLevel));
        sinks.push_back(std::move(file));
    } catch (const std::exception& failure) {
        // Somebody else's log file in a shared directory, or a directory that cannot be made, is no reason not to draw.
        printError(std::string("No log file: ") + failure.what());
    }
    auto logger = std::make_shared<spdlog::logger>("kova", sinks.begin(), sinks.end());
    logger->set_level(spdlog::level::debug);
    logger->flush_on(spdlog::level::warn);
    spdlog::set_default_logger(std::move(logger));
    // Qt's own remarks (no runtime directory, a missing plugin ...) are for the log, not for the user's terminal.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        const auto level = type == QtDebugMsg || type == QtInfoMsg ? spdlog::level::debug
                           : type == QtWarningMsg                  ? spdlog::level::info
                                                                   : spdlog::level::err;
        spdlog::log(level, "{}", text.toStdString());
        if (type == QtFatalMsg) printError(text.toStdString());
    });
}

}  // namespace kova::cli
