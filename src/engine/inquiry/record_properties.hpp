#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/model/idle_visitor.hpp"

namespace kova::cmd {

/// The single values of a record (numbers, switches, texts, names, colours) by the names its description gives them,
/// and as they are typed; values of nested records as "rows.title.alignment". Angles in degrees. Lists are left out.
using PropertyList = std::vector<std::pair<std::string, std::string>>;

namespace detail {
/// Visits single values only; what a value is done with is the derived class's.
class PropertyVisitor : public engine::IdleVisitor {
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
    bool beginObject(const Field& f, bool present) override;
    void endObject() override { prefixes_.pop_back(); }
    bool beginList(const Field&, std::size_t&) override { return false; }

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
