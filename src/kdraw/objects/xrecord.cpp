#include "kdraw/objects/xrecord.hpp"

#include <bit>
#include <cstring>

#include "kdraw/groups/dxf_fields.hpp"
#include "kdraw/fields/text_codec.hpp"

namespace kdraw {

namespace {

using Kind = XRecord::Kind;

struct Range {
    int first, last;
    Kind kind;
};

constexpr Range kRanges[] = {
    {0, 9, Kind::Text},        {10, 18, Kind::Point},    {19, 49, Kind::Real},      {50, 58, Kind::Angle},
    {59, 59, Kind::Real},      {60, 79, Kind::Int16},    {90, 99, Kind::Int32},     {100, 105, Kind::Text},
    {110, 112, Kind::Point},   {113, 149, Kind::Real},   {160, 169, Kind::Int64},   {170, 179, Kind::Int16},
    {210, 219, Kind::Point},   {220, 239, Kind::Real},   {270, 279, Kind::Int16},   {280, 299, Kind::Int8},
    {300, 309, Kind::Text},    {310, 319, Kind::Bytes},  {320, 369, Kind::Handle},  {370, 389, Kind::Int16},
    {390, 399, Kind::Handle},  {400, 409, Kind::Int16},  {410, 419, Kind::Text},    {420, 429, Kind::Int32},
    {430, 439, Kind::Text},    {440, 459, Kind::Int32},  {460, 469, Kind::Real},    {470, 479, Kind::Text},
    {480, 481, Kind::Handle},  {999, 1003, Kind::Text},  {1004, 1004, Kind::Bytes}, {1005, 1005, Kind::Handle},
    {1010, 1013, Kind::Point}, {1040, 1042, Kind::Real}, {1070, 1070, Kind::Int16}, {1071, 1071, Kind::Int32},
};

/// Takes little-endian values off the front of a byte string.
class Cursor {
public:
    explicit Cursor(const std::string& raw) : raw_(raw) {}
    std::size_t left() const { return raw_.size() - at_; }
    bool failed() const { return failed_; }
    std::uint64_t number(std::size_t bytes) {
        if (left() < bytes) {
            failed_ = true;
            at_ = raw_.size();
            return 0;
        }
        std::uint64_t v = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            v |= static_cast<std::uint64_t>(static_cast<unsigned char>(raw_[at_ + i])) << (8 * i);
        at_ += bytes;
        return v;
    }
    double real() { return std::bit_cast<double>(number(8)); }
    std::string_view piece(std::size_t bytes) {
        if (left() < bytes) {
            failed_ = true;
            bytes = left();
        }
        const std::string_view view = std::string_view(raw_).substr(at_, bytes);
        at_ += bytes;
        return view;
    }

private:
    const std::string& raw_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

void append(std::string& out, std::uint64_t v, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) out += static_cast<char>(v >> (8 * i) & 0xFF);
}

}  // namespace

Kind XRecord::kindOf(int code) {
    for (const Range& range : kRanges)
        if (code >= range.first && code <= range.last) return range.kind;
    return Kind::None;
}

void XRecord::describe(Fields& f) {
    if (f.dxf()) {
        describeGroups(f);
        return;
    }
    std::string raw;
    if (!f.reading()) raw = packed();
    const std::size_t size = f.count(Width::BL, 0, raw.size(), 8);
    f.bytes(0, raw, size);
    f.bs(0, cloning);
    if (f.reading()) parse(f, raw);
}

void XRecord::parse(Fields& f, const std::string& raw) {
    items.clear();
    const bool wide = f.since(Version::R2007);
    Cursor in(raw);
    while (in.left() >= 2 && !in.failed()) {
        Item item;
        item.code = static_cast<std::int16_t>(in.number(2));
        switch (kindOf(item.code)) {
            case Kind::None:
                // The rest cannot be told apart; what was read stays.
                return;
            case Kind::Text: {
                const std::size_t length = in.number(2);
                if (wide) {
                    item.text = utf8OfUtf16(in.piece(length * 2));
                } else {
                    in.number(1);
                    item.text = f.fromCodePage(in.piece(length));
                }
                break;
            }
            case Kind::Point:
                item.point.x = in.real();
                item.point.y = in.real();
                item.point.z = in.real();
                break;
            case Kind::Real:
            case Kind::Angle:
                item.real = in.real();
                break;
            case Kind::Int8:
                item.integer = static_cast<std::int64_t>(in.number(1));
                break;
            case Kind::Int16:
                item.integer = static_cast<std::int16_t>(in.number(2));
                break;
            case Kind::Int32:
                item.integer = static_cast<std::int32_t>(in.number(4));
                break;
            case Kind::Int64:
                item.integer = static_cast<std::int64_t>(in.number(8));
                break;
            case Kind::Bytes:
                item.text = in.piece(in.number(1));
                break;
            case Kind::Handle:
                item.handle = in.number(8);
                break;
        }
        if (!in.failed()) items.push_back(std::move(item));
    }
}

std::string XRecord::packed() const {
    std::string out;
    for (const Item& item : items) {
        const Kind kind = kindOf(item.code);
        if (kind == Kind::None) continue;
        const auto head = [&] { append(out, static_cast<std::uint16_t>(item.code), 2); };
        switch (kind) {
            case Kind::None:
                break;
            case Kind::Text: {
                const std::u16string units = utf16OfUtf8(item.text);
                std::size_t length = std::min<std::size_t>(units.size(), 0xFFFF);
                if (length > 0 && length < units.size() && units[length - 1] >= 0xD800 && units[length - 1] < 0xDC00)
                    --length;
                head();
                append(out, length, 2);
                for (std::size_t i = 0; i < length; ++i) append(out, units[i], 2);
                break;
            }
            case Kind::Point:
                head();
                for (const double v : {item.point.x, item.point.y, item.point.z})
                    append(out, std::bit_cast<std::uint64_t>(v), 8);
                break;
            case Kind::Real:
            case Kind::Angle:
                head(), append(out, std::bit_cast<std::uint64_t>(item.real), 8);
                break;
            case Kind::Int8:
                head(), append(out, static_cast<std::uint64_t>(item.integer), 1);
                break;
            case Kind::Int16:
                head(), append(out, static_cast<std::uint64_t>(item.integer), 2);
                break;
            case Kind::Int32:
                head(), append(out, static_cast<std::uint64_t>(item.integer), 4);
                break;
            case Kind::Int64:
                head(), append(out, static_cast<std::uint64_t>(item.integer), 8);
                break;
            case Kind::Bytes:
                // Pieces of at most 127 bytes, as the format has them.
                for (std::size_t at = 0; at == 0 || at < item.text.size(); at += 127) {
                    const std::string_view piece = std::string_view(item.text).substr(at, 127);
                    head();
                    append(out, piece.size(), 1);
                    out += piece;
                }
                break;
            case Kind::Handle:
                head(), append(out, item.handle, 8);
                break;
        }
    }
    return out;
}

void XRecord::describeGroups(Fields& f) {
    f.subclass("AcDbXrecord");
    if (DxfOutput* out = f.output()) {
        out->integer(280, cloning);
        for (Item& item : items) {
            switch (kindOf(item.code)) {
                case Kind::None:
                    break;
                case Kind::Text:
                    out->text(item.code, item.text);
                    break;
                case Kind::Point:
                    out->point(item.code, item.point);
                    break;
                case Kind::Real:
                    out->real(item.code, item.real);
                    break;
                case Kind::Angle:
                    f.angle(item.code, item.real);
                    break;
                case Kind::Int8:
                case Kind::Int16:
                case Kind::Int32:
                case Kind::Int64:
                    out->integer(item.code, item.integer);
                    break;
                case Kind::Bytes:
                    out->bytes(item.code, item.text);
                    break;
                case Kind::Handle:
                    out->handle(item.code, item.handle);
                    break;
            }
        }
        return;
    }
    DxfInput& in = *f.input();
    items.clear();
    // The first group tells how clones are made, all others are the record's data.
    if (in.peek() == 280) {
        cloning = static_cast<std::int16_t>(in.integer());
        in.skip();
    }
    while (!in.atEnd()) {
        Item item;
        item.code = in.peek();
        const Kind kind = kindOf(item.code);
        switch (kind) {
            case Kind::None:
                break;
            case Kind::Text:
                item.text = in.decoded();
                break;
            case Kind::Point:
                item.point.x = in.real();
                break;
            case Kind::Real:
                item.real = in.real();
                break;
            case Kind::Angle:
                f.angle(item.code, item.real);
                items.push_back(std::move(item));
                continue;  // the cursor is behind it
            case Kind::Int8:
            case Kind::Int16:
            case Kind::Int32:
            case Kind::Int64:
                item.integer = in.integer();
                break;
            case Kind::Bytes:
                appendHex(item.text, in.text());
                break;
            case Kind::Handle:
                item.handle = in.handle();
                break;
        }
        in.skip();
        if (kind == Kind::Point && in.peek() == item.code + 10) {
            item.point.y = in.real();
            in.skip();
            if (in.peek() == item.code + 20) {
                item.point.z = in.real();
                in.skip();
            }
        }
        if (kind != Kind::None) items.push_back(std::move(item));
    }
}

}  // namespace kdraw
