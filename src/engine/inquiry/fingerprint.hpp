#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include "engine/model/describe.hpp"
#include "engine/model/entity.hpp"

namespace kova::cmd {

/// All that an entity's own fields hold: numbers for comparing within a tolerance, the rest as one text.
class Fingerprint final : public engine::FieldVisitor {
public:
    std::vector<double> numbers;
    std::string text;

protected:
    void onNumber(const engine::Field&, double& v) override { numbers.push_back(v); }
    void onInteger(const engine::Field&, std::int64_t& v) override { add(std::to_string(v)); }
    void onBoolean(const engine::Field&, bool& v) override { add(v ? "1" : "0"); }
    void onText(const engine::Field&, std::string& v) override { add(v); }
    void onName(const engine::Field&, engine::Name& v) override { add(v.folded()); }
    void onHandle(const engine::Field&, std::uint64_t& v) override { add(std::to_string(v)); }
    void onColor(const engine::Field&, engine::Color& v) override { add(engine::colorText(v)); }
    void onPointObject(const engine::Field&, math::Vector2& v) override { add(v); }
    void onPointObject3(const engine::Field&, math::Vector3& v) override { add(v); }
    void onPoints(const engine::Field&, std::vector<math::Vector2>& v) override { list(v); }
    void onPoints3(const engine::Field&, std::vector<math::Vector3>& v) override { list(v); }
    void onNumbers(const engine::Field&, std::vector<double>& v) override {
        add(std::to_string(v.size()));
        numbers.insert(numbers.end(), v.begin(), v.end());
    }
    void onIntegers(const engine::Field&, std::vector<std::int32_t>& v) override { list(v); }
    void onBooleans(const engine::Field&, std::vector<bool>& v) override {
        for (const bool b : v) text += b ? '1' : '0';
        add(std::string_view{});
    }
    void onHandles(const engine::Field&, std::vector<std::uint64_t>& v) override { list(v); }
    void onTexts(const engine::Field&, std::vector<std::string>& v) override { list(v); }
    void onNames(const engine::Field&, std::vector<engine::Name>& v) override {
        for (const engine::Name& name : v) add(name.folded());
    }
    void onIntegerLists(const engine::Field&, std::vector<std::vector<std::int32_t>>& v) override {
        for (auto& inner : v) list(inner);
    }
    void onTextLists(const engine::Field&, std::vector<std::vector<std::string>>& v) override {
        for (auto& inner : v) list(inner);
    }
    void onNumberMap(const engine::Field&, std::map<std::string, double>& v) override {
        for (auto& [key, value] : v) {
            add(key);
            numbers.push_back(value);
        }
    }
    void onTextMap(const engine::Field&, std::map<std::string, std::string>& v) override {
        for (auto& [key, value] : v) {
            add(key);
            add(value);
        }
    }
    bool beginObject(const engine::Field&, bool present) override {
        add(present ? "{" : "-");
        return present;
    }
    void endObject() override {}
    bool beginList(const engine::Field&, std::size_t& count) override {
        add(std::to_string(count));
        return count != 0;
    }
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override {}

private:
    void add(std::string_view part) {
        text += part;
        text += '\x1f';
    }
    void add(const math::Vector2& v) { numbers.insert(numbers.end(), {v.x, v.y}); }
    void add(const math::Vector3& v) { numbers.insert(numbers.end(), {v.x, v.y, v.z}); }
    template <class Item>
    void list(std::vector<Item>& items) {
        add(std::string_view(std::to_string(items.size())));
        for (Item& item : items) {
            if constexpr (std::is_integral_v<Item>)
                add(std::string_view(std::to_string(item)));
            else
                add(item);
        }
    }
};

/// True when two entities hold the same, handles aside.
bool holdSame(const engine::Entity& a, const engine::Entity& b);

}  // namespace kova::cmd
