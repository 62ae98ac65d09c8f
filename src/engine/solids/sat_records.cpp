#include "engine/solids/sat_records.hpp"

#include <cstring>

#include "engine/solids/sat_edges.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

namespace {

using Kind = ModelerToken::Kind;

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::size_t kTransformNumbers = 13;  // nine of the matrix, three of the shift, the scale
constexpr int kHistoryRelease = 500;           // records of release 4 have no history number

ModelerRecordKind recordKind(std::string_view name) {
    if (name == "body") return ModelerRecordKind::Body;
    if (name == "transform") return ModelerRecordKind::Transform;
    if (name == "vertex") return ModelerRecordKind::Vertex;
    if (name == "point") return ModelerRecordKind::Point;
    if (name == "edge" || name == "tedge-edge") return ModelerRecordKind::Edge;
    if (name == "straight-curve") return ModelerRecordKind::Straight;
    if (name == "ellipse-curve") return ModelerRecordKind::Ellipse;
    if (name == "intcurve-curve") return ModelerRecordKind::Spline;
    return ModelerRecordKind::Other;
}

bool parseNumber(std::string_view word, double& value) {
    const auto read = strings::parseReal(word);
    if (read) value = *read;
    return read.has_value();
}

bool isEndMark(std::string_view name) { return name.starts_with("End-of-") && name.ends_with("-data"); }

/// Text ---------------------------------------------------------------------------------------------------------

class TextReader {
public:
    explicit TextReader(std::string_view data) : data_(data) {}

    std::optional<ModelerData> read() {
        std::size_t at = skipHeader();
        out_.endOffset = data_.size();
        bool named = false;
        ModelerRecord record;
        while (out_.records.size() < kMaxModelerRecords && out_.tokens.size() < kMaxModelerTokens) {
            const std::size_t begin = data_.find_first_not_of(kBlanks, at);
            if (begin == std::string_view::npos) break;
            const std::size_t end = std::min(data_.find_first_of(kBlanks, begin), data_.size());
            const std::string_view word = data_.substr(begin, end - begin);
            at = end;
            if (word == "#") {
                if (!named) continue;
                record.tokenCount = out_.tokens.size() - record.firstToken;
                out_.records.push_back(record);
                out_.endOffset = end;
                named = false;
            } else if (!named) {
                if (isEndMark(word)) {
                    out_.endOffset = begin;
                    break;
                }
                double own = 0.0;
                if (word.front() == '-' && parseNumber(word, own)) {
                    out_.numbered = true;
                    continue;
                }
                named = true;
                record = {recordKind(word), out_.tokens.size(), 0};
            } else if (word.front() == '@') {
                at = skipString(word, end);
            } else if (record.kind != ModelerRecordKind::Other) {
                out_.tokens.push_back(token(word, begin));
            }
        }
        if (out_.records.empty()) return std::nullopt;
        return std::move(out_);
    }

private:
    /// The header is one line in the oldest releases, three in later ones.
    std::size_t skipHeader() {
        std::size_t at = 0;
        for (int field = 0; field < 2; ++field) {
            at = data_.find_first_not_of(kBlanks, at);
            if (at == std::string_view::npos) return data_.size();
            const std::size_t end = std::min(data_.find_first_of(kBlanks, at), data_.size());
            double value = 0.0;
            if (!parseNumber(data_.substr(at, end - at), value)) return 0;
            if (field == 0) {
                out_.release = static_cast<int>(std::clamp(value, 0.0, 1e6));
            } else {
                out_.countOffset = at;
                out_.countLength = end - at;
                out_.count = value;
            }
            at = end;
        }
        std::size_t begin = 0;
        for (int line = 0; line < (out_.release >= 200 ? 3 : 1); ++line) {
            const std::size_t end = data_.find('\n', begin);
            if (end == std::string_view::npos) return firstRecord(at);
            begin = end + 1;
        }
        return begin;
    }
    /// Where the records begin when the lines have been joined.
    std::size_t firstRecord(std::size_t from) const {
        std::size_t best = data_.size();
        for (const std::string_view name : {"body $", "asmheader $"})
            if (const std::size_t at = data_.find(name, from); at != std::string_view::npos) best = std::min(best, at);
        return best;
    }
    /// "@7 unknown": a text of as many characters, which may hold blanks.
    std::size_t skipString(std::string_view word, std::size_t end) const {
        std::size_t length = 0;
        const auto [stop, error] = std::from_chars(word.data() + 1, word.data() + word.size(), length);
        if (error != std::errc{} || stop != word.data() + word.size() || length > data_.size() - end) return end;
        return std::min(end + 1 + length, data_.size());
    }
    static ModelerToken token(std::string_view word, std::size_t offset) {
        ModelerToken t;
        t.offset = offset;
        t.length = word.size();
        t.word = word;
        if (word.front() == '$' && parseNumber(word.substr(1), t.number))
            t.kind = Kind::Pointer;
        else if (parseNumber(word, t.number))
            t.kind = Kind::Number;
        else if (word == "forward" || word == "reversed") {
            t.kind = Kind::Flag;
            t.number = word == "reversed" ? 1.0 : 0.0;
        }
        return t;
    }

    std::string_view data_;
    ModelerData out_;
};

/// Binary -------------------------------------------------------------------------------------------------------

class BinaryReader {
public:
    explicit BinaryReader(std::string_view data) : data_(data) {}

    std::optional<ModelerData> read() {
        out_.binary = true;
        out_.integerSize = data_.starts_with("ASM BinaryFile8") ? 8 : 4;
        at_ = std::min<std::size_t>(15, data_.size());
        double release = 0.0;
        if (!integer(release)) return std::nullopt;
        out_.release = static_cast<int>(std::clamp(release, 0.0, 1e6));
        out_.countOffset = at_;
        out_.countLength = out_.integerSize;
        if (!integer(out_.count)) return std::nullopt;
        if (!has(2 * out_.integerSize)) return std::nullopt;
        at_ += 2 * out_.integerSize;
        // Texts and numbers of the header have tags too, but no record about them: three of each.
        for (int i = 0; i < 6; ++i)
            if (!skipValue()) return std::nullopt;
        out_.endOffset = at_;
        while (out_.records.size() < kMaxModelerRecords && out_.tokens.size() < kMaxModelerTokens && readRecord()) {
        }
        if (out_.records.empty()) return std::nullopt;
        return std::move(out_);
    }

private:
    enum Tag : unsigned char {
        kChar = 2,
        kShort = 3,
        kLong = 4,
        kFloat = 5,
        kDouble = 6,
        kText8 = 7,
        kText16 = 8,
        kText32 = 9,
        kTrue = 10,
        kFalse = 11,
        kPointer = 12,
        kIdentifier = 13,
        kSubIdentifier = 14,
        kOpen = 15,
        kClose = 16,
        kEnd = 17,
        kLiteral = 18,
        kPosition = 19,
        kVector = 20,
        kEnum = 21,
        kPair = 22
    };

    bool has(std::size_t count) const { return data_.size() - at_ >= count; }
    template <class T>
    T raw(std::size_t offset) const {
        T value;
        std::memcpy(&value, data_.data() + offset, sizeof value);
        return value;
    }
    bool integer(double& value) {
        if (!has(out_.integerSize)) return false;
        value = out_.integerSize == 8 ? static_cast<double>(raw<std::int64_t>(at_))
                                      : static_cast<double>(raw<std::int32_t>(at_));
        at_ += out_.integerSize;
        return true;
    }
    bool text(std::size_t lengthSize, std::string_view& value) {
        if (!has(lengthSize)) return false;
        std::size_t length = 0;
        if (lengthSize == 1) length = raw<std::uint8_t>(at_);
        if (lengthSize == 2) length = raw<std::uint16_t>(at_);
        if (lengthSize == 4) length = raw<std::uint32_t>(at_);
        at_ += lengthSize;
        if (!has(length)) return false;
        value = data_.substr(at_, length);
        at_ += length;
        return true;
    }
    bool skipValue() {
        ModelerRecord none;
        bool ended = false;
        std::string_view word;
        return value(none, ended, word);
    }

    void keep(const ModelerRecord& record, Kind kind, double number, std::size_t offset, std::size_t length) {
        if (record.kind != ModelerRecordKind::Other) out_.tokens.push_back({kind, number, {}, offset, length});
    }
    /// Reads one tagged value into the record. False at the end of the data or at an unknown tag.
    bool value(const ModelerRecord& record, bool& ended, std::string_view& word) {
        if (!has(1)) return false;
        const auto tag = static_cast<unsigned char>(data_[at_++]);
        const std::size_t offset = at_;
        double number = 0.0;
        switch (tag) {
            case kChar:
                if (!has(1)) return false;
                at_ += 1;
                return true;
            case kShort:
                if (!has(2)) return false;
                keep(record, Kind::Number, raw<std::int16_t>(at_), offset, 2);
                at_ += 2;
                return true;
            case kLong:
            case kPointer:
            case kEnum:
                if (!integer(number)) return false;
                keep(record,
                     tag == kLong   ? Kind::Number
                     : tag == kEnum ? Kind::Enum
                                    : Kind::Pointer,
                     number, offset, out_.integerSize);
                return true;
            case kFloat:
                if (!has(4)) return false;
                keep(record, Kind::Number, static_cast<double>(raw<float>(at_)), offset, 4);
                at_ += 4;
                return true;
            case kDouble:
                return doubles(record, 1);
            case kPair:
                return doubles(record, 2);
            case kPosition:
            case kVector:
                return doubles(record, 3);
            case kTrue:
            case kFalse:
                keep(record, Kind::Flag, tag == kTrue ? 1.0 : 0.0, offset - 1, 1);
                return true;
            case kText8:
            case kIdentifier:
            case kSubIdentifier:
                return textToken(record, 1, word);
            case kText16:
                return textToken(record, 2, word);
            case kText32:
            case kLiteral:
                return textToken(record, 4, word);
            case kOpen:
            case kClose:
                return true;
            case kEnd:
                ended = true;
                return true;
            default:
                return false;
        }
    }
    bool textToken(const ModelerRecord& record, std::size_t lengthSize, std::string_view& word) {
        const std::size_t offset = at_;
        if (!text(lengthSize, word)) return false;
        if (record.kind != ModelerRecordKind::Other)
            out_.tokens.push_back({Kind::Word, 0.0, word, offset, at_ - offset});
        return true;
    }
    bool doubles(const ModelerRecord& record, std::size_t count) {
        if (!has(8 * count)) return false;
        for (std::size_t i = 0; i < count; ++i) {
            keep(record, Kind::Number, raw<double>(at_), at_, 8);
            at_ += 8;
        }
        return true;
    }

    bool readRecord() {
        // The name: sub-identifiers, then the identifier itself, joined by hyphens.
        std::string name;
        const std::size_t begin = at_;
        while (has(1)) {
            const auto tag = static_cast<unsigned char>(data_[at_]);
            if (tag != kIdentifier && tag != kSubIdentifier) return false;
            ++at_;
            std::string_view part;
            if (!text(1, part) || name.size() > 256) return false;
            if (!name.empty()) name += '-';
            name += part;
            if (tag == kIdentifier) break;
        }
        if (name.empty() || isEndMark(name)) {
            out_.endOffset = begin;
            return false;
        }
        ModelerRecord record{recordKind(name), out_.tokens.size(), 0};
        for (bool ended = false; !ended;) {
            std::string_view word;
            if (out_.tokens.size() >= kMaxModelerTokens || !value(record, ended, word)) return false;
        }
        record.tokenCount = out_.tokens.size() - record.firstToken;
        out_.records.push_back(record);
        out_.endOffset = at_;
        return true;
    }

    std::string_view data_;
    std::size_t at_ = 0;
    ModelerData out_;
};

}  // namespace

bool isModelerBinary(std::string_view data) {
    return data.starts_with("ACIS BinaryFile") || data.starts_with("ASM BinaryFile");
}

std::optional<ModelerData> readModelerData(std::string_view data) {
    return isModelerBinary(data) ? BinaryReader(data).read() : TextReader(data).read();
}

std::size_t ownBegin(const ModelerData& data, const ModelerRecord& record) {
    const std::span<const ModelerToken> tokens = data.tokensOf(record);
    std::size_t begin = 0;
    for (std::size_t i = 0; i < tokens.size(); ++i)
        if (tokens[i].kind == Kind::Pointer) begin = i + 1;
    // A transform's history number is the last of its head. Its own numbers are thirteen: one more in front of them
    // shows that it is there.
    if (record.kind != ModelerRecordKind::Transform || data.numericFlags()) return begin;
    std::size_t numbers = 0;
    while (begin + numbers < tokens.size() && tokens[begin + numbers].kind == Kind::Number) ++numbers;
    return numbers > kTransformNumbers && data.release >= kHistoryRelease ? begin + 1 : begin;
}

std::vector<double> ownNumbers(const ModelerData& data, const ModelerRecord& record) {
    std::vector<double> numbers;
    for (const ModelerToken& t : data.tokensOf(record).subspan(ownBegin(data, record)))
        if (t.kind == Kind::Number) numbers.push_back(t.number);
    return numbers;
}

}  // namespace kova::engine
