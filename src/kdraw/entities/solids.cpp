#include "kdraw/entities/solids.hpp"

#include <algorithm>
#include <cstdio>

#include "kdraw/groups/describing.hpp"

namespace kdraw {

namespace {

constexpr std::size_t kGuidSize = 16;
constexpr std::uint16_t kTextForm = 1, kBinaryForm = 2;

/// Modeller text is stored with its printable characters turned round; the same again undoes it.
std::string crypted(std::string text) {
    for (char& c : text)
        if (const auto u = static_cast<unsigned char>(c); u > 32 && u < 127) c = static_cast<char>(159 - u);
    return text;
}

constexpr std::string_view kBinaryEnd =
    "\x0E\x03"
    "End\x0E\x02of\x0E\x04"
    "ACIS\x0D\x04"
    "data";

bool endsWithMark(const std::string& data) {
    using namespace std::string_view_literals;
    constexpr std::string_view kMarks[] = {
        kBinaryEnd,
        "\x0E\x03"
        "End\x0E\x02of\x0E\x03"
        "ASM\x0D\x04"
        "data"sv,
        "End-of-ACIS-data"sv, "End-of-ASM-data"sv};
    return std::any_of(std::begin(kMarks), std::end(kMarks),
                       [&](std::string_view mark) { return data.ends_with(mark); });
}

int digit(char c) {
    return c >= '0' && c <= '9' ? c - '0' : (c | 32) >= 'a' && (c | 32) <= 'f' ? (c | 32) - 'a' + 10 : -1;
}

// The first three groups of a GUID are numbers, whose bytes stand in the file the other way round.
constexpr std::array<std::size_t, kGuidSize> kGuidOrder{3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

std::string guidText(const std::string& guid) {
    std::string out = "{";
    for (std::size_t i = 0; i < kGuidSize; ++i) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%02x", static_cast<unsigned char>(guid[kGuidOrder[i]]));
        out += hex;
        if (i == 3 || i == 5 || i == 7 || i == 9) out += '-';
    }
    return out + '}';
}

std::string guidOfText(std::string_view text) {
    std::string digits;
    for (const char c : text)
        if (digit(c) >= 0) digits += c;
    if (digits.size() != 2 * kGuidSize) return {};
    std::string guid(kGuidSize, '\0');
    for (std::size_t i = 0; i < kGuidSize; ++i)
        guid[kGuidOrder[i]] = static_cast<char>(digit(digits[2 * i]) << 4 | digit(digits[2 * i + 1]));
    return guid;
}

}  // namespace

void ModelerEntity::describeBody(Fields& f, bool hasHistory) {
    f.subclass("AcDbModelerGeometry");
    if (f.dxf()) {
        describeGroups(f);
        if (!hasHistory) return;
        f.subclass("AcDb3dSolid");
        f.handle(Ref::HardOwner, 350, history);
        return;
    }
    if (f.before(Version::R2013)) describeData(f);
    if (f.reading()) {
        // What follows is a cache of the wires for display.
        if (hasHistory && f.since(Version::R2007)) f.handle(Ref::HardOwner, 0, history);
        f.skipRest();
        return;
    }
    bool yes = true, no = false;
    std::int32_t none = 0, isolines = 4;
    f.b(0, yes);  // a wireframe follows
    f.b(0, no);   // no point
    f.bl(0, isolines);
    // No wires: a list of none, because programs differ in what follows when the list is left out.
    f.b(0, yes);
    f.bl(0, none);
    f.bl(0, none);  // no silhouettes
    f.b(0, yes);    // no second copy of the data
    f.bl(0, none);  // no materials
    if (f.since(Version::R2013)) {
        describeGuid(f);
        f.bl(0, none);
    }
    if (hasHistory) f.handle(Ref::HardOwner, 0, history);
}

void ModelerEntity::describeGuid(Fields& f) {
    bool known = guid.size() == kGuidSize;
    std::string bytes = known ? guid : std::string(kGuidSize, '\0');
    const auto number = [&](std::size_t at, std::size_t size) {
        std::uint32_t v = 0;
        for (std::size_t i = size; i-- > 0;) v = v << 8 | static_cast<unsigned char>(bytes[at + i]);
        return v;
    };
    auto first = static_cast<std::int32_t>(number(0, 4));
    auto second = static_cast<std::uint16_t>(number(4, 2));
    auto third = static_cast<std::uint16_t>(number(6, 2));
    f.b(0, known);
    f.bl(0, first);
    f.bs(0, second);
    f.bs(0, third);
    std::string rest = bytes.substr(8);
    f.bytes(0, rest, rest.size());
}

void ModelerEntity::describeData(Fields& f) {
    bool none = empty();
    f.b(0, none);
    if (none) return;
    bool unknown = false;
    std::uint16_t form = binary.empty() ? kTextForm : kBinaryForm;
    f.b(0, unknown);
    f.bs(0, form);
    if (f.reading()) {
        if (form == kTextForm)
            readText(f);
        else
            readUncounted(f);
        return;
    }
    if (form == kBinaryForm) {
        std::string data = binary;
        // Only the mark at the end tells where the data stop.
        if (!endsWithMark(data)) data += kBinaryEnd;
        f.bytes(0, data, data.size());
        return;
    }
    constexpr std::size_t kBlock = 4096;
    for (std::size_t at = 0; at <= text.size(); at += kBlock) {
        std::string block = crypted(text.substr(at, kBlock));
        if (block.empty()) break;
        f.count(Width::BL, 0, block.size(), 8);
        f.bytes(0, block, block.size());
    }
    f.count(Width::BL, 0, 0, 8);
}

void ModelerEntity::readText(Fields& f) {
    while (!f.failed()) {
        const std::size_t size = f.count(Width::BL, 0, 0, 8);
        if (size == 0) break;
        std::string block;
        f.bytes(0, block, size);
        text += crypted(std::move(block));
    }
    std::erase(text, '\r');
}

/// Data without a length: they end with a mark.
void ModelerEntity::readUncounted(Fields& f) {
    std::string data;
    std::uint8_t byte = 0;
    do {
        f.rc(0, byte);
        if (f.failed()) return;
        data += static_cast<char>(byte);
    } while ((byte != 'a' || !endsWithMark(data)));
    if (data.starts_with("ACIS BinaryFile") || data.starts_with("ASM BinaryFile"))
        binary = std::move(data);
    else
        text = std::move(data);
}

void ModelerEntity::describeGroups(Fields& f) {
    if (DxfInput* in = f.input()) {
        if (in->find(2)) guid = guidOfText(in->text());
        std::string line;
        const auto finish = [&] {
            if (!line.empty()) text += crypted(std::move(line)) + '\n';
            line.clear();
        };
        for (bool found = in->find(1); found && !in->atEnd(); in->skip()) {
            if (in->peek() == 1) finish();
            if (in->peek() == 1 || in->peek() == 3) line += in->decoded();
        }
        finish();
        if (in->find(310)) f.bytes(310, binary, 0);
        return;
    }
    DxfOutput& out = *f.output();
    if (text.empty() && binary.empty()) {
        out.integer(290, 1);
        out.word(2, guidText(guid.size() == kGuidSize ? guid : std::string(kGuidSize, '\0')));
        return;
    }
    out.integer(70, binary.empty() ? kTextForm : kBinaryForm);
    if (!binary.empty()) {
        out.bytes(310, binary);
        return;
    }
    constexpr std::size_t kPiece = 250;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t end = text.find('\n', begin);
        if (end == std::string::npos) end = text.size();
        const std::string line = crypted(text.substr(begin, end - begin));
        for (std::size_t at = 0; at == 0 || at < line.size(); at += kPiece)
            out.text(at == 0 ? 1 : 3, std::string_view(line).substr(at, kPiece));
        begin = end + 1;
    }
}

}  // namespace kdraw
