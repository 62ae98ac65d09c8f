#include "cmd/macros.hpp"

#include <QVariant>
#include <atomic>
#include <cstdlib>
#include <filesystem>

#include "cmd/script_lines.hpp"
#include "io/text_file.hpp"
#include "io/save.hpp"

namespace kova::cmd {

namespace fs = std::filesystem;

namespace {

using Lines = std::shared_ptr<std::vector<std::string>>;

constexpr const char* kMacrosProperty = "macro being recorded";
constexpr const char* kExtension = ".scr";
constexpr std::size_t kMostListed = 10'000;

/// Sessions that record; while there is none, a fed line costs one look at it.
std::atomic<int> recording{0};

Lines linesOf(const doc::Document& document) {
    const QVariant value = document.property(kMacrosProperty);
    return value.isValid() ? value.value<Lines>() : Lines();
}

fs::path macroFile(const std::string& name) { return fs::path(macroFolder()) / (name + kExtension); }

/// The file of a macro by its name in any case; empty: there is none.
fs::path findMacro(const std::string& name) {
    for (const std::string& known : macroNames())
        if (engine::equalNoCase(known, name)) return macroFile(known);
    return {};
}

}  // namespace

bool isRecordingMacro(const doc::Document& document) { return recording > 0 && linesOf(document) != nullptr; }

bool startMacro(doc::Document& document) {
    if (isRecordingMacro(document)) {
        const Lines lines = linesOf(document);
        if (!lines->empty()) lines->pop_back();
        return false;
    }
    document.setProperty(kMacrosProperty, QVariant::fromValue(std::make_shared<std::vector<std::string>>()));
    ++recording;
    return true;
}

void noteMacroLine(doc::Document& document, const std::string& line) {
    if (recording <= 0) return;
    const Lines lines = linesOf(document);
    if (lines && lines->size() < kMaxMacroLines) lines->push_back(line);
}

std::vector<std::string> stopMacro(doc::Document& document) {
    const Lines lines = linesOf(document);
    if (!lines) return {};
    document.setProperty(kMacrosProperty, QVariant());
    --recording;
    if (!lines->empty()) lines->pop_back();
    return std::move(*lines);
}

std::string macroFolder() {
    if (const char* named = std::getenv("KOVACAD_MACROS"); named != nullptr && *named != 0) return named;
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config != 0)
        return (fs::path(config) / "kovacad" / "macros").string();
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != 0)
        return (fs::path(home) / ".config" / "kovacad" / "macros").string();
    return {};
}

bool isMacroName(std::string_view name) {
    return name.size() <= 100 && engine::isValidSymbolName(name) && name.front() != '.';
}

std::vector<std::string> macroNames() {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator it(macroFolder(), error), end; !error && it != end; it.increment(error)) {
        if (names.size() >= kMostListed) break;
        if (it->path().extension() == kExtension) names.push_back(it->path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string freeMacroName() {
    for (int number = 1; number < 1000; ++number) {
        char name[24];
        std::snprintf(name, sizeof name, "ActMacro%03d", number);
        if (findMacro(name).empty()) return name;
    }
    return "ActMacro";
}

std::string saveMacro(const std::string& name, const std::vector<std::string>& lines) {
    if (macroFolder().empty()) return "There is no folder for macros: set KOVACAD_MACROS.";
    std::error_code error;
    fs::create_directories(macroFolder(), error);
    if (error) return "Cannot make the folder " + macroFolder();
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    const fs::path known = findMacro(name);
    return io::saveFile((known.empty() ? macroFile(name) : known).string(), text);
}

std::optional<std::vector<std::string>> loadMacro(const std::string& name) {
    const fs::path file = findMacro(name);
    if (file.empty()) return std::nullopt;
    const std::optional<std::string> text = readTextFile(file.string());
    if (!text) return std::nullopt;
    return scriptLines(*text);
}

}  // namespace kova::cmd
