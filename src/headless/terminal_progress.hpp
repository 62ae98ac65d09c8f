#pragma once

#include <chrono>
#include <string>

#include "io/progress.hpp"

namespace kova::headless {

/// Shows on standard error, when that is a terminal, how far a file is read or written once it takes longer than two
/// seconds; the line goes away at the end.
class TerminalProgress final : public io::Progress {
public:
    /// `what`: "Opening" or "Saving".
    TerminalProgress(const char* what, const std::string& path);
    ~TerminalProgress() override;
    TerminalProgress(const TerminalProgress&) = delete;
    TerminalProgress& operator=(const TerminalProgress&) = delete;

    /// What readers and writers are given: null where nobody watches.
    io::Progress* watcher() { return watched_ ? this : nullptr; }
    void tell(std::size_t done, std::size_t total) override;

    /// "Opening a.dxf: 42 %", "Opening a.dxf ... 3 s" when the total is not known.
    static std::string line(const std::string& label, std::size_t done, std::size_t total, int seconds);

private:
    using Clock = std::chrono::steady_clock;

    std::string label_;
    bool watched_;
    bool shown_ = false;
    Clock::time_point start_;
    Clock::time_point next_;
};

}  // namespace kova::headless
