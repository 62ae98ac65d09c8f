#pragma once

#include <array>
#include <charconv>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "engine/model/describe.hpp"

namespace kova::test {

/// Gives every field that it is shown a value of its own, different from the field's default and from all others.
/// What a describe function names is covered by itself, new fields included.
class FillVisitor final : public engine::FieldVisitor {
public:
    explicit FillVisitor(int start = 1) : n_(start) {}
    bool reading() const override { return true; }

protected:
    void onNumber(const engine::Field& f, double& v) override { v = nextNumber(f.fallback); }
    void onInteger(const engine::Field& f, std::int64_t& v) override {
        const auto fallback = static_cast<std::int64_t>(f.fallback);
        ++v;
        if (f.optional && v == fallback) ++v;
    }
    void onBoolean(const engine::Field& f, bool& v) override { v = f.optional ? f.fallback == 0.0 : !v; }
    void onText(const engine::Field& f, std::string& v) override { v = nextText(f.key); }
    void onName(const engine::Field& f, engine::Name& v) override { v = engine::Name(nextText(f.key)); }
    void onHandle(const engine::Field&, std::uint64_t& v) override {
        v = 0xF000000000ULL + static_cast<unsigned>(n_++);
    }
    void onColor(const engine::Field&, engine::Color& v) override { v = nextColor(); }
    void onPointObject(const engine::Field&, math::Vector2& v) override { v = nextPoint(); }
    void onPointObject3(const engine::Field&, math::Vector3& v) override { v = nextPoint3(); }
    void onPoints(const engine::Field&, std::vector<math::Vector2>& v) override {
        v = list([&] { return nextPoint(); });
    }
    void onPoints3(const engine::Field&, std::vector<math::Vector3>& v) override {
        v = list([&] { return nextPoint3(); });
    }
    void onNumbers(const engine::Field&, std::vector<double>& v) override {
        v = list([&] { return nextNumber(0.0); });
    }
    void onIntegers(const engine::Field&, std::vector<std::int32_t>& v) override {
        v = list([&] { return static_cast<std::int32_t>(n_++ % 3); });
    }
    void onBooleans(const engine::Field&, std::vector<bool>& v) override { v = {true, false, true}; }
    void onHandles(const engine::Field&, std::vector<std::uint64_t>& v) override {
        v = list([&] { return ~std::uint64_t{0} - static_cast<unsigned>(n_++); });
    }
    void onTexts(const engine::Field& f, std::vector<std::string>& v) override {
        v = list([&] { return nextText(f.key); });
    }
    void onNames(const engine::Field& f, std::vector<engine::Name>& v) override {
        v = list([&] { return engine::Name(nextText(f.key)); });
    }
    void onIntegerLists(const engine::Field&, std::vector<std::vector<std::int32_t>>& v) override {
        v = {{1, 2, 3}, {0, 1, 2, 3}, {2, 3, 1}};
    }
    void onTextLists(const engine::Field& f, std::vector<std::vector<std::string>>& v) override {
        v = list([&] { return list([&] { return nextText(f.key); }); });
    }
    void onNumberMap(const engine::Field&, std::map<std::string, double>& v) override {
        v = {{"DIMTXT", nextNumber(0.0)}, {"DIMASZ", nextNumber(0.0)}};
    }
    void onTextMap(const engine::Field& f, std::map<std::string, std::string>& v) override {
        v = {{"DIMBLK", nextText(f.key)}, {"DIMTXSTY", nextText(f.key)}};
    }
    bool beginObject(const engine::Field&, bool) override { return true; }
    void endObject() override {}
    bool beginList(const engine::Field&, std::size_t& count) override {
        // Lists that hold themselves (dictionaries) end somewhere.
        if (depth_ >= 3) return false;
        ++depth_;
        count = 3;
        return true;
    }
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override { --depth_; }

private:
    double nextNumber(double fallback) { return fallback + 0.5 + 1.0 / (n_++ + 2); }
    math::Vector2 nextPoint() { return {nextNumber(n_), nextNumber(-n_)}; }
    math::Vector3 nextPoint3() { return {nextNumber(n_), nextNumber(-n_), nextNumber(2.0 * n_)}; }
    engine::Color nextColor() {
        const auto v = static_cast<std::uint8_t>(n_++ % 200);
        return v % 2 == 0 ? engine::Color::index(static_cast<std::uint8_t>(v + 1))
                          : engine::Color::rgb(v, static_cast<std::uint8_t>(v + 7), 3);
    }
    std::string nextText(std::string_view key) {
        // Words that a record turns into an enumeration.
        if (key == "kind") return "Body";
        if (key == "type") return "group";
        return "\xC3\x84 \"" + std::string(key) + "\"\\\n" + std::to_string(n_++);
    }
    template <class Make>
    auto list(Make make) -> std::vector<decltype(make())> {
        std::vector<decltype(make())> items;
        for (int i = 0; i < 3; ++i) items.push_back(make());
        return items;
    }

    int n_;
    int depth_ = 0;
};

/// Writes down every field with its value, whether or not a file would leave it out.
class CollectVisitor final : public engine::FieldVisitor {
public:
    std::vector<std::string> lines;

protected:
    void onNumber(const engine::Field& f, double& v) override { add(f, number(v)); }
    void onInteger(const engine::Field& f, std::int64_t& v) override { add(f, std::to_string(v)); }
    void onBoolean(const engine::Field& f, bool& v) override { add(f, v ? "true" : "false"); }
    void onText(const engine::Field& f, std::string& v) override { add(f, v); }
    void onName(const engine::Field& f, engine::Name& v) override { add(f, v.str()); }
    void onHandle(const engine::Field& f, std::uint64_t& v) override { add(f, std::to_string(v)); }
    void onColor(const engine::Field& f, engine::Color& v) override { add(f, engine::colorText(v)); }
    void onPointObject(const engine::Field& f, math::Vector2& v) override { add(f, number(v.x) + "," + number(v.y)); }
    void onPointObject3(const engine::Field& f, math::Vector3& v) override {
        add(f, number(v.x) + "," + number(v.y) + "," + number(v.z));
    }
    void onPoints(const engine::Field& f, std::vector<math::Vector2>& v) override {
        for (auto& p : v) onPointObject(f, p);
    }
    void onPoints3(const engine::Field& f, std::vector<math::Vector3>& v) override {
        for (auto& p : v) onPointObject3(f, p);
    }
    void onNumbers(const engine::Field& f, std::vector<double>& v) override {
        for (double d : v) add(f, number(d));
    }
    void onIntegers(const engine::Field& f, std::vector<std::int32_t>& v) override {
        for (const std::int32_t i : v) add(f, std::to_string(i));
    }
    void onBooleans(const engine::Field& f, std::vector<bool>& v) override {
        for (const bool b : v) add(f, b ? "true" : "false");
    }
    void onHandles(const engine::Field& f, std::vector<std::uint64_t>& v) override {
        for (const std::uint64_t h : v) add(f, std::to_string(h));
    }
    void onTexts(const engine::Field& f, std::vector<std::string>& v) override {
        for (const std::string& s : v) add(f, s);
    }
    void onNames(const engine::Field& f, std::vector<engine::Name>& v) override {
        for (const engine::Name& n : v) add(f, n.str());
    }
    void onIntegerLists(const engine::Field& f, std::vector<std::vector<std::int32_t>>& v) override {
        for (auto& row : v) onIntegers(f, row);
    }
    void onTextLists(const engine::Field& f, std::vector<std::vector<std::string>>& v) override {
        for (auto& row : v) onTexts(f, row);
    }
    void onNumberMap(const engine::Field& f, std::map<std::string, double>& v) override {
        for (auto& [name, value] : v) add(f, name + "=" + number(value));
    }
    void onTextMap(const engine::Field& f, std::map<std::string, std::string>& v) override {
        for (auto& [name, value] : v) add(f, name + "=" + value);
    }
    bool beginObject(const engine::Field& f, bool present) override {
        add(f, present ? "{" : "none");
        return present;
    }
    void endObject() override {}
    bool beginList(const engine::Field& f, std::size_t& count) override {
        add(f, "[" + std::to_string(count));
        return true;
    }
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override {}

private:
    static std::string number(double v) {
        char text[64];
        return {text, std::to_chars(text, text + sizeof text, v).ptr};
    }
    void add(const engine::Field& f, const std::string& value) { lines.push_back(std::string(f.key) + ": " + value); }
};

/// All fields of a record, as lines.
template <class Record>
std::vector<std::string> fieldsOf(const Record& record) {
    CollectVisitor collect;
    const_cast<Record&>(record).describe(collect);
    return collect.lines;
}

}  // namespace kova::test
