#include "io/dxf/fingerprint.hpp"

#include <algorithm>
#include <bit>
#include <bitset>
#include <cmath>
#include <vector>

namespace kova::io::dxf {

namespace {

using Tags = std::span<const Tag>;

std::uint64_t mixed(std::uint64_t x) {
    x ^= x >> 33U;
    x *= 0xFF51AFD7ED558CCDULL;
    x ^= x >> 33U;
    x *= 0xC4CEB9FE1A85EC53ULL;
    return x ^ x >> 33U;
}

/// A number for a real that is the same for its neighbours up to about 1e-9 of its size; 0 for nearly nothing.
std::uint64_t rounded(double v) {
    constexpr unsigned kDropped = 22;
    if (!(std::abs(v) > 1e-9)) return 0;
    const auto bits = std::bit_cast<std::uint64_t>(v) + (std::uint64_t{1} << (kDropped - 1));
    return bits >> kDropped;
}

std::uint64_t hashOf(std::string_view text) {
    std::uint64_t h = 0xCBF29CE484222325ULL;
    for (const char c : text) h = (h ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
    return h;
}

constexpr bool isPoint(std::int32_t c) {
    return (c >= 10 && c <= 18) || (c >= 110 && c <= 112) || (c >= 210 && c <= 213) || (c >= 1010 && c <= 1013);
}
constexpr bool isReal(std::int32_t c) {
    return (c >= 10 && c < 60) || (c >= 110 && c < 150) || (c >= 210 && c < 240) || (c >= 460 && c < 470) ||
           (c >= 1010 && c < 1060);
}
constexpr bool isInteger(std::int32_t c) {
    return (c >= 60 && c < 100) || (c >= 160 && c < 180) || (c >= 270 && c < 300) || (c >= 370 && c < 390) ||
           (c >= 400 && c < 410) || (c >= 420 && c < 430) || (c >= 440 && c < 460) || c == 1070 || c == 1071;
}
constexpr bool isHardPointer(std::int32_t c) { return c >= 340 && c < 350; }
constexpr bool isText(std::int32_t c) {
    return (c >= 1 && c < 10 && c != 5) || (c >= 300 && c < 310) || (c >= 410 && c < 420) || (c >= 430 && c < 440) ||
           (c >= 470 && c < 480) || c == 1000 || c == 1003;
}

/// The codes of a record that its own data may contradict. What else it holds, programs set as they like, and formats
/// have no place for.
class Relevant {
public:
    /// The common part of any entity.
    static const Relevant& head() {
        static const Relevant codes{"", {6, 8, 62, 370, 420, 440}};
        return codes;
    }
    /// Null for a kind of record that is not listed: all its codes count.
    static const Relevant* of(std::string_view type) {
        static const std::vector<Relevant> rows = [] {
            const Codes dimension{1, 3, 10, 11, 13, 14, 15, 16, 50, 51, 52, 53, 70, 210};
            const Codes body{0};
            return std::vector<Relevant>{
                {"DIMENSION", dimension},
                {"ARC_DIMENSION", dimension},
                {"LARGE_RADIAL_DIMENSION", dimension},
                {"LEADER", {3, 10, 210}},
                {"TOLERANCE", {1, 3, 10, 11, 210}},
                {"HATCH", {2,  10, 11, 40, 41, 42, 43, 44, 45,  46,  49,  50,  51,  52,  53,
                           70, 75, 76, 77, 92, 421, 452, 460, 461, 462, 463, 470, 210}},
                {"INSERT", {2, 10, 41, 42, 43, 44, 45, 50, 70, 71, 210}},
                {"ATTRIB", {1, 2, 7, 10, 11, 40, 41, 50, 51, 70, 72, 74, 210}},
                {"ATTDEF", {1, 2, 3, 7, 10, 11, 40, 41, 50, 51, 70, 72, 74, 210}},
                {"TEXT", {1, 7, 10, 11, 40, 41, 50, 51, 71, 72, 73, 210}},
                {"MTEXT", {1, 3, 7, 10, 11, 40, 41, 44, 45, 50, 63, 71, 90, 210, 421, 441}},
                {"MLINE", {10, 11, 40, 70, 71, 340, 210}},
                {"IMAGE", {10, 11, 12, 13, 14, 70, 280, 281, 282, 283}},
                {"WIPEOUT", {10, 11, 12, 14}},
                {"3DSOLID", body},
                {"REGION", body},
                {"BODY", body},
                {"SHAPE", body},
                {"VIEWPORT", {10, 12, 13, 14, 15, 16, 17, 40, 41, 45, 50, 51, 90, 331, 340}},
                {"MULTILEADER", {12, 15, 304}},
                {"ACAD_TABLE", {1, 10, 11, 141, 142, 342}},
                {"LWPOLYLINE", {10, 38, 42, 70, 210}},
                {"POLYLINE", {70, 71, 72, 73, 74, 75}},
                {"VERTEX", {10, 70, 71, 72, 73, 74}},
                {"SPLINE", {10, 11, 40, 41, 71}},
                {"HELIX", {10, 12, 40, 41, 42, 71, 280, 290}},
                {"LAYER", {2, 6, 62, 370, 420}},
                {"LTYPE", {2, 9, 44, 45, 46, 49, 50, 74}},
                {"STYLE", {2}},
                {"VIEW", {2, 10, 11, 12, 40, 41, 50}},
                {"UCS", {2}},
                {"DIMSTYLE", {2, 176, 177, 178, 340, 341, 342, 343, 344}},
                {"GROUP", {340}},
                {"LAYOUT", {1, 71, 74, 75, 78}},
                {"PLOTSETTINGS", {1, 74, 75, 78}},
                {"MLEADERSTYLE", {340, 341, 342, 343}},
                {"TABLESTYLE", {7, 62, 140, 170, 283}},
            };
        }();
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const Relevant& r) { return r.type_ == type; });
        return row != rows.end() ? &*row : nullptr;
    }

    bool contains(std::int32_t code) const {
        return code >= 0 && code < static_cast<std::int32_t>(kCodes) && codes_[static_cast<std::size_t>(code)];
    }

private:
    static constexpr std::size_t kCodes = 480;
    using Codes = std::vector<std::size_t>;
    Relevant(std::string_view type, const Codes& codes) : type_(type) {
        for (const std::size_t code : codes) codes_.set(code);
    }

    std::string_view type_;
    std::bitset<kCodes> codes_;
};

/// Overrides of the style and the origin of a pattern stand in extended data under ACAD.
bool hasAcadGroups(std::string_view type) {
    return type.ends_with("DIMENSION") || type == "LEADER" || type == "TOLERANCE" || type == "HATCH";
}

auto hasCode(std::int32_t code) {
    return [code](const Tag& tag) { return tag.code == code; };
}

class Sum {
public:
    Sum(std::string_view type, const TextDecoder& decoder) : type_(type), decoder_(decoder) {}

    /// `relevant`: null takes all.
    std::uint64_t take(Tags tags, const Relevant* relevant) {
        sum_ = 0;
        std::string pieces;
        const bool fitOnly = type_ == "SPLINE" && std::none_of(tags.begin(), tags.end(), hasCode(10));
        const bool trueColor = std::any_of(tags.begin(), tags.end(), hasCode(420));
        const auto background = std::find_if(tags.begin(), tags.end(), hasCode(90));
        const bool filled = type_ == "MTEXT" && background != tags.end() && (background->integer() & 1) != 0;
        for (std::size_t i = 0; i < tags.size(); ++i) {
            const Tag& tag = tags[i];
            const std::int32_t c = tag.code;
            if (c == 102 && tag.trimmed().starts_with("{")) {
                while (i + 1 < tags.size() && tags[i + 1].code != 102 && tags[i + 1].code < 1000) ++i;
                ++i;
            } else if (relevant != nullptr && !relevant->contains(c)) {
                continue;
            } else if (c == 62 && trueColor) {
                continue;  // the nearest index, of which there may be two
            } else if (type_ == "SPLINE" && c == 11 && !fitOnly) {
                continue;  // beside control points DWG has no fit points
            } else if (type_ == "MTEXT" && !filled && (c == 45 || c == 63 || c == 90 || c == 421 || c == 441)) {
                continue;  // the colours of a frame
            } else if (isPoint(c)) {
                const double x = tag.real();
                const auto axis = [&](std::int32_t code) {
                    return i + 1 < tags.size() && tags[i + 1].code == code ? tags[++i].real() : 0.0;
                };
                const double y = axis(c + 10);
                addPoint(c, x, y, axis(c + 20));
            } else if (isReal(c)) {
                // Files have the angle of such a text, or the direction that it means.
                if (c == 50 && type_ == "MTEXT") {
                    const double angle = tag.real() * 3.14159265358979323846 / 180.0;
                    addPoint(11, std::cos(angle), std::sin(angle), 0.0);
                } else if (tag.real() != defaultOf(c)) {
                    add(c, rounded(tag.real()));
                }
            } else if (isInteger(c)) {
                std::int64_t value = tag.integer();
                // A frame, which old formats have no bit for; a layer that is off.
                if (type_ == "MTEXT" && c == 90) value &= 3;
                if (type_ == "LAYER" && c == 62) value = std::abs(value);
                if (static_cast<double>(value) != defaultOf(c)) add(c, static_cast<std::uint64_t>(value));
            } else if (isHardPointer(c) || c == 331) {
                add(c, tag.handle());
            } else if (isText(c)) {
                // Long texts are cut differently.
                if (type_ == "MTEXT" && (c == 1 || c == 3))
                    pieces += tag.text();
                else if (const std::string text = decoder_.decode(tag.text()); !text.empty())
                    add(c, hashOf(text));
            }
        }
        if (!pieces.empty()) add(1, hashOf(decoder_.decode(pieces)));
        return sum_;
    }

private:
    void add(std::int32_t code, std::uint64_t value) {
        if (value != 0) sum_ += mixed(mixed(value) ^ static_cast<std::uint64_t>(code));
    }
    void addPoint(std::int32_t code, double x, double y, double z) {
        const std::uint64_t a = rounded(x);
        const std::uint64_t b = rounded(y);
        const std::uint64_t c = rounded(z);
        // The directions that everything has by default.
        if (code == 210 && x == 0.0 && y == 0.0 && z > 0.0) return;
        if (code == 11 && type_ == "MTEXT" && b == 0 && x > 0.0) return;
        if ((a | b | c) != 0) add(code, mixed(mixed(a) + b) + c);
    }
    /// What a missing group means.
    double defaultOf(std::int32_t c) const {
        const bool factor = c == 41 && (type_ == "TEXT" || type_ == "ATTRIB" || type_ == "ATTDEF");
        const bool reference = type_ == "INSERT" && ((c >= 41 && c <= 43) || c == 70 || c == 71);
        return factor || reference || (type_ == "MTEXT" && c == 44) ? 1.0 : 0.0;
    }

    std::string_view type_;
    const TextDecoder& decoder_;
    std::uint64_t sum_ = 0;
};

}  // namespace

Fingerprint fingerprintOf(std::string_view type, Tags groups, const TextDecoder& decoder) {
    // As the reader parts a record: the common part ends at the marker of the kind.
    std::size_t body = groups.size();
    std::size_t end = groups.size();
    std::size_t xdata = groups.size();
    bool marked = false;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const Tag& tag = groups[i];
        if (tag.code == 1001) {
            xdata = i;
            end = std::min(end, i);
            break;
        }
        if (tag.code == 101) end = std::min(end, i);
        if (tag.code != 100) continue;
        marked = true;
        if (body == groups.size() && tag.trimmed() != "AcDbEntity") body = i;
    }
    if (!marked) body = 0;
    body = std::min(body, end);
    Fingerprint print;
    Sum sum(type, decoder);
    print.head = sum.take(groups.first(body), &Relevant::head());
    print.body = sum.take(groups.subspan(body, end - body), Relevant::of(type));
    for (std::size_t i = xdata; i < groups.size();) {
        std::size_t next = i + 1;
        while (next < groups.size() && groups[next].code != 1001) ++next;
        if (groups[i].trimmed() == "ACAD" && hasAcadGroups(type))
            print.body += sum.take(groups.subspan(i + 1, next - i - 1), nullptr);
        i = next;
    }
    return print;
}

Fingerprint fingerprintOf(std::string_view text, const TextDecoder& decoder) {
    Fingerprint print;
    RecordReader reader(text);
    Record record;
    bool first = true;
    while (reader.next(record)) {
        const Fingerprint one = fingerprintOf(record.type, record.tags, decoder);
        if (first)
            print = one;
        else if (record.type != "SEQEND")
            print.parts += one.body;
        first = false;
    }
    return print;
}

}  // namespace kova::io::dxf
