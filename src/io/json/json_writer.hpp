#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "io/byte_sink.hpp"

namespace kova::io::native {

/// Writes a JSON text as it goes: the bytes are those of nlohmann's dump(indent, ' ', false) for the same document
/// with its members in the order of writing, but no document is ever built.
///
/// The text gathers in a buffer that goes to the sink in large pieces; without a sink it stays, for take().
/// Texts that are not UTF-8 get U+FFFD for each wrong sequence. JSON knows no infinity and no NaN: such a number is
/// written as 0.0 and counted in replacedNumbers().
///
/// The caller keeps the grammar: a key before each value of an object, none in arrays, every begin with its end.
class JsonWriter {
public:
    /// Indent of -1 is the compact form. `level` is the nesting depth at which the text will stand.
    explicit JsonWriter(int indent, ByteSink* sink = nullptr, int level = 0);
    ~JsonWriter();
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    void key(std::string_view key);
    /// A key of two parts, such as "center" and "X".
    void key(std::string_view key, char axis);

    void number(double v);
    void integer(std::int64_t v);
    void unsignedInteger(std::uint64_t v);
    void boolean(bool v);
    void text(std::string_view v);

    /// Open objects and arrays.
    int depth() const { return depth_ - startLevel_; }
    /// How many numbers were infinite or not a number.
    std::size_t replacedNumbers() const { return replacedNumbers_; }

    /// Hands the rest to the sink; false when it ever refused.
    bool flush();
    /// The text so far, without a sink; the writer starts anew.
    std::string take();

private:
    void begin(char bracket);
    void end(char bracket);
    /// Comma and line break in front of an array's item; nothing behind a key.
    void startValue();
    void startMember(std::size_t keySize);
    void lineBreak();
    void quoted(std::string_view text);
    /// Makes sure that `size` bytes fit behind at_.
    void room(std::size_t size) {
        if (static_cast<std::size_t>(end_ - at_) < size) makeRoom(size);
    }
    void makeRoom(std::size_t size);

    ByteSink* sink_;
    std::unique_ptr<char[]> buffer_;
    char* at_ = nullptr;
    char* end_ = nullptr;
    int indent_;
    int startLevel_;
    int depth_;
    bool first_ = true;  ///< nothing stands yet in the innermost object or array
    bool afterKey_ = true;
    bool good_ = true;
    std::size_t replacedNumbers_ = 0;
};

}  // namespace kova::io::native
