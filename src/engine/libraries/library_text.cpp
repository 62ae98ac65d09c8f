// Readers of pattern (.pat) and linetype (.lin) libraries. A line that is none of the format's is passed over, so that
// one bad line costs one family; every count has a limit, as such files come from anywhere.
#include <unordered_set>

#include "engine/libraries/libraries.hpp"
#include "engine/model/linetype_flags.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

namespace {

constexpr std::size_t kMaxRecords = 20000;  ///< patterns or linetypes of one library
constexpr std::size_t kMaxFamilies = 1000;  ///< line families of one pattern
constexpr std::size_t kMaxDashes = 256;     ///< dashes of one family or linetype
constexpr std::size_t kMaxLineLength = 8192;
constexpr std::size_t kMaxNameLength = 255;
constexpr double kMaxNumber = 1e12;

constexpr bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

/// The lines of a text, trimmed; blank lines and whole-line comments are left out.
class Lines {
public:
    explicit Lines(std::string_view text) : rest_(text) {
        if (rest_.starts_with("\xEF\xBB\xBF")) rest_.remove_prefix(3);
    }
    bool next(std::string_view& line) {
        while (!rest_.empty()) {
            const std::size_t end = rest_.find('\n');
            line = trimmed(rest_.substr(0, end));
            rest_ = end == std::string_view::npos ? std::string_view{} : rest_.substr(end + 1);
            if (!line.empty() && line.front() != ';') return true;
        }
        return false;
    }

private:
    std::string_view rest_;
};

std::optional<double> number(std::string_view text) {
    const auto value = strings::parseReal(trimmed(text));
    return value && std::abs(*value) <= kMaxNumber ? value : std::nullopt;
}

/// "*NAME,description"; false when there is no usable name.
bool readHeader(std::string_view line, std::string_view& name, std::string_view& description) {
    line.remove_prefix(1);
    const std::size_t comma = line.find(',');
    name = trimmed(line.substr(0, comma));
    description = comma == std::string_view::npos ? std::string_view{} : trimmed(line.substr(comma + 1));
    return !name.empty() && name.size() <= kMaxNameLength;
}

std::optional<HatchFamily> readFamily(std::string_view line) {
    line = trimmed(line.substr(0, line.find(';')));
    std::vector<double> numbers;
    while (!line.empty()) {
        if (numbers.size() >= 5 + kMaxDashes) return std::nullopt;
        const std::size_t comma = line.find(',');
        const std::optional<double> value = number(line.substr(0, comma));
        if (!value) return std::nullopt;
        numbers.push_back(*value);
        if (comma == std::string_view::npos) break;
        line = trimmed(line.substr(comma + 1));  // a comma at the end of the line is harmless
    }
    if (numbers.size() < 5 || numbers[4] == 0.0) return std::nullopt;  // lines without a distance would never end
    HatchFamily family;
    family.angle = math::toRadians(numbers[0]);
    family.origin = {numbers[1], numbers[2]};
    family.shift = {numbers[3], numbers[4]};
    family.dashes.assign(numbers.begin() + 5, numbers.end());
    double length = 0.0;
    for (const double dash : family.dashes) length += std::abs(dash);
    if (!family.dashes.empty() && length == 0.0) return std::nullopt;
    return family;
}

/// The next comma-separated field of a linetype's line; commas in brackets and quotes do not separate.
std::string_view takeField(std::string_view& rest) {
    bool quoted = false;
    int depth = 0;
    std::size_t i = 0;
    for (; i < rest.size(); ++i) {
        const char c = rest[i];
        if (c == '"') quoted = !quoted;
        if (quoted) continue;
        if (c == '[') ++depth;
        if (c == ']') --depth;
        if (c == ',' && depth <= 0) break;
    }
    const std::string_view field = trimmed(rest.substr(0, i));
    rest = i < rest.size() ? rest.substr(i + 1) : std::string_view{};
    return field;
}

/// ["GAS",STANDARD,S=2.54,R=0,X=-2.54,Y=-1.27] or [TRACK1,ltypeshp.shx,S=6.35].
std::optional<LinetypeElement> readElement(std::string_view field) {
    if (field.size() < 2 || field.front() != '[' || field.back() != ']') return std::nullopt;
    std::string_view rest = field.substr(1, field.size() - 2);
    std::string_view what = takeField(rest);
    LinetypeElement element;
    if (what.size() >= 2 && what.front() == '"' && what.back() == '"') {
        what = what.substr(1, what.size() - 2);
        element.flags = kElementText;
    } else {
        element.flags = kElementShape;
        if (const std::optional<double> shape = number(what); shape && *shape >= 0 && *shape <= 65535)
            element.shape = static_cast<std::int32_t>(*shape);
    }
    if (what.empty() || what.size() > kMaxNameLength) return std::nullopt;
    element.text = what;
    element.style = Name(takeField(rest).substr(0, kMaxNameLength));
    while (!rest.empty()) {
        const std::string_view option = takeField(rest);
        const std::size_t equals = option.find('=');
        if (equals != 1) return std::nullopt;
        std::string_view text = trimmed(option.substr(2));
        double toRadians = math::kDegree;
        if (!text.empty() && (text.back() == 'r' || text.back() == 'R')) {
            toRadians = 1.0;
            text.remove_suffix(1);
        } else if (!text.empty() && (text.back() == 'g' || text.back() == 'G')) {
            toRadians = math::kPi / 200.0;
            text.remove_suffix(1);
        } else if (!text.empty() && (text.back() == 'd' || text.back() == 'D')) {
            text.remove_suffix(1);
        }
        const std::optional<double> value = number(text);
        if (!value) return std::nullopt;
        switch (option.front()) {
            case 'S':
            case 's':
                element.scale = *value;
                break;
            case 'X':
            case 'x':
                element.offsetX = *value;
                break;
            case 'Y':
            case 'y':
                element.offsetY = *value;
                break;
            case 'A':
            case 'a':
                element.flags |= kElementAbsolute;
                element.rotation = *value * toRadians;
                break;
            case 'U':
            case 'u':
                element.flags |= kElementUpright;
                [[fallthrough]];
            case 'R':
            case 'r':
                element.rotation = *value * toRadians;
                break;
            default:
                return std::nullopt;
        }
    }
    return element;
}

/// "A,12.7,-6.35": alignment, dashes and the elements that stand at the end of the dash before them.
bool readDashes(std::string_view line, Linetype& linetype) {
    std::string_view rest = line;
    if (const std::string_view alignment = takeField(rest); alignment != "A" && alignment != "a") return false;
    bool complex = false;
    while (!rest.empty()) {
        const std::string_view field = takeField(rest);
        if (field.empty()) continue;
        if (field.front() == '[') {
            const std::optional<LinetypeElement> element = readElement(field);
            if (!element || linetype.elements.empty() || linetype.elements.back().flags != 0) return false;
            linetype.elements.back() = *element;
            complex = true;
            continue;
        }
        const std::optional<double> dash = number(field);
        if (!dash || linetype.pattern.size() >= kMaxDashes) return false;
        linetype.pattern.push_back(*dash);
        linetype.elements.emplace_back();
    }
    if (!complex) linetype.elements.clear();
    return linetype.patternLength() > 0.0;
}

}  // namespace

std::vector<HatchPattern> parsePatternLibrary(std::string_view text, int* skipped) {
    std::vector<HatchPattern> patterns;
    std::unordered_set<const void*> names;
    int bad = 0;
    bool open = false;  // lines belong to the last pattern
    const auto close = [&] {
        if (!open || !patterns.back().families.empty()) return;
        names.erase(patterns.back().name.key());
        patterns.pop_back();
        ++bad;
    };
    Lines lines(text);
    for (std::string_view line; lines.next(line);) {
        if (line.size() > kMaxLineLength) {
            ++bad;
            continue;
        }
        if (line.front() == '*') {
            close();
            std::string_view name;
            std::string_view description;
            open = readHeader(line, name, description) && patterns.size() < kMaxRecords &&
                   names.insert(Name(name).key()).second;
            if (open)
                patterns.push_back({Name(name), std::string(description), {}});
            else
                ++bad;
            continue;
        }
        std::optional<HatchFamily> family;
        if (open && patterns.back().families.size() < kMaxFamilies) family = readFamily(line);
        if (family)
            patterns.back().families.push_back(std::move(*family));
        else
            ++bad;
    }
    close();
    if (skipped != nullptr) *skipped = bad;
    return patterns;
}

std::vector<Linetype> parseLinetypeLibrary(std::string_view text, int* skipped) {
    std::vector<Linetype> linetypes;
    std::unordered_set<const void*> names;
    int bad = 0;
    Linetype pending;  // has a name when its line of dashes is awaited
    Lines lines(text);
    for (std::string_view line; lines.next(line);) {
        if (line.size() > kMaxLineLength) {
            ++bad;
            continue;
        }
        if (line.front() == '*') {
            if (!pending.name.empty()) ++bad;
            pending = Linetype{};
            std::string_view name;
            std::string_view description;
            if (readHeader(line, name, description) && linetypes.size() < kMaxRecords) {
                pending.name = Name(name);
                pending.description = description;
            } else {
                ++bad;
            }
            continue;
        }
        if (!pending.name.empty() && readDashes(line, pending) && names.insert(pending.name.key()).second)
            linetypes.push_back(std::move(pending));
        else
            ++bad;
        pending = Linetype{};
    }
    if (!pending.name.empty()) ++bad;
    if (skipped != nullptr) *skipped = bad;
    return linetypes;
}

}  // namespace kova::engine
