#include "kdraw/entities/entity_samples.hpp"

#include <algorithm>
#include <cstdio>

#include "kdraw/fields/bit_fields.hpp"
#include "kdraw/objects/table_record.hpp"
#include "kdraw/database/record_codec.hpp"

namespace kdraw::test {

namespace {

class Filler final : public Fields {
public:
    Filler(Version version, unsigned seed, const NamedRecords& records, Values values)
        : Fields(Mode::Decode, version), random_(seed), records_(records), values_(values) {}
    void whole(Width width, int, std::int64_t& v) override {
        switch (width) {
            case Width::B:
                v = pick(2);
                break;
            case Width::BB:
                v = pick(4);
                break;
            case Width::RC:
                v = pick(5);
                break;
            case Width::BS:
                v = pick(2) == 0 ? pick(4) : pick(700) - 50;
                break;
            default:
                v = pick(2) == 0 ? pick(4) : pick(100000);
        }
    }
    void bd(int, double& v) override { v = static_cast<double>(pick(4000) - 1000) / 16.0; }
    void rd(int, double& v) override { bd(0, v); }
    void dd(int, double& v, double) override { bd(0, v); }
    void angle(int, double& v) override { v = static_cast<double>(pick(6000)) / 1000.0; }
    void thickness(int, double& v) override { bd(0, v); }
    void extrusion(int, Vector3& v) override { bd3(0, v); }
    void text(int, std::string& v) override { v = "Text \xC3\xA9 \xF0\x9F\x93\x90 ^" + std::to_string(pick(1000)); }
    void bytes(int, std::string& v, std::size_t size) override {
        v.resize(size);
        for (char& c : v) c = static_cast<char>(values_.zeroBytes ? pick(256) : 1 + pick(255));
    }
    void color(int, int, Color& v) override {
        v = Color::fromIndex(1 + static_cast<int>(pick(255)));
        if (pick(2) == 0) v.raw = Color::kTrue | static_cast<std::uint32_t>(pick(0x1000000));
        if (values_.colorNames && pick(3) == 0) v.name = "Name", v.book = "Book";
    }
    void rawColor(int, Color& v) override { color(0, 0, v); }
    void longColor(int, Color& v) override { color(0, 0, v); }
    void handle(Ref, int, Handle& v) override { v = 1 + static_cast<Handle>(pick(0xFFFFF)); }
    void record(Table table, int, Handle& v, Ref) override { v = records_.handles[static_cast<std::size_t>(table)]; }
    std::size_t count(Width, int, std::size_t, unsigned) override {
        return values_.fewest + static_cast<std::size_t>(pick(4));
    }
    void subclass(std::string_view) override {}
    void constant(int, std::int64_t) override {}

private:
    std::int64_t pick(std::int64_t n) { return std::uniform_int_distribution<std::int64_t>(0, n - 1)(random_); }
    std::mt19937 random_;
    const NamedRecords& records_;
    Values values_;
};

class Listing final : public Fields {
public:
    explicit Listing(Version version) : Fields(Mode::Encode, version) {}
    std::string out;
    void add(const std::string& text) { out += text + '\n'; }
    void whole(Width, int, std::int64_t& v) override { add(std::to_string(v)); }
    void bd(int, double& v) override {
        char text[40];
        std::snprintf(text, sizeof text, "%.17g", v);
        add(text);
    }
    void rd(int, double& v) override { bd(0, v); }
    void dd(int, double& v, double) override { bd(0, v); }
    void angle(int, double& v) override { bd(0, v); }
    void thickness(int, double& v) override { bd(0, v); }
    void extrusion(int, Vector3& v) override { bd3(0, v); }
    void text(int, std::string& v) override { add(v); }
    void bytes(int, std::string& v, std::size_t) override { add(v); }
    void color(int, int, Color& v) override { add(std::to_string(v.raw) + v.name + v.book); }
    void rawColor(int, Color& v) override { color(0, 0, v); }
    void longColor(int, Color& v) override { color(0, 0, v); }
    void handle(Ref kind, int, Handle& v) override {
        add("H" + std::to_string(static_cast<int>(kind)) + ' ' + std::to_string(v));
    }
    void record(Table, int, Handle& v, Ref kind) override { handle(kind, 0, v); }
    std::size_t count(Width, int, std::size_t current, unsigned) override {
        add(std::to_string(current));
        return current;
    }
    void subclass(std::string_view) override {}
    void constant(int, std::int64_t) override {}
};

}  // namespace

NamedRecords::NamedRecords() {
    for (const char* type : {"BLOCK_RECORD", "LAYER", "STYLE", "LTYPE", "VIEW", "UCS", "VPORT", "APPID", "DIMSTYLE"}) {
        auto made = kindNamed(type)->make();
        static_cast<TableRecord&>(*made).name = std::string("Record ") + type;
        Object& added = database.add(std::move(made));
        database.nameRecord(static_cast<Table>(handles.size()), added.recordName(), added.handle);
        handles.push_back(added.handle);
    }
}

std::unique_ptr<Object> arbitrary(const ObjectKind& kind, Version version, unsigned seed, const NamedRecords& records,
                                  Values values) {
    // Some values make an object that cannot be: others are taken then.
    for (;; seed += 1000) {
        auto object = kind.make();
        Filler filler(version, seed, records, values);
        object->describe(filler);
        if (!filler.failed()) return object;
    }
}

std::string listing(Object& object, Version version) {
    Listing list(version);
    object.describe(list);
    return list.out;
}

std::unique_ptr<Object> throughBits(Object& object, const ObjectKind& kind, Version version, std::size_t& left) {
    BitEncoder encoder(version);
    object.describe(encoder);
    encoder.joinStrings();
    const std::size_t handleStart = encoder.data.size();
    encoder.data.append(encoder.handlesPart);
    encoder.data.align();
    const TextCodec codec;
    BitDecoder decoder(version, codec);
    decoder.partStreams(encoder.data.view(), 0, handleStart, encoder.data.size());
    auto again = kind.make();
    again->describe(decoder);
    left = decoder.data.left() + decoder.strings.left() + decoder.handlesPart.left() / 8;
    if (decoder.damaged()) again.reset();
    return again;
}

std::string groupsOf(Object& object, const Database& database) {
    DxfOutput out(database);
    DxfWriteFields fields(out);
    object.describe(fields);
    return out.out();
}

void readGroups(std::string_view text, DxfInput& in) {
    in.clear();
    std::size_t at = 0;
    const auto line = [&] {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view piece = text.substr(at, end - at);
        at = end + 1;
        return piece;
    };
    while (at < text.size()) {
        const int code = std::atoi(std::string(line()).c_str());
        in.add(code, line());
    }
    in.rewind();
}

std::unique_ptr<Object> fromGroups(std::string_view text, const ObjectKind& kind, const Database& database) {
    DxfInput in(database);
    readGroups(text, in);
    DxfReadFields fields(in);
    auto object = kind.make();
    object->describe(fields);
    if (fields.failed()) object.reset();
    return object;
}

}  // namespace kdraw::test
