#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kova::io::dxf {

/// A group of a DXF file: its code and its value, which stays in the file's bytes. 16 bytes, as records may have
/// millions of them.
struct Tag {
    const char* data = "";
    std::uint32_t size = 0;
    std::int32_t code = 0;

    std::string_view text() const { return {data, size}; }
    /// The value without blanks at either end.
    std::string_view trimmed() const;
    /// The value as a number; 0 when there is none, NaN when the file holds something that is not finite.
    double real() const;
    /// The value as a whole number (reals are cut off); 0 when there is none.
    std::int64_t integer() const;
    /// The value as a hexadecimal handle; 0 when it is none.
    std::uint64_t handle() const;
};

/// Numbers as DXF files hold them; see Tag.
double parseReal(std::string_view text);
std::int64_t parseInteger(std::string_view text);
std::uint64_t parseHandle(std::string_view text);
std::string_view trimmed(std::string_view text);

/// Reads the groups of an ASCII DXF text. Comments are passed over, blank lines where a code must stand, too.
class TagReader {
public:
    explicit TagReader(std::string_view text);

    /// The next group; false at the end of the text, and after kMaxDamage groups that were none.
    bool next(Tag& tag) {
        if (!readCode(tag.code)) return false;
        return readValue(tag);
    }
    /// Where the next group begins, and going back there.
    std::size_t position() const { return static_cast<std::size_t>(at_ - begin_); }
    void seek(std::size_t position);
    std::size_t size() const { return static_cast<std::size_t>(end_ - begin_); }
    /// Number of the line at a position, from 1.
    std::size_t lineAt(std::size_t position) const;

    /// Places where no group code stood and reading went on behind them.
    std::size_t damage() const { return damage_; }
    std::size_t firstDamage() const { return firstDamage_; }  ///< position
    static constexpr std::size_t kMaxDamage = 1000;

private:
    bool line(const char*& from, const char*& to);
    bool readCode(std::int32_t& code);
    bool readValue(Tag& tag);
    bool resynchronise();

    const char* begin_;
    const char* at_;
    const char* end_;
    char newline_ = '\n';
    std::size_t damage_ = 0;
    std::size_t firstDamage_ = 0;
};

/// One record: the groups from a group 0 up to the next one. The groups of a record keep standing until the next one
/// is read.
struct Record {
    std::string_view type;     ///< value of the group 0
    std::size_t position = 0;  ///< of the group 0 in the text
    std::vector<Tag> tags;     ///< without the group 0
    bool complete = true;      ///< false: the text ended within it
    bool oversized = false;    ///< had more groups than kMaxTags; the rest is left out

    static constexpr std::size_t kMaxTags = 24'000'000;

    /// The first group of a code; null when there is none.
    const Tag* find(std::int32_t code) const;
};

/// Reads records one after the other, with the last one in reach.
class RecordReader {
public:
    explicit RecordReader(std::string_view text) : tags_(text) {}

    /// False at the end of the text.
    bool next(Record& record);
    /// Gives the present record out once more at the next call.
    void unread() {
        tags_.seek(start_);
        pending_ = false;
    }
    /// The record at a position that a record gave.
    bool at(std::size_t position, Record& record);
    TagReader& tags() { return tags_; }

private:
    TagReader tags_;
    Tag head_;              ///< the group 0 that ended the last record
    bool pending_ = false;  ///< head_ is to begin the next record
    std::size_t headPosition_ = 0;
    std::size_t start_ = 0;
};

/// True when the bytes begin with the mark of a binary DXF file.
bool isBinaryDxf(std::string_view bytes);
/// The same drawing as ASCII DXF. Reals keep their value. Error text, empty on success; what was complete before an
/// error stands in `text`.
std::string binaryToText(std::string_view bytes, std::string& text);

}  // namespace kova::io::dxf
