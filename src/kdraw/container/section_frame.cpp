#include "kdraw/container/section_frame.hpp"

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/checksums.hpp"

namespace kdraw {

namespace {

constexpr std::size_t markSize = 16;

constexpr unsigned char headerMark[markSize] = {0xCF, 0x7B, 0x1F, 0x23, 0xFD, 0xDE, 0x38, 0xA9,
                                                0x5F, 0x7C, 0x68, 0xB8, 0x4E, 0x6D, 0x33, 0x5F};
constexpr unsigned char classesMark[markSize] = {0x8D, 0xA1, 0xC4, 0xB8, 0xC4, 0xA9, 0xF8, 0xC5,
                                                 0xC0, 0xDC, 0xF4, 0x5F, 0xE7, 0xCF, 0xB6, 0x8A};

std::string_view nameOf(FramedSection kind) { return kind == FramedSection::Header ? "header" : "classes"; }

/// The begin mark of a section, or its end mark, whose bytes are the complements.
std::string markOf(FramedSection kind, bool end) {
    const unsigned char* mark = kind == FramedSection::Header ? headerMark : classesMark;
    std::string bytes;
    for (std::size_t i = 0; i < markSize; ++i) bytes += static_cast<char>(end ? ~mark[i] : mark[i]);
    return bytes;
}

/// A size of 64 bits instead of 32 stands in R2018, and in R2010 and R2013 from maintenance release 4 on.
bool hasWideSize(Version version, int maintenance) {
    return version >= Version::R2018 || (version >= Version::R2010 && maintenance > 3);
}

struct Layout {
    bool fits = false;   // the body lies within the section
    bool sound = false;  // the CRC is right
    std::string_view body;
    std::size_t end = 0;  // behind the CRC
};

/// Reads the size behind the begin mark as one of 32 or of 64 bits.
Layout layoutOf(std::string_view bytes, bool wide) {
    Layout layout;
    const std::size_t start = markSize + (wide ? 8 : 4);
    if (!holds(bytes, markSize, start - markSize)) return layout;
    std::uint64_t size = loadLittle<std::uint32_t>(bytes.data() + markSize);
    if (wide) size |= static_cast<std::uint64_t>(loadLittle<std::uint32_t>(bytes.data() + markSize + 4)) << 32;
    if (!holds(bytes, start, size)) return layout;
    layout.fits = true;
    layout.body = bytes.substr(start, size);
    layout.end = start + size + 2;
    layout.sound = holds(bytes, start + size, 2) && crc16(crcSeed, bytes.substr(markSize, start + size - markSize)) ==
                                                        loadLittle<std::uint16_t>(bytes.data() + start + size);
    return layout;
}

}  // namespace

std::string readFrame(FramedSection kind, Version version, int maintenance, std::string_view bytes,
                      std::string_view& body, std::vector<std::string>& notes) {
    const std::string name(nameOf(kind));
    const bool wide = hasWideSize(version, maintenance);
    Layout layout = layoutOf(bytes, wide);
    if (!layout.sound && version >= Version::R2010) {
        const Layout other = layoutOf(bytes, !wide);
        if (other.sound) layout = other;
    }
    if (!layout.fits) return "the " + name + " section is damaged";
    if (bytes.substr(0, markSize) != markOf(kind, false))
        notes.push_back("wrong begin mark of the " + name + " section");
    if (!layout.sound) notes.push_back("wrong CRC of the " + name + " section");
    if (!holds(bytes, layout.end, markSize) || bytes.substr(layout.end, markSize) != markOf(kind, true))
        notes.push_back("wrong end mark of the " + name + " section");
    body = layout.body;
    return {};
}

std::string writeFrame(FramedSection kind, Version version, std::string_view body) {
    std::string out = markOf(kind, false);
    if (version >= Version::R2010)
        appendU64(out, body.size());
    else
        appendU32(out, static_cast<std::uint32_t>(body.size()));
    out += body;
    appendU16(out, crc16(crcSeed, std::string_view(out).substr(markSize)));
    out += markOf(kind, true);
    if (kind == FramedSection::Classes && version >= Version::R2004) out.append(8, '\0');
    return out;
}

}  // namespace kdraw
