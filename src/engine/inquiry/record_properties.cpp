#include "engine/inquiry/record_properties.hpp"

#include "cmd/point_input.hpp"
#include "engine/model/color.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd {

namespace detail {

bool PropertyVisitor::beginObject(const Field& f, bool present) {
    if (!present) return false;
    prefixes_.push_back(keyOf(f) + ".");
    return true;
}

}  // namespace detail

void PropertyReader::value(const std::string& key, const Field& f, double& v) {
    // Twelve digits of a degree: what rounding adds on the way from radians is not shown.
    const double shown = f.unit == engine::Unit::Angle ? std::round(math::toDegrees(v) * 1e9) / 1e9 : v;
    list.emplace_back(key, strings::shortest(shown));
}
void PropertyReader::value(const std::string& key, std::int64_t& v) { list.emplace_back(key, std::to_string(v)); }
void PropertyReader::value(const std::string& key, bool& v) { list.emplace_back(key, v ? "1" : "0"); }
void PropertyReader::value(const std::string& key, std::string& v) { list.emplace_back(key, v); }
void PropertyReader::value(const std::string& key, engine::Name& v) { list.emplace_back(key, v.str()); }
void PropertyReader::value(const std::string& key, engine::Color& v) { list.emplace_back(key, engine::colorText(v)); }

bool PropertyWriter::mine(const std::string& key) {
    if (known_ || !engine::equalNoCase(key, key_)) return false;
    known_ = true;
    return true;
}

void PropertyWriter::value(const std::string& key, const Field& f, double& v) {
    if (!mine(key)) return;
    const auto number = parseNumber(text_);
    if (!number) return;
    v = f.unit == engine::Unit::Angle ? math::toRadians(*number) : *number;
    done_ = true;
}

void PropertyWriter::value(const std::string& key, std::int64_t& v) {
    if (!mine(key)) return;
    const auto number = parseInteger(text_);
    if (!number) return;
    v = *number;
    done_ = true;
}

void PropertyWriter::value(const std::string& key, bool& v) {
    if (!mine(key)) return;
    const std::string word = engine::upperCase(trimmed(text_));
    const bool on = word == "1" || word == "ON" || word == "Y" || word == "YES";
    if (!on && word != "0" && word != "OFF" && word != "N" && word != "NO") return;
    v = on;
    done_ = true;
}

void PropertyWriter::value(const std::string& key, std::string& v) {
    if (!mine(key)) return;
    v = text_ == "." ? std::string() : std::string(text_);
    done_ = true;
}

void PropertyWriter::value(const std::string& key, engine::Name& v) {
    if (!mine(key)) return;
    const std::string_view name = trimmed(text_);
    v = name == "." ? engine::Name() : engine::Name(name);
    done_ = true;
}

void PropertyWriter::value(const std::string& key, engine::Color& v) {
    if (!mine(key)) return;
    const auto color = engine::parseColor(trimmed(text_));
    if (!color) return;
    v = *color;
    done_ = true;
}

}  // namespace kova::cmd
