#include "cmd/command.hpp"

#include <chrono>
#include <thread>

namespace kova::cmd {

void AppServices::chooseDwgVersion(const std::string& /*version*/) {}

void AppServices::reloadLisp() {}

void AppServices::wait(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

void AppServices::afterLine(std::function<void()> work) { work(); }

}  // namespace kova::cmd
