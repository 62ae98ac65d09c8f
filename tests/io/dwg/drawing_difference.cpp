#include "io/dwg/drawing_difference.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>

#include "io/native/native_file.hpp"

namespace kova::test {

using nlohmann::json;

namespace {

bool sameNumber(double a, double b) { return std::abs(a - b) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(b)}); }

/// A list whose items have handles or names, by these.
std::map<std::string, const json*> keyed(const json& list) {
    std::map<std::string, const json*> map;
    for (const json& item : list)
        for (const char* key : {"handle", "name"})
            if (item.is_object() && item.contains(key)) {
                map.emplace(item[key].dump(), &item);
                break;
            }
    if (map.size() != list.size()) map.clear();
    return map;
}

/// What differs, a line each; numbers may differ by 1e-9.
void compare(const std::string& path, const json& a, const json& b, std::vector<std::string>& out) {
    const auto shown = [](const json& value) { return value.dump().substr(0, 80); };
    if (a.is_number() && b.is_number()) {
        if (!sameNumber(a.get<double>(), b.get<double>())) out.push_back(path + ": " + shown(a) + " | " + shown(b));
    } else if (a.is_object() && b.is_object()) {
        for (const auto& [key, value] : a.items()) {
            if (b.contains(key))
                compare(path + "/" + key, value, b[key], out);
            else
                out.push_back(path + "/" + key + ": " + shown(value) + " | missing");
        }
        for (const auto& [key, value] : b.items())
            if (!a.contains(key)) out.push_back(path + "/" + key + ": missing | " + shown(value));
    } else if (a.is_array() && b.is_array()) {
        const auto left = keyed(a);
        const auto right = keyed(b);
        if (!left.empty() && !right.empty()) {
            for (const auto& [key, value] : left) {
                const auto found = right.find(key);
                if (found == right.end())
                    out.push_back(path + "[" + key + "]: " + shown(*value) + " | missing");
                else
                    compare(path + "[" + key + "]", *value, *found->second, out);
            }
            for (const auto& [key, value] : right)
                if (left.find(key) == left.end()) out.push_back(path + "[" + key + "]: missing | " + shown(*value));
            // What stands later is drawn over what stands before.
            if (path.ends_with("/entities") && a.size() == b.size())
                for (std::size_t i = 0; i < a.size(); ++i)
                    if (a[i].value("handle", 0) != b[i].value("handle", 0)) {
                        out.push_back(path + ": another order from place " + std::to_string(i) + " on");
                        break;
                    }
            return;
        }
        if (a.size() != b.size())
            out.push_back(path + ": " + std::to_string(a.size()) + " | " + std::to_string(b.size()) +
                          " items: " + shown(a) + " | " + shown(b));
        for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
            compare(path + "[" + std::to_string(i) + "]", a[i], b[i], out);
    } else if (a != b) {
        out.push_back(path + ": " + shown(a) + " | " + shown(b));
    }
}

void rename(json& value, const std::map<std::string, std::string>& names) {
    if (value.is_string()) {
        if (const auto found = names.find(value.get_ref<const std::string&>()); found != names.end())
            value = found->second;
    } else if (value.is_structured()) {
        for (json& item : value) rename(item, names);
    }
}

/// Programs number anonymous blocks anew when they save: these go by their first entity.
void nameByContent(json& drawing) {
    if (!drawing.contains("blocks")) return;
    std::map<std::string, std::string> names;
    for (const json& block : drawing["blocks"]) {
        const std::string name = block["name"];
        const bool numbered = name.starts_with("*D") || name.starts_with("*T");
        if (numbered && block.contains("entities") && !block["entities"].empty())
            names[name] = name.substr(0, 2) + " with " + block["entities"][0]["handle"].dump();
    }
    rename(drawing, names);
}

}  // namespace

std::vector<std::string> differences(const engine::Drawing& a, const engine::Drawing& b,
                                     std::initializer_list<const char*> ignored) {
    json left = json::parse(io::native::nativeText(a));
    json right = json::parse(io::native::nativeText(b));
    for (json* drawing : {&left, &right})
        for (const char* member : ignored) drawing->erase(member);
    nameByContent(left);
    nameByContent(right);
    std::vector<std::string> found;
    compare("", left, right, found);
    return found;
}

std::string listed(const std::vector<std::string>& differences, std::size_t limit) {
    std::string list;
    for (std::size_t i = 0; i < std::min(differences.size(), limit); ++i) list += "\n  " + differences[i];
    return list;
}

}  // namespace kova::test
