#pragma once

#include <cstdint>
#include <cstdlib>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kova::io::native {

enum class JsonType : std::uint8_t { Null, Boolean, Integer, Unsigned, Float, Text, Array, Object };

/// Objects and arrays may be nested this deep.
inline constexpr std::size_t kMaxDepth = 512;

/// Fails as the JSON library does when a value of one type is asked for and another one is found: "type must be
/// number, but is string" and the like.
[[noreturn]] void throwTypeError(JsonType wanted, JsonType found);
/// Throws what the library says when a member is looked up in a value that is no object.
[[noreturn]] void throwNoObject(JsonType found);
/// The library's failure for a member that is asked for in a value that has none.
[[noreturn]] void throwNoMembers(JsonType found);

/// JSON values in one array of small nodes: a container's node is followed by those of its contents, so that
/// reading in the order of the file runs straight through memory. What was added last can be dropped again at no
/// cost, which is how a file's entities pass through one small tree.
class JsonTree {
public:
    using Index = std::uint32_t;
    static constexpr Index kNone = ~Index{0};

    JsonTree();
    ~JsonTree();
    JsonTree(const JsonTree&) = delete;
    JsonTree& operator=(const JsonTree&) = delete;

    // Building -------------------------------------------------------------------------------------------
    /// The key of the value that comes next.
    void key(std::string_view text) { pendingKey_ = intern(text); }
    void addNull() { add(JsonType::Null, 0, 0); }
    void addBoolean(bool v) { add(JsonType::Boolean, v ? 1 : 0, 0); }
    void addInteger(std::int64_t v) { add(JsonType::Integer, static_cast<std::uint64_t>(v), 0); }
    void addUnsigned(std::uint64_t v) { add(JsonType::Unsigned, v, 0); }
    void addFloat(double v);
    /// May take the text's memory over.
    void addText(std::string& text);
    Index open(JsonType container);
    /// Ends the innermost container. Of members with the same key the last one stays.
    Index close();
    std::size_t openContainers() const { return open_.size(); }

    /// A place to come back to with drop().
    struct Mark {
        std::size_t nodes;
        std::size_t chars;
        std::size_t longTexts;
    };
    Mark mark() const { return {count_, charCount_, longTexts_.size()}; }
    /// Forgets all values added since; none of them may be open.
    void drop(const Mark& mark);

    // Reading --------------------------------------------------------------------------------------------
    std::size_t size() const { return count_; }
    JsonType type(Index i) const { return static_cast<JsonType>(nodes_[i].keyAndType & 7U); }
    bool isNumber(Index i) const {
        const JsonType t = type(i);
        return t == JsonType::Integer || t == JsonType::Unsigned || t == JsonType::Float;
    }
    /// The key of a member. It counts as one that the reader knows.
    std::string_view keyOf(Index i) const {
        const Key& key = keys_[nodes_[i].keyAndType >> kTypeBits];
        key.known = true;
        return key.text;
    }
    /// True when a member has this key, which then counts as known.
    bool hasKey(Index i, std::string_view text) const {
        const Key& key = keys_[nodes_[i].keyAndType >> kTypeBits];
        if (key.text != text) return false;
        key.known = true;
        return true;
    }
    /// Calls `each(key, count)` for the keys that no reader asked for, with the number of their members in the text.
    template <class Each>
    void eachUnknownKey(const Each& each) const {
        for (const Key& key : keys_)
            if (!key.known && key.count > 0) each(key.text, key.count);
    }
    /// False for a member that a later one of the same key replaced.
    bool isMember(Index i) const { return (nodes_[i].keyAndType >> kTypeBits) != 0; }

    bool boolean(Index i) const { return nodes_[i].payload != 0; }
    std::int64_t integer(Index i) const { return static_cast<std::int64_t>(nodes_[i].payload); }
    std::uint64_t unsignedInteger(Index i) const { return nodes_[i].payload; }
    double real(Index i) const;
    /// Any number as a double; fails for other types.
    double number(Index i) const;
    /// Fails for other types than text.
    std::string_view text(Index i) const;
    /// The same as a string, for which a long text gives its memory away.
    void takeText(Index i, std::string& out);

    /// The first value inside a container, the value behind a value, and the end of a container's contents.
    static Index first(Index container) { return container + 1; }
    Index next(Index i) const { return i + (type(i) >= JsonType::Array ? nodes_[i].size : 1); }
    Index end(Index container) const { return container + nodes_[container].size; }
    /// Values in an array.
    std::size_t count(Index array) const { return nodes_[array].payload; }
    /// A set of key bits that tells quickly what an object does not hold.
    std::uint64_t keyMask(Index object) const { return nodes_[object].payload; }
    static std::uint64_t keyBit(std::string_view key) {
        const auto byte = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(key[i])); };
        const std::size_t n = key.size();
        const std::size_t h = n == 0 ? 0 : n * 7 + byte(0) * 3 + byte(n - 1) * 5 + byte(n / 2) * 11;
        return std::uint64_t{1} << (h & 63U);
    }
    /// A member of an object; kNone when there is none.
    Index find(Index object, std::string_view key) const;

private:
    static constexpr unsigned kTypeBits = 3;
    static constexpr std::uint32_t kLongText = ~std::uint32_t{0};

    struct Node {
        std::uint64_t payload;  ///< the value; of a text its place, of an array its count, of an object its key bits
        std::uint32_t size;     ///< length of a text; nodes of a container, its own included
        std::uint32_t keyAndType;
    };
    struct Key {
        std::string_view text;
        std::uint64_t bit = 0;
        std::uint64_t seenIn = 0;  ///< serial of the object that last closed with this key
        Index seenAt = 0;
        std::uint32_t follower = 0;  ///< the key that came behind this one last time
        std::size_t count = 0;       ///< members with it
        mutable bool known = false;  ///< a reader asked for it
    };
    struct Container {
        Index node;
        std::uint64_t items;
    };

    void add(JsonType type, std::uint64_t payload, std::uint32_t size);
    void grow();
    std::uint32_t intern(std::string_view text);

    Node* nodes_ = nullptr;
    std::size_t count_ = 0;
    std::size_t capacity_ = 0;
    char* chars_ = nullptr;
    std::size_t charCount_ = 0;
    std::size_t charCapacity_ = 0;
    std::deque<std::string> longTexts_;
    std::vector<Container> open_;
    std::uint32_t pendingKey_ = 0;
    std::uint32_t lastKey_ = 0;
    std::uint64_t serial_ = 0;
    std::vector<Key> keys_;
    std::deque<std::string> keyTexts_;
    std::unordered_map<std::string_view, std::uint32_t> keyIndex_;
};

}  // namespace kova::io::native
