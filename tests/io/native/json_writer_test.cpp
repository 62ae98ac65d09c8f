#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>

#include "io/json/json_writer.hpp"

namespace kova::io::native {
namespace {

using Json = nlohmann::ordered_json;

/// Writes any document through the writer.
void write(JsonWriter& out, const Json& value) {
    switch (value.type()) {
        case Json::value_t::boolean:
            out.boolean(value.get<bool>());
            break;
        case Json::value_t::number_integer:
            out.integer(value.get<std::int64_t>());
            break;
        case Json::value_t::number_unsigned:
            out.unsignedInteger(value.get<std::uint64_t>());
            break;
        case Json::value_t::number_float:
            out.number(value.get<double>());
            break;
        case Json::value_t::string:
            out.text(value.get_ref<const std::string&>());
            break;
        case Json::value_t::array:
            out.beginArray();
            for (const Json& item : value) write(out, item);
            out.endArray();
            break;
        default:
            out.beginObject();
            for (const auto& [key, item] : value.items()) {
                out.key(key);
                write(out, item);
            }
            out.endObject();
    }
}

std::string written(const Json& value, int indent) {
    JsonWriter out(indent);
    write(out, value);
    return out.take();
}

std::string dumped(const Json& value, int indent) {
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

class RandomDocument {
public:
    explicit RandomDocument(unsigned seed) : random_(seed) {}

    Json make(int depth) {
        const unsigned kind = random_() % (depth > 0 ? 8 : 5);
        if (kind == 0) return random_() % 2 == 0;
        if (kind == 1) return static_cast<std::int64_t>(random64());
        if (kind == 2) return random64();
        if (kind == 3) return number();
        if (kind == 4) return text();
        Json value = kind == 5 ? Json::array() : Json::object();
        for (unsigned i = random_() % 5; i > 0; --i) {
            if (kind == 5)
                value.push_back(make(depth - 1));
            else
                value[text()] = make(depth - 1);
        }
        return value;
    }

private:
    std::uint64_t random64() {
        const std::uint64_t v = (static_cast<std::uint64_t>(random_()) << 32) | random_();
        return v >> (random_() % 64);
    }
    double number() {
        static constexpr double kTelling[] = {
            0.0, -0.0, 10.0, 0.1, 1e15, 1e16, -1e21, 1e-5, 1e-4, 1e300, 5e-324, 1.0 / 3.0, 123456789012345680.0};
        if (random_() % 2 == 0) return kTelling[random_() % std::size(kTelling)];
        const std::uint64_t bits = random64() * 0x9E3779B97F4A7C15ULL;
        const double v = std::bit_cast<double>(bits);
        return std::isfinite(v) ? v : 2.5;
    }
    /// Plain text, things to escape, good and broken UTF-8.
    std::string text() {
        static const std::string kParts[] = {"layer",
                                             "\"",
                                             "\\",
                                             "\n\t\r\b\f",
                                             std::string("\0\x01\x1F\x7F", 4),
                                             "\xC3\xA4",
                                             "\xE2\x82\xAC",
                                             "\xF0\x9F\x98\x80",
                                             "\xC3",
                                             "\xE2\x82",
                                             "\xF0\x9F\x98",
                                             "\x80",
                                             "\xFF",
                                             "\xC0\xAF",
                                             "\xE0\x80\x80",
                                             "\xED\xA0\x80",
                                             "\xF4\x90\x80\x80",
                                             "/"};
        std::string out;
        for (unsigned i = random_() % 6; i > 0; --i) out += kParts[random_() % std::size(kParts)];
        return out;
    }

    std::mt19937 random_;
};

TEST(JsonWriter, GivesTheLibrarysBytesForRandomDocuments) {
    for (unsigned seed = 0; seed < 3000; ++seed) {
        const Json document = RandomDocument(seed).make(4);
        for (const int indent : {-1, 0, 1, 2, 4})
            ASSERT_EQ(written(document, indent), dumped(document, indent)) << seed;
    }
}

TEST(JsonWriter, StartsAtADeeperLevelAndWritesKeysOfTwoParts) {
    const Json inner = {{"centerX", 1.5}, {"list", {1, 2}}, {"none", Json::array()}};
    const Json outer = {{"entity", inner}};
    JsonWriter out(2, nullptr, 1);
    out.beginObject();
    out.key("center", 'X');
    out.number(1.5);
    out.key("list");
    out.beginArray();
    out.integer(1);
    out.integer(2);
    out.endArray();
    out.key("none");
    out.beginArray();
    out.endArray();
    out.endObject();
    EXPECT_EQ("{\n  \"entity\": " + out.take() + "\n}", dumped(outer, 2));
}

/// Remembers the pieces; refuses from a given one on.
struct PieceSink : ByteSink {
    std::string all;
    std::size_t largest = 0;
    int left = 1 << 30;
    bool write(const char* data, std::size_t size) override {
        if (left-- <= 0) return false;
        all.append(data, size);
        largest = std::max(largest, size);
        return true;
    }
};

TEST(JsonWriter, HandsLargeTextsToTheSinkInPieces) {
    const std::string line(3'000'000, 'x');
    const std::string odd = "a\"\n\xC3\xA4\xFF";
    std::string many;
    for (int i = 0; i < 300'000; ++i) many += odd;
    const Json document = {{"line", line}, {"many", many}, {"numbers", std::vector<double>(100'000, 0.25)}};
    PieceSink sink;
    JsonWriter out(2, &sink);
    write(out, document);
    EXPECT_TRUE(out.flush());
    EXPECT_EQ(sink.all, dumped(document, 2));
    EXPECT_LE(sink.largest, std::size_t{2} << 20);

    PieceSink full;
    full.left = 1;
    JsonWriter lost(2, &full);
    write(lost, document);
    EXPECT_FALSE(lost.flush());
}

TEST(JsonWriter, ReplacesWhatIsNoNumber) {
    JsonWriter out(-1);
    out.beginArray();
    out.number(std::numeric_limits<double>::infinity());
    out.number(std::nan(""));
    out.number(2.0);
    out.endArray();
    EXPECT_EQ(out.take(), "[0.0,0.0,2.0]");
    EXPECT_EQ(out.replacedNumbers(), 2U);
}

}  // namespace
}  // namespace kova::io::native
