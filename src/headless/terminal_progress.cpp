#include "headless/terminal_progress.hpp"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace kova::headless {

namespace {

constexpr std::chrono::milliseconds kPatience{2000};
constexpr std::chrono::milliseconds kInterval{200};

void show(const std::string& text) {
    // A terminal that is gone is nobody's loss.
    static_cast<void>(::write(STDERR_FILENO, text.data(), text.size()) < 0);
}

}  // namespace

TerminalProgress::TerminalProgress(const char* what, const std::string& path)
    : label_(std::string(what) + ' ' + std::filesystem::path(path).filename().string()),
      watched_(::isatty(STDERR_FILENO) == 1),
      start_(Clock::now()),
      next_(start_ + kPatience) {}

TerminalProgress::~TerminalProgress() {
    if (shown_) show("\r\033[K");
}

std::string TerminalProgress::line(const std::string& label, std::size_t done, std::size_t total, int seconds) {
    if (total == 0) return label + " ... " + std::to_string(seconds) + " s";
    const double part = static_cast<double>(std::min(done, total)) / static_cast<double>(total);
    return label + ": " + std::to_string(static_cast<int>(part * 100.0)) + " %";
}

void TerminalProgress::tell(std::size_t done, std::size_t total) {
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + kInterval;
    shown_ = true;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - start_).count();
    show("\r\033[K" + line(label_, done, total, static_cast<int>(seconds)));
}

}  // namespace kova::headless
