#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace kova::engine {

inline constexpr std::size_t kMaxModelerTokens = 8'000'000;

/// The kinds of modeller records that matter for edges and placement.
enum class ModelerRecordKind : std::uint8_t { Other, Body, Transform, Vertex, Point, Edge, Straight, Ellipse, Spline };

/// One datum of a record. Points and vectors of binary data come as three numbers.
struct ModelerToken {
    enum class Kind : std::uint8_t { Number, Enum, Pointer, Word, Flag };
    Kind kind = Kind::Word;
    double number = 0.0;     ///< Number, Enum; Pointer: the record's number, -1 for none; Flag: 1 when set (reversed)
    std::string_view word;   ///< Word
    std::size_t offset = 0;  ///< where it stands in the data: its first character, or its value behind the tag
    std::size_t length = 0;
};

struct ModelerRecord {
    ModelerRecordKind kind = ModelerRecordKind::Other;
    std::size_t firstToken = 0;  ///< tokens are kept for the kinds that matter only
    std::size_t tokenCount = 0;
};

/// A solid-modeller body taken apart: text (SAT) or tagged binary (SAB), records in the order of their numbers.
struct ModelerData {
    bool binary = false;
    std::size_t integerSize = 4;  ///< of binary integers and pointers
    int release = 400;            ///< 100 times the modeller's release; 700 and up have longer record heads
    bool numbered = false;        ///< text records begin with their own number
    std::size_t countOffset = 0;  ///< where the header tells the number of records
    std::size_t countLength = 0;
    double count = 0.0;
    std::size_t endOffset = 0;  ///< behind the last record
    std::vector<ModelerRecord> records;
    std::vector<ModelerToken> tokens;

    /// The oldest text has 0 and 1 where later releases have words such as "forward" and "reversed".
    bool numericFlags() const { return !binary && release < 200; }
    std::span<const ModelerToken> tokensOf(const ModelerRecord& r) const {
        return std::span(tokens).subspan(r.firstToken, r.tokenCount);
    }
    /// The record a pointer token leads to; null for other tokens and null pointers.
    const ModelerRecord* target(const ModelerToken& t) const {
        if (t.kind != ModelerToken::Kind::Pointer || !(t.number >= 0.0)) return nullptr;
        return t.number < static_cast<double>(records.size()) ? &records[static_cast<std::size_t>(t.number)] : nullptr;
    }
};

bool isModelerBinary(std::string_view data);
/// Nothing when the data have no records. Tokens point into `data`.
std::optional<ModelerData> readModelerData(std::string_view data);
/// Where a record's own data begin among its tokens: behind the head that grew over the releases. Release 4 has a
/// pointer, release 7 and later the number of a history entry behind it and, in most records but not in transforms,
/// a second pointer.
std::size_t ownBegin(const ModelerData& data, const ModelerRecord& record);
/// The numbers of a record that are its own.
std::vector<double> ownNumbers(const ModelerData& data, const ModelerRecord& record);

}  // namespace kova::engine
