#include "kdraw/database/extended_data.hpp"

namespace kdraw {

namespace {

/// The size of a piece is stored as a bit short.
constexpr std::size_t kMaxPiece = 32767;

std::uint64_t bigEndian(BitReader& in) {
    std::uint64_t v = 0;
    for (int i = 0; i < 8; ++i) v = v << 8 | in.rc();
    return v;
}

std::string raw(BitReader& in, std::size_t size) {
    std::string bytes;
    if (size > in.left() / 8) {
        in.fail();
        return bytes;
    }
    bytes.resize(size);
    for (char& c : bytes) c = static_cast<char>(in.rc());
    return bytes;
}

/// False when the item cannot be read.
bool decodeItem(BitReader& in, Version version, const TextCodec& codec, XItem& item) {
    const unsigned kind = in.rc();
    item.code = static_cast<int>(1000 + kind);
    switch (kind) {
        case 0:
        case 1: {
            const std::size_t size = in.rs();
            if (version >= Version::R2007) {
                item.text = utf8OfUtf16(raw(in, size * 2));
            } else {
                in.rc();  // number of the code page, the drawing's own in all files
                item.text = codec.toUtf8(raw(in, size));
            }
            break;
        }
        case 2: item.text = in.rc() == 0 ? "{" : "}"; break;
        case 3:
        case 5: item.handle = bigEndian(in); break;
        case 4: item.text = raw(in, in.rc()); break;
        case 10:
        case 11:
        case 12:
        case 13:
            item.point.x = in.rd();
            item.point.y = in.rd();
            item.point.z = in.rd();
            break;
        case 40:
        case 41:
        case 42: item.real = in.rd(); break;
        case 70: item.integer = static_cast<std::int16_t>(in.rs()); break;
        case 71: item.integer = static_cast<std::int32_t>(in.rl()); break;
        default: return false;
    }
    return !in.failed();
}

void encodeItem(BitWriter& out, const XItem& item) {
    out.rc(static_cast<unsigned>(item.code - 1000));
    switch (item.code) {
        case 1000:
        case 1001: {
            std::u16string units = utf16OfUtf8(item.text);
            if (units.size() > 8000) units.resize(8000);
            out.rs(static_cast<std::uint16_t>(units.size()));
            for (const char16_t unit : units) out.rs(unit);
            break;
        }
        case 1002: out.rc(item.text == "}" ? 1 : 0); break;
        case 1003:
        case 1005:
            for (int shift = 56; shift >= 0; shift -= 8) out.rc(static_cast<unsigned>(item.handle >> shift));
            break;
        case 1004: {
            const std::string_view bytes = std::string_view(item.text).substr(0, 255);
            out.rc(static_cast<unsigned>(bytes.size()));
            out.bytes(bytes);
            break;
        }
        case 1070: out.rs(static_cast<std::uint16_t>(item.integer)); break;
        case 1071: out.rl(static_cast<std::uint32_t>(item.integer)); break;
        default:
            if (item.code < 1040) {
                out.rd(item.point.x);
                out.rd(item.point.y);
                out.rd(item.point.z);
            } else {
                out.rd(item.real);
            }
    }
}

}  // namespace

void decodeExtendedData(BitDecoder& f, const TextCodec& codec, std::vector<XBlock>& blocks) {
    for (;;) {
        const std::size_t size = static_cast<std::uint16_t>(f.data.bs());
        if (size == 0 || f.data.failed()) return;
        XBlock block;
        block.application = f.data.handle(f.own);
        if (size > f.data.left() / 8) {
            f.data.fail();
            return;
        }
        const std::size_t end = f.data.position() + size * 8;
        BitReader in = f.data;
        in.setEnd(end);
        while (in.position() < end) {
            XItem item;
            if (!decodeItem(in, f.version(), codec, item)) break;
            block.items.push_back(std::move(item));
        }
        f.data.seek(end);
        // Long data of one application comes in several pieces.
        if (!blocks.empty() && blocks.back().application == block.application)
            for (XItem& item : block.items) blocks.back().items.push_back(std::move(item));
        else
            blocks.push_back(std::move(block));
    }
}

void encodeExtendedData(BitWriter& data, const std::vector<XBlock>& blocks) {
    BitWriter piece, one;
    const auto flush = [&](Handle application) {
        if (piece.size() == 0) return;
        data.bs(static_cast<std::int32_t>(piece.size() / 8));
        data.handle(5, application);
        data.append(piece);
        piece.clear();
    };
    for (const XBlock& block : blocks) {
        if (block.application == 0) continue;
        for (const XItem& item : block.items) {
            one.clear();
            encodeItem(one, item);
            if ((piece.size() + one.size()) / 8 > kMaxPiece) flush(block.application);
            piece.append(one);
        }
        flush(block.application);
    }
    data.bs(0);
}

}  // namespace kdraw
