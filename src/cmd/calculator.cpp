#include "cmd/calculator.hpp"
#include "strings/numbers.hpp"

#include <QVariant>
#include <map>

namespace kova::cmd {

using math::ExpressionResult;
using math::ExpressionValue;
using math::Vector3;

namespace {

using Stored = std::map<std::string, ExpressionValue, std::less<>>;

constexpr const char* kProperty = "calculator values";
constexpr std::size_t kMostStored = 10'000;

/// Words that the classic calculator answers by letting the user pick.
constexpr std::string_view kPicks[] = {"cur", "end", "mid", "cen",  "int", "nod", "qua", "ins",  "per", "tan",
                                       "nea", "rad", "dee", "ille", "mee", "nee", "vee", "vee1", "pick"};

std::shared_ptr<Stored> storedValues(doc::Document& document) {
    const QVariant value = document.property(kProperty);
    if (value.isValid()) return value.value<std::shared_ptr<Stored>>();
    auto fresh = std::make_shared<Stored>();
    document.setProperty(kProperty, QVariant::fromValue(fresh));
    return fresh;
}

Vector3 toUser(const engine::Drawing& drawing, const Vector3& p) { return Vector3(drawing.ucs.fromWorld(p.xy()), p.z); }

std::optional<ExpressionValue> systemVariable(const engine::Drawing& drawing, std::string_view name) {
    const auto value = engine::getSysVar(drawing, engine::upperCase(name));
    if (!value) return std::nullopt;
    return std::visit(
        [&](const auto& v) -> std::optional<ExpressionValue> {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_arithmetic_v<T>)
                return static_cast<double>(v);
            else if constexpr (std::is_same_v<T, Vector3>)
                return v;
            else
                return std::nullopt;
        },
        *value);
}

class Names final : public math::ExpressionNames {
public:
    explicit Names(doc::Document& document) : document_(document), stored_(storedValues(document)) {}

    std::optional<ExpressionValue> variable(std::string_view name, std::string& error) override {
        const engine::Drawing& drawing = document_.drawing();
        if (name == "@") return toUser(drawing, Vector3(drawing.lastPoint));
        if (const auto it = stored_->find(name); it != stored_->end()) return it->second;
        if (needsPick(name)) {
            error = needed(name);
            return std::nullopt;
        }
        return systemVariable(drawing, name);
    }
    std::optional<ExpressionValue> call(std::string_view name, std::span<const ExpressionValue> arguments,
                                        std::string& error) override {
        if (needsPick(name)) {
            error = needed(name);
            return std::nullopt;
        }
        // The argument is a variable's name and has been looked up already.
        if (name == "getvar" && arguments.size() == 1) return arguments[0];
        if (name != "w2u" && name != "u2w") return std::nullopt;
        const Vector3* p = arguments.size() == 1 ? std::get_if<Vector3>(&arguments[0]) : nullptr;
        if (p == nullptr) {
            error = std::string(name) + " takes one point.";
            return std::nullopt;
        }
        if (name == "w2u") return toUser(document_.drawing(), *p);
        return Vector3(document_.drawing().ucs.toWorld(p->xy()), p->z);
    }
    Vector3 fromWorld(const Vector3& world) override { return toUser(document_.drawing(), world); }
    std::string store(const std::string& name, const ExpressionValue& value) {
        if (needsPick(name) || name == "pi") return "Error: " + name + " cannot be stored.";
        if (stored_->size() >= kMostStored && !stored_->contains(name)) return "Error: too many names are stored.";
        (*stored_)[name] = value;
        return {};
    }

private:
    static bool needsPick(std::string_view name) {
        return std::find(std::begin(kPicks), std::end(kPicks), name) != std::end(kPicks);
    }
    static std::string needed(std::string_view name) {
        return std::string(name) + " needs a pick, which cannot be made here.";
    }

    doc::Document& document_;
    std::shared_ptr<Stored> stored_;
};

std::string numberText(double value) {
    return strings::general(value == 0.0 ? 0.0 : value, 15);
}

}  // namespace

ExpressionResult calculate(doc::Document& document, std::string_view text) {
    Names names(document);
    const auto assignment = math::parseAssignment(text);
    if (!assignment) return math::evaluate(text, names);
    ExpressionResult result = math::evaluate(assignment->expression, names);
    if (result.ok()) result.error = names.store(assignment->name, result.value);
    return result;
}

std::string calculatorText(const ExpressionValue& value) {
    if (const auto* number = std::get_if<double>(&value)) return numberText(*number);
    const auto& p = std::get<Vector3>(value);
    return "(" + numberText(p.x) + " " + numberText(p.y) + " " + numberText(p.z) + ")";
}

}  // namespace kova::cmd
