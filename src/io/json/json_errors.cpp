#include <nlohmann/json.hpp>

#include "io/json/json_tree.hpp"

namespace kova::io::native {

namespace {

/// A value of the type, to let the library word the failure itself.
nlohmann::json sample(JsonType type) {
    using Type = nlohmann::json::value_t;
    switch (type) {
        case JsonType::Null:
            return nlohmann::json(Type::null);
        case JsonType::Boolean:
            return nlohmann::json(Type::boolean);
        case JsonType::Integer:
            return nlohmann::json(Type::number_integer);
        case JsonType::Unsigned:
            return nlohmann::json(Type::number_unsigned);
        case JsonType::Float:
            return nlohmann::json(Type::number_float);
        case JsonType::Text:
            return nlohmann::json(Type::string);
        case JsonType::Array:
            return nlohmann::json(Type::array);
        case JsonType::Object:
            return nlohmann::json(Type::object);
    }
    return {};
}

}  // namespace

void throwNoObject(JsonType found) {
    static_cast<void>(sample(found).value("format", std::string()));
    throw std::logic_error("an object was taken for none");
}

void throwTypeError(JsonType wanted, JsonType found) {
    const nlohmann::json value = sample(found);
    switch (wanted) {
        case JsonType::Boolean:
            static_cast<void>(value.get<bool>());
            break;
        case JsonType::Text:
            static_cast<void>(value.get<std::string>());
            break;
        case JsonType::Array:
            static_cast<void>(value.get<std::vector<int>>());
            break;
        case JsonType::Object:
            static_cast<void>(value.get<std::map<std::string, int>>());
            break;
        default:
            static_cast<void>(value.get<double>());
            break;
    }
    throw std::invalid_argument("value of an unexpected type");
}

void throwNoMembers(JsonType found) {
    static_cast<void>(sample(found).value("type", std::string()));
    throw std::invalid_argument("value of an unexpected type");
}

}  // namespace kova::io::native
