#include "engine/libraries/shape_files.hpp"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <map>

#include "engine/model/name.hpp"
#include "math/angles.hpp"
#include "strings/code_page.hpp"

namespace kova::engine {

using math::Vector2;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxBytes = 2000;  // of one definition, as shape compilers have it
constexpr std::size_t kMaxShapes = 70'000;
constexpr std::uintmax_t kMaxFile = 32 << 20;
constexpr int kMaxSteps = 20'000;  // of one shape with its subshapes
constexpr int kMaxDepth = 8;
constexpr std::size_t kMaxStack = 16;
constexpr double kLargest = 1e9;  // coordinates and scale of a shape

// Direction codes: sixteen directions, the even odd ones as long as the box of side 1 lets them.
constexpr double kDirectionX[16] = {1, 1, 1, 0.5, 0, -0.5, -1, -1, -1, -1, -1, -0.5, 0, 0.5, 1, 1};
constexpr double kDirectionY[16] = {0, 0.5, 1, 1, 1, 1, 1, 0.5, 0, -0.5, -1, -1, -1, -1, -1, -0.5};

constexpr const char* kBuiltIn =
    "*130,6,TRACK1\n014,002,01C,001,01C,0\n"
    "*131,3,ZIG\n012,01E,0\n"
    "*132,6,BOX\n014,020,02C,028,014,0\n"
    "*133,4,CIRC1\n10,1,-040,0\n"
    "*134,6,BAT\n025,10,2,-044,02B,0\n"
    "*135,9,AMZIGZAG\n001,020,012,02E,012,020,0\n";

class Pen {
public:
    Pen(const ShapeSet& set, Path& out) : set_(set), out_(out) {}

    void run(const ShapeDefinition& shape, int depth) {
        const std::vector<std::uint8_t>& code = shape.code;
        std::size_t i = 0;
        const auto next = [&]() -> int { return i < code.size() ? code[i++] : 0; };
        const auto nextSigned = [&] { return static_cast<int>(static_cast<std::int8_t>(next())); };
        while (i < code.size()) {
            if (++steps_ > kMaxSteps) return;
            const bool skip = std::exchange(skip_, false);
            const int c = next();
            switch (c) {
                case 0:
                    return;
                case 1:
                    if (!skip) down_ = true;
                    break;
                case 2:
                    if (!skip) down_ = false;
                    break;
                case 3: {
                    const int by = next();
                    if (!skip && by != 0) scale_ = std::max(scale_ / by, 1.0 / kLargest);
                    break;
                }
                case 4: {
                    const int by = next();
                    if (!skip) scale_ = std::min(scale_ * by, kLargest);
                    break;
                }
                case 5:
                    if (!skip && stack_.size() < kMaxStack) stack_.push_back(at_);
                    break;
                case 6:
                    if (!skip && !stack_.empty()) {
                        at_ = stack_.back();
                        stack_.pop_back();
                        fresh_ = true;
                    }
                    break;
                case 7: {
                    const ShapeDefinition* inner = set_.find(next());
                    if (!skip && inner != nullptr && depth < kMaxDepth) run(*inner, depth + 1);
                    break;
                }
                case 8: {
                    const int dx = nextSigned();
                    const int dy = nextSigned();
                    if (!skip) move({dx * scale_, dy * scale_});
                    break;
                }
                case 9:
                    for (;;) {
                        const int dx = nextSigned();
                        const int dy = nextSigned();
                        if ((dx == 0 && dy == 0) || i >= code.size() || ++steps_ > kMaxSteps) break;
                        if (!skip) move({dx * scale_, dy * scale_});
                    }
                    break;
                case 10: {
                    const int radius = next();
                    const int how = nextSigned();
                    if (!skip) octantArc(radius * scale_, how);
                    break;
                }
                case 11: {
                    const int from = next();
                    const int to = next();
                    const int high = next();
                    const int low = next();
                    const int how = nextSigned();
                    if (!skip) fractionalArc(from, to, (high * 256 + low) * scale_, how);
                    break;
                }
                case 12: {
                    const int dx = nextSigned();
                    const int dy = nextSigned();
                    const int bulge = nextSigned();
                    if (!skip) bulgeArc({dx * scale_, dy * scale_}, bulge / 127.0);
                    break;
                }
                case 13:
                    for (;;) {
                        const int dx = nextSigned();
                        const int dy = nextSigned();
                        if ((dx == 0 && dy == 0) || i >= code.size() || ++steps_ > kMaxSteps) break;
                        const int bulge = nextSigned();
                        if (!skip) bulgeArc({dx * scale_, dy * scale_}, bulge / 127.0);
                    }
                    break;
                case 14:
                    skip_ = true;  // the next command is for vertical text only
                    break;
                default: {
                    const int length = c >> 4;
                    const int direction = c & 15;
                    if (!skip && length > 0)
                        move(Vector2{kDirectionX[direction], kDirectionY[direction]} * (length * scale_));
                    break;
                }
            }
        }
    }

private:
    void begin() {
        if (fresh_ || out_.empty()) out_.moveTo(at_);
        fresh_ = false;
    }
    bool reach(const Vector2& to) const { return std::abs(to.x) < kLargest && std::abs(to.y) < kLargest; }
    void move(const Vector2& by) {
        const Vector2 to = at_ + by;
        if (!reach(to)) return;
        if (down_) {
            begin();
            out_.lineTo(to);
        } else {
            fresh_ = true;
        }
        at_ = to;
    }
    void arc(const Vector2& center, double radius, double from, double to) {
        const Vector2 end = center + Vector2::from_angle(to) * radius;
        if (!reach(end) || !(radius > 0.0)) return;
        if (down_) {
            begin();
            out_.arc(center, radius, from, to);
        } else {
            fresh_ = true;
        }
        at_ = end;
    }
    void octantArc(double radius, int how) {
        const bool clockwise = how < 0;
        // The sign stands for the direction; the digits are those of the magnitude.
        const int digits = std::abs(how);
        const double start = (digits >> 4 & 7) * math::kPi / 4.0;
        const int octants = (digits & 7) == 0 ? 8 : digits & 7;
        const double sweep = octants * math::kPi / 4.0 * (clockwise ? -1.0 : 1.0);
        arc(at_ - Vector2::from_angle(start) * radius, radius, start, start + sweep);
    }
    void fractionalArc(int from, int to, double radius, int how) {
        const bool clockwise = how < 0;
        const int digits = std::abs(how);
        const double eighth = math::kPi / 4.0;
        const double side = clockwise ? -1.0 : 1.0;
        const double start = (digits >> 4 & 7) * eighth + side * from / 256.0 * eighth;
        const int octants = (digits & 7) == 0 ? 8 : digits & 7;
        // The last octant is run through by its fraction only.
        const double whole = octants * eighth - (to != 0 ? (256 - to) / 256.0 * eighth : 0.0) - from / 256.0 * eighth;
        arc(at_ - Vector2::from_angle(start) * radius, radius, start, start + side * whole);
    }
    void bulgeArc(const Vector2& by, double bulge) {
        const Vector2 to = at_ + by;
        if (!reach(to)) return;
        if (down_) {
            begin();
            out_.bulgeTo(to, bulge);
        } else {
            fresh_ = true;
        }
        at_ = to;
    }

    const ShapeSet& set_;
    Path& out_;
    Vector2 at_;
    double scale_ = 1.0;
    bool down_ = true;
    bool fresh_ = true;
    bool skip_ = false;
    int steps_ = 0;
    std::vector<Vector2> stack_;
};

/// "014" and "-040" are hexadecimal, "10" is decimal.
std::optional<int> shapeNumber(std::string_view text) {
    bool negative = false;
    if (text.starts_with('-') || text.starts_with('+')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty()) return {};
    int value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, text.front() == '0' ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return {};
    return negative ? -value : value;
}

std::string_view stripped(std::string_view s) {
    while (!s.empty() && (static_cast<unsigned char>(s.front()) <= ' ')) s.remove_prefix(1);
    while (!s.empty() && (static_cast<unsigned char>(s.back()) <= ' ')) s.remove_suffix(1);
    return s;
}

/// The bytes of a line, brackets and blanks passed over.
void appendBytes(std::string_view line, std::vector<std::uint8_t>& code) {
    while (!line.empty()) {
        const std::size_t end = line.find_first_of(",()");
        const std::string_view field = stripped(line.substr(0, end));
        line = end == std::string_view::npos ? std::string_view() : line.substr(end + 1);
        if (field.empty()) continue;
        const auto value = shapeNumber(field);
        if (!value || code.size() >= kMaxBytes) continue;
        // A number above a byte (a shape of a Unicode file) fills two.
        if (*value > 255) code.push_back(static_cast<std::uint8_t>(*value >> 8));
        code.push_back(static_cast<std::uint8_t>(*value));
    }
}

std::string readAll(const fs::path& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error) || fs::file_size(path, error) > kMaxFile) return {};
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

const ShapeDefinition* ShapeSet::find(std::int32_t number) const {
    const auto it = std::find_if(shapes.begin(), shapes.end(), [&](const auto& s) { return s.number == number; });
    return it != shapes.end() ? &*it : nullptr;
}

const ShapeDefinition* ShapeSet::find(std::string_view name) const {
    if (name.empty()) return nullptr;
    const auto it =
        std::find_if(shapes.begin(), shapes.end(), [&](const auto& s) { return equalNoCase(s.name, name); });
    return it != shapes.end() ? &*it : nullptr;
}

ShapeSet parseShapeText(std::string_view text) {
    const std::string decoded = strings::textOfFile(text, strings::CodePage());
    text = decoded;
    ShapeSet set;
    ShapeDefinition* current = nullptr;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        line = stripped(line.substr(0, line.find(';')));
        if (line.empty()) continue;
        if (line.front() != '*') {
            if (current != nullptr) appendBytes(line, current->code);
            continue;
        }
        current = nullptr;
        const std::size_t first = line.find(',');
        const std::size_t second = first == std::string_view::npos ? first : line.find(',', first + 1);
        if (second == std::string_view::npos || set.shapes.size() >= kMaxShapes) continue;
        const auto number = shapeNumber(stripped(line.substr(1, first - 1)));
        if (!number) continue;  // "UNIFONT" and "BIGFONT" name fonts, which are not read
        ShapeDefinition shape;
        shape.number = *number;
        shape.name = upperCase(stripped(line.substr(second + 1)));
        set.shapes.push_back(std::move(shape));
        current = &set.shapes.back();
    }
    return set;
}

ShapeSet parseCompiledShapes(std::string_view bytes) {
    ShapeSet set;
    const std::size_t mark = bytes.substr(0, 64).find('\x1a');
    if (mark == std::string_view::npos) return set;
    const std::string_view head = bytes.substr(0, mark);
    if (head.find("shapes 1.0") == std::string_view::npos && head.find("shapes 1.1") == std::string_view::npos &&
        head.find("shapes V1.") == std::string_view::npos)
        return set;
    bytes.remove_prefix(mark + 1);
    const auto word = [&](std::size_t i) -> std::size_t {
        return i + 1 < bytes.size()
                   ? static_cast<unsigned char>(bytes[i]) + 256U * static_cast<unsigned char>(bytes[i + 1])
                   : 0U;
    };
    // Lowest and highest number, count; then number and size of each; then their bytes, each behind its name.
    const std::size_t count = word(4);
    std::size_t at = 6 + 4 * count;
    for (std::size_t i = 0; i < count && at < bytes.size(); ++i) {
        const std::size_t size = word(6 + 4 * i + 2);
        const std::string_view body = bytes.substr(at, size);
        at += size;
        const std::size_t end = body.find('\0');
        if (end == std::string_view::npos) continue;
        ShapeDefinition shape;
        shape.number = static_cast<std::int32_t>(word(6 + 4 * i));
        shape.name = upperCase(body.substr(0, end));
        shape.code.assign(body.begin() + static_cast<std::ptrdiff_t>(end) + 1, body.end());
        set.shapes.push_back(std::move(shape));
    }
    return set;
}

const ShapeSet& builtInShapes() {
    static const ShapeSet set = parseShapeText(kBuiltIn);
    return set;
}

const ShapeSet* loadShapeFile(std::string_view file, const std::string& folder) {
    if (file.empty()) return nullptr;
    static std::map<std::string, std::unique_ptr<ShapeSet>, std::less<>> known;
    const std::string key = folder + '|' + std::string(file);
    const auto [it, fresh] = known.try_emplace(key);
    if (!fresh) return it->second.get();
    std::string name(file);
    std::replace(name.begin(), name.end(), '\\', '/');
    fs::path path(name);
    for (const fs::path& place : {path, fs::path(folder) / path, fs::path(folder) / path.filename()}) {
        for (const char* extension : {"", ".shx", ".shp"}) {
            fs::path candidate = place;
            if (*extension != '\0') candidate.replace_extension(extension);
            const std::string bytes = readAll(candidate);
            if (bytes.empty()) continue;
            ShapeSet set = parseCompiledShapes(bytes);
            if (set.shapes.empty() && bytes.find('\0') == std::string::npos) set = parseShapeText(bytes);
            if (set.shapes.empty()) continue;
            it->second = std::make_unique<ShapeSet>(std::move(set));
            return it->second.get();
        }
    }
    return nullptr;
}

Path shapeOutline(const ShapeSet& set, const ShapeDefinition& shape) {
    Path path;
    Pen(set, path).run(shape, 0);
    return path;
}

Path findShape(std::string_view file, const std::string& folder, std::int32_t number, std::string_view name) {
    const auto in = [&](const ShapeSet& set) -> const ShapeDefinition* {
        const ShapeDefinition* shape = number != 0 ? set.find(number) : nullptr;
        return shape != nullptr ? shape : set.find(name);
    };
    if (const ShapeSet* set = loadShapeFile(file, folder))
        if (const ShapeDefinition* shape = in(*set)) return shapeOutline(*set, *shape);
    // A number says nothing without its file; only the standard linetypes' own file is known by heart.
    const bool standard = upperCase(fs::path(file).stem().string()) == "LTYPESHP";
    const ShapeDefinition* shape = standard ? in(builtInShapes()) : builtInShapes().find(name);
    return shape != nullptr ? shapeOutline(builtInShapes(), *shape) : Path();
}

}  // namespace kova::engine
