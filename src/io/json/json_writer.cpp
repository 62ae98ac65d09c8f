#include "io/json/json_writer.hpp"

#include <cstring>
#include <nlohmann/detail/conversions/to_chars.hpp>

namespace kova::io::native {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20;
constexpr std::size_t kFirstBufferSize = 4096;
constexpr std::size_t kNumberSize = 64;

/// Bytes that stand in a JSON text as they are, without a look at their neighbours.
constexpr std::array<bool, 256> makePlainBytes() {
    std::array<bool, 256> plain{};
    for (int c = 0x20; c < 0x80; ++c) plain[static_cast<std::size_t>(c)] = c != '"' && c != '\\';
    return plain;
}
constexpr std::array<bool, 256> kPlain = makePlainBytes();

/// Length of the UTF-8 sequence at the start of the text; as a negative number the length of what is wrong there.
/// A sequence is wrong up to the byte that cannot continue it (Unicode 15, 3.9, maximal subparts).
int sequenceLength(const unsigned char* s, std::size_t size) {
    const unsigned char lead = s[0];
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    int length = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;  // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return -1;
    }
    for (int i = 1; i < length; ++i) {
        if (static_cast<std::size_t>(i) >= size || s[i] < low || s[i] > high) return -i;
        low = 0x80;
        high = 0xBF;
    }
    return length;
}

}  // namespace

JsonWriter::JsonWriter(int indent, ByteSink* sink, int level)
    : sink_(sink), indent_(indent), startLevel_(level), depth_(level) {
    const std::size_t size = sink != nullptr ? kBufferSize : kFirstBufferSize;
    buffer_ = std::make_unique_for_overwrite<char[]>(size);
    at_ = buffer_.get();
    end_ = at_ + size;
}

JsonWriter::~JsonWriter() = default;

void JsonWriter::makeRoom(std::size_t size) {
    const auto used = static_cast<std::size_t>(at_ - buffer_.get());
    const auto capacity = static_cast<std::size_t>(end_ - buffer_.get());
    if (sink_ != nullptr && size <= capacity) {
        flush();
        return;
    }
    const std::size_t wanted = std::max(used + size, capacity * 2);
    auto larger = std::make_unique_for_overwrite<char[]>(wanted);
    std::memcpy(larger.get(), buffer_.get(), used);
    buffer_ = std::move(larger);
    at_ = buffer_.get() + used;
    end_ = buffer_.get() + wanted;
}

bool JsonWriter::flush() {
    if (sink_ == nullptr) return true;
    const auto used = static_cast<std::size_t>(at_ - buffer_.get());
    // After a failure the text is produced to nowhere.
    if (good_ && used > 0) good_ = sink_->write(buffer_.get(), used);
    at_ = buffer_.get();
    return good_;
}

std::string JsonWriter::take() {
    std::string text(buffer_.get(), at_);
    at_ = buffer_.get();
    depth_ = startLevel_;
    first_ = true;
    afterKey_ = true;
    return text;
}

void JsonWriter::lineBreak() {
    if (indent_ < 0) return;
    const std::size_t spaces = static_cast<std::size_t>(indent_) * static_cast<std::size_t>(depth_);
    room(spaces + 1);
    *at_++ = '\n';
    std::memset(at_, ' ', spaces);
    at_ += spaces;
}

void JsonWriter::startValue() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_) {
        room(1);
        *at_++ = ',';
    }
    first_ = false;
    lineBreak();
}

void JsonWriter::begin(char bracket) {
    startValue();
    room(1);
    *at_++ = bracket;
    ++depth_;
    first_ = true;
}

void JsonWriter::end(char bracket) {
    --depth_;
    if (!first_) lineBreak();
    room(1);
    *at_++ = bracket;
    first_ = false;
}

void JsonWriter::startMember(std::size_t keySize) {
    const std::size_t spaces = indent_ > 0 ? static_cast<std::size_t>(indent_) * static_cast<std::size_t>(depth_) : 0;
    // Comma, line break, indent, key with quotes and each byte escaped, colon, space.
    room(spaces + keySize * 6 + 8);
    if (!first_) *at_++ = ',';
    if (indent_ >= 0) {
        *at_++ = '\n';
        std::memset(at_, ' ', spaces);
        at_ += spaces;
    }
    first_ = false;
    afterKey_ = true;
}

void JsonWriter::key(std::string_view key) {
    startMember(key.size());
    quoted(key);
    *at_++ = ':';
    if (indent_ >= 0) *at_++ = ' ';
}

void JsonWriter::key(std::string_view key, char axis) {
    startMember(key.size() + 1);
    quoted(key);
    at_[-1] = axis;
    *at_++ = '"';
    *at_++ = ':';
    if (indent_ >= 0) *at_++ = ' ';
}

void JsonWriter::number(double v) {
    startValue();
    if (!std::isfinite(v)) {
        v = 0.0;
        ++replacedNumbers_;
    }
    room(kNumberSize);
    at_ = nlohmann::detail::to_chars(at_, at_ + kNumberSize, v);
}

void JsonWriter::integer(std::int64_t v) {
    startValue();
    room(kNumberSize);
    at_ = std::to_chars(at_, at_ + kNumberSize, v).ptr;
}

void JsonWriter::unsignedInteger(std::uint64_t v) {
    startValue();
    room(kNumberSize);
    at_ = std::to_chars(at_, at_ + kNumberSize, v).ptr;
}

void JsonWriter::boolean(bool v) {
    startValue();
    room(5);
    const std::string_view word = v ? "true" : "false";
    std::memcpy(at_, word.data(), word.size());
    at_ += word.size();
}

void JsonWriter::text(std::string_view v) {
    startValue();
    quoted(v);
}

void JsonWriter::quoted(std::string_view text) {
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    room(std::min(text.size(), kPiece) * 6 + 8);
    *at_++ = '"';
    const auto* s = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const last = s + text.size();
    const auto* pieceEnd = s + std::min(text.size(), kPiece);
    while (s != last) {
        if (s >= pieceEnd) {
            const auto rest = std::min(static_cast<std::size_t>(last - s), kPiece);
            room(rest * 6 + 8);
            pieceEnd = s + rest;
        }
        const unsigned char c = *s;
        if (kPlain[c]) {
            *at_++ = static_cast<char>(c);
            ++s;
        } else if (c >= 0x80) {
            const int length = sequenceLength(s, static_cast<std::size_t>(last - s));
            if (length > 0) {
                std::memcpy(at_, s, static_cast<std::size_t>(length));
                at_ += length;
                s += length;
            } else {
                std::memcpy(at_, "\xEF\xBF\xBD", 3);
                at_ += 3;
                s -= length;
            }
        } else {
            static constexpr char kHex[] = "0123456789abcdef";
            char letter = 0;
            switch (c) {
                case '\b':
                    letter = 'b';
                    break;
                case '\t':
                    letter = 't';
                    break;
                case '\n':
                    letter = 'n';
                    break;
                case '\f':
                    letter = 'f';
                    break;
                case '\r':
                    letter = 'r';
                    break;
                case '"':
                case '\\':
                    letter = static_cast<char>(c);
                    break;
                default:
                    break;
            }
            *at_++ = '\\';
            if (letter != 0) {
                *at_++ = letter;
            } else {
                std::memcpy(at_, "u00", 3);
                at_[3] = kHex[c >> 4];
                at_[4] = kHex[c & 15];
                at_ += 5;
            }
            ++s;
        }
    }
    *at_++ = '"';
}

}  // namespace kova::io::native
