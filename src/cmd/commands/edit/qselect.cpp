#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "engine/kinds/all.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;

/// Finds one field of an entity by its key and keeps its value as text, and as a number where it is one.
class FieldValue final : public engine::FieldVisitor {
public:
    explicit FieldValue(std::string_view key) : key_(key) {}

    static std::optional<FieldValue> of(const Entity& entity, std::string_view key) {
        FieldValue value(key);
        // A visitor that only looks leaves the entity as it is.
        auto& fields = const_cast<Entity&>(entity);
        fields.describeCommon(value);
        fields.describe(value);
        // Rare properties are not named while an entity has none of them.
        if (!value.found_) {
            double scale = entity.linetypeScale();
            double thickness = entity.thickness();
            engine::Name plotStyle = entity.plotStyleName();
            value.onNumber({"linetypeScale"}, scale);
            value.onNumber({"thickness"}, thickness);
            value.onName({"plotStyleName"}, plotStyle);
        }
        if (!value.found_) return std::nullopt;
        return value;
    }
    const std::string& text() const { return text_; }
    const std::optional<double>& number() const { return number_; }

protected:
    void onNumber(const engine::Field& f, double& v) override {
        if (take(f)) number_ = f.unit == engine::Unit::Angle ? math::toDegrees(v) : v;
    }
    void onInteger(const engine::Field& f, std::int64_t& v) override {
        if (take(f)) number_ = static_cast<double>(v);
    }
    void onBoolean(const engine::Field& f, bool& v) override {
        if (!take(f)) return;
        number_ = v ? 1.0 : 0.0;
        text_ = v ? "Yes" : "No";
    }
    void onText(const engine::Field& f, std::string& v) override {
        if (take(f)) text_ = v;
    }
    void onName(const engine::Field& f, engine::Name& v) override {
        if (take(f)) text_ = v.str();
    }
    void onColor(const engine::Field& f, engine::Color& v) override {
        if (take(f)) text_ = engine::colorText(v);
    }
    bool beginObject(const engine::Field&, bool) override { return false; }
    bool beginList(const engine::Field&, std::size_t&) override { return false; }
    void onHandle(const engine::Field&, std::uint64_t&) override {}
    void onPointObject(const engine::Field&, math::Vector2&) override {}
    void onPointObject3(const engine::Field&, math::Vector3&) override {}
    void onPoints(const engine::Field&, std::vector<math::Vector2>&) override {}
    void onPoints3(const engine::Field&, std::vector<math::Vector3>&) override {}
    void onNumbers(const engine::Field&, std::vector<double>&) override {}
    void onIntegers(const engine::Field&, std::vector<std::int32_t>&) override {}
    void onBooleans(const engine::Field&, std::vector<bool>&) override {}
    void onHandles(const engine::Field&, std::vector<std::uint64_t>&) override {}
    void onTexts(const engine::Field&, std::vector<std::string>&) override {}
    void onNames(const engine::Field&, std::vector<engine::Name>&) override {}
    void onIntegerLists(const engine::Field&, std::vector<std::vector<std::int32_t>>&) override {}
    void onTextLists(const engine::Field&, std::vector<std::vector<std::string>>&) override {}
    void onNumberMap(const engine::Field&, std::map<std::string, double>&) override {}
    void onTextMap(const engine::Field&, std::map<std::string, std::string>&) override {}
    void endObject() override {}
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override {}

private:
    bool take(const engine::Field& f) {
        if (found_ || !engine::equalNoCase(f.key, key_)) return false;
        found_ = true;
        return true;
    }

    std::string_view key_;
    bool found_ = false;
    std::string text_;
    std::optional<double> number_;
};

/// What QSELECT looks for.
struct Condition {
    enum class Operator { Equal, NotEqual, Greater, Less, Wildcard, All };
    std::optional<engine::EntityType> type;
    std::string property;
    Operator op = Operator::All;
    std::string text;
    std::optional<double> number;
    std::optional<engine::Color> color;
    std::optional<int> lineweight;

    bool holds(const Entity& entity) const {
        if (type && entity.type() != *type) return false;
        if (op == Operator::All) return true;
        if (engine::equalNoCase(property, "color") && color) return (entity.color == *color) == (op == Operator::Equal);
        const auto value = FieldValue::of(entity, property);
        if (!value) return false;
        if (op == Operator::Wildcard) return matchesWildcards(value->text(), text);
        if (engine::equalNoCase(property, "lineweight") && lineweight && value->number())
            return compare(*value->number(), *lineweight);
        if (value->number() && number) return compare(*value->number(), *number);
        const bool same = engine::equalNoCase(value->text(), text);
        return op == Operator::Equal ? same : op == Operator::NotEqual && !same;
    }

private:
    bool compare(double a, double b) const {
        const bool same = std::abs(a - b) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(b)});
        switch (op) {
            case Operator::Equal:
                return same;
            case Operator::NotEqual:
                return !same;
            case Operator::Greater:
                return !same && a > b;
            case Operator::Less:
                return !same && a < b;
            default:
                return false;
        }
    }
};

/// QSELECT: selects what fulfils a condition; typed instead of chosen in a dialog.
class QselectTool final : public DialogueTool {
public:
    bool keepsSelection() const override { return true; }

protected:
    Dialogue dialogue(Ask& ask) override {
        bool within = false;
        if (document().selection().empty()) {
            const Answer where =
                co_await ask.keyword("Apply to [Entire drawing/Current selection] <Entire drawing>:", "Entire Current");
            within = where.is("CURRENT");
        } else {
            const Answer where = co_await ask.keyword(
                "Apply to [Entire drawing/Current selection] <Current selection>:", "Entire Current");
            within = !where.is("ENTIRE");
        }
        Condition condition;
        for (;;) {
            const Answer answer = co_await ask.text("Object type <Multiple>:");
            if (answer.isEnter() || engine::equalNoCase(typedName(answer.text), "Multiple")) break;
            condition.type = engine::entityTypeFromAnyName(typedName(answer.text));
            if (condition.type) break;
            message("Unknown object type " + inQuotes(typedName(answer.text)) + ".");
        }
        for (;;) {
            const Answer answer = co_await ask.text("Property <Layer>:");
            condition.property = answer.isEnter() ? "layer" : typedName(answer.text);
            if (condition.type ? isKnown(*condition.type, condition.property) : isKnownAnywhere(condition.property))
                break;
            message("Unknown property " + inQuotes(condition.property) + ".");
        }
        const Answer op = co_await ask.keyword("Operator [= / <> / > / < / *] <=>:", "= <> > < * All");
        condition.op = Condition::Operator::Equal;
        if (op.is("<>")) condition.op = Condition::Operator::NotEqual;
        if (op.is(">")) condition.op = Condition::Operator::Greater;
        if (op.is("<")) condition.op = Condition::Operator::Less;
        if (op.is("*")) condition.op = Condition::Operator::Wildcard;
        if (op.is("ALL")) condition.op = Condition::Operator::All;
        if (condition.op != Condition::Operator::All) {
            const Answer value = co_await ask.text("Value:");
            condition.text = typedName(value.text);
            condition.number = parseNumber(condition.text);
            condition.color = engine::parseColor(condition.text);
            condition.lineweight = parseLineweight(condition.text);
        }
        const Answer mode = co_await ask.keyword("[Include/Exclude] <Include>:", "Include Exclude");
        select(condition, within, !mode.is("EXCLUDE"));
    }

private:
    static bool isKnown(engine::EntityType type, const std::string& property) {
        const std::unique_ptr<Entity> sample = engine::makeEntity(type);
        return sample && FieldValue::of(*sample, property).has_value();
    }
    static bool isKnownAnywhere(const std::string& property) {
        for (int type = 0; type < engine::kEntityTypeCount; ++type)
            if (isKnown(static_cast<engine::EntityType>(type), property)) return true;
        return false;
    }

    void select(const Condition& condition, bool within, bool include) {
        const std::vector<std::uint64_t> pool = within ? document().selection().ids() : selectAll(document());
        std::vector<std::uint64_t> hits;
        for (const std::uint64_t id : pool) {
            const Entity* entity = drawing().findById(id);
            if (entity != nullptr && condition.holds(*entity) == include) hits.push_back(id);
        }
        message(std::to_string(hits.size()) + " item(s) selected.");
        document().selection().set(std::move(hits));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Qselect, "QSELECT", "Quick Select", "Edit")

}  // namespace kova::cmd::commands
