#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/describe.hpp"

namespace kova::cmd {

/// The single values of a record (numbers, switches, texts, names, colours) by the names its description gives them,
/// and as they are typed; values of nested records as "rows.title.alignment". Angles in degrees. Lists are left out.
using PropertyList = std::vector<std::pair<std::string, std::string>>;

namespace detail {
/// Visits single values only; what a value is done with is the derived class's.
class PropertyVisitor : public engine::FieldVisitor {
protected:
    using Field = engine::Field;
    virtual void value(const std::string& key, const Field& f, double& v) = 0;
    virtual void value(const std::string& key, std::int64_t& v) = 0;
    virtual void value(const std::string& key, bool& v) = 0;
    virtual void value(const std::string& key, std::string& v) = 0;
    virtual void value(const std::string& key, engine::Name& v) = 0;
    virtual void value(const std::string& key, engine::Color& v) = 0;

    void onNumber(const Field& f, double& v) override { value(keyOf(f), f, v); }
    void onInteger(const Field& f, std::int64_t& v) override { value(keyOf(f), v); }
    void onBoolean(const Field& f, bool& v) override { value(keyOf(f), v); }
    void onText(const Field& f, std::string& v) override { value(keyOf(f), v); }
    void onName(const Field& f, engine::Name& v) override { value(keyOf(f), v); }
    void onColor(const Field& f, engine::Color& v) override { value(keyOf(f), v); }
    void onHandle(const Field&, std::uint64_t&) override {}
    void onPointObject(const Field&, math::Vector2&) override {}
    void onPointObject3(const Field&, math::Vector3&) override {}
    void onPoints(const Field&, std::vector<math::Vector2>&) override {}
    void onPoints3(const Field&, std::vector<math::Vector3>&) override {}
    void onNumbers(const Field&, std::vector<double>&) override {}
    void onIntegers(const Field&, std::vector<std::int32_t>&) override {}
    void onBooleans(const Field&, std::vector<bool>&) override {}
    void onHandles(const Field&, std::vector<std::uint64_t>&) override {}
    void onTexts(const Field&, std::vector<std::string>&) override {}
    void onNames(const Field&, std::vector<engine::Name>&) override {}
    void onIntegerLists(const Field&, std::vector<std::vector<std::int32_t>>&) override {}
    void onTextLists(const Field&, std::vector<std::vector<std::string>>&) override {}
    void onNumberMap(const Field&, std::map<std::string, double>&) override {}
    void onTextMap(const Field&, std::map<std::string, std::string>&) override {}
    bool beginObject(const Field& f, bool present) override;
    void endObject() override { prefixes_.pop_back(); }
    bool beginList(const Field&, std::size_t&) override { return false; }
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override {}

private:
    std::string keyOf(const Field& f) const {
        return prefixes_.empty() ? std::string(f.key) : prefixes_.back() + std::string(f.key);
    }

    std::vector<std::string> prefixes_;
};
}  // namespace detail

/// Lists a record's values.
class PropertyReader final : public detail::PropertyVisitor {
public:
    PropertyList list;

private:
    void value(const std::string& key, const Field& f, double& v) override;
    void value(const std::string& key, std::int64_t& v) override;
    void value(const std::string& key, bool& v) override;
    void value(const std::string& key, std::string& v) override;
    void value(const std::string& key, engine::Name& v) override;
    void value(const std::string& key, engine::Color& v) override;
};

/// Sets one value from a typed text.
class PropertyWriter final : public detail::PropertyVisitor {
public:
    PropertyWriter(std::string_view key, std::string_view text) : key_(key), text_(text) {}
    bool reading() const override { return true; }
    bool known() const { return known_; }  ///< there is a value of that name
    bool done() const { return done_; }    ///< and it took the text

private:
    bool mine(const std::string& key);
    void value(const std::string& key, const Field& f, double& v) override;
    void value(const std::string& key, std::int64_t& v) override;
    void value(const std::string& key, bool& v) override;
    void value(const std::string& key, std::string& v) override;
    void value(const std::string& key, engine::Name& v) override;
    void value(const std::string& key, engine::Color& v) override;

    std::string_view key_;
    std::string_view text_;
    bool known_ = false;
    bool done_ = false;
};

}  // namespace kova::cmd
