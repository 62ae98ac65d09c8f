#pragma once

#include <cstddef>
#include <string>

namespace kova::cli {

/// How the process logs. Nothing ever goes to standard output: the console level of this program is off.
struct LogSettings {
    std::string directory;                    ///< empty: "kovacad/logs" in the system's temporary directory
    std::string fileName = "kovacad.log";
    int consoleLevel = 6;                     ///< spdlog's level number; 6 is off
    int fileLevel = 1;                        ///< 1 is debug
    std::size_t maxFileSize = 5242880;
    std::size_t maxFiles = 3;                 ///< rotated files beside the current one
};

/// Makes the logger "kova" with a console and a rotating file sink. Throws std::filesystem::filesystem_error when the
/// temporary directory cannot be found or the log directory not be made.
void setUpLogging(const LogSettings& settings);

}  // namespace kova::cli
