#include "cmd/command.hpp"

#include <chrono>
#include <thread>

namespace kova::cmd {

std::string AppServices::readDrawing(const std::string&, engine::Drawing&) { return "Files cannot be read here."; }

std::string AppServices::readReference(const std::string&, engine::Drawing&) { return "Files cannot be read here."; }

std::string AppServices::writeDrawing(const engine::Drawing&, const std::string&) {
    return "Files cannot be written here.";
}

std::optional<PictureSize> AppServices::pictureSize(const std::string&) { return std::nullopt; }

std::string AppServices::plot(std::span<const engine::PlotPage>, engine::PlotFormat, const std::string&) {
    return "Plots cannot be written here.";
}

void AppServices::chooseDwgVersion(const std::string& /*version*/) {}

void AppServices::reloadLisp() {}

void AppServices::wait(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

void AppServices::afterLine(std::function<void()> work) { work(); }

}  // namespace kova::cmd
