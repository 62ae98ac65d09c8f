#include "script/lisp/entities/entity_filter.hpp"

#include <cmath>

#include "strings/wildcards.hpp"
#include "engine/entities/block_reference.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/entities/entity_codes.hpp"
#include "script/lisp/entities/entity_making.hpp"

namespace kova::script::lisp {

namespace {

constexpr std::size_t kMaxNesting = 64;
constexpr double kFuzz = 1e-9;

/// A relation between two numbers.
bool related(std::string_view relation, double actual, double wanted) {
    if (relation == "*") return true;
    const bool same = std::abs(actual - wanted) <= kFuzz * (1.0 + std::abs(wanted));
    if (relation.empty() || relation == "=") return same;
    if (relation == "!=" || relation == "/=" || relation == "<>") return !same;
    if (relation == "<") return actual < wanted && !same;
    if (relation == "<=") return actual <= wanted || same;
    if (relation == ">") return actual > wanted && !same;
    if (relation == ">=") return actual >= wanted || same;
    const auto a = static_cast<std::int64_t>(actual);
    const auto w = static_cast<std::int64_t>(wanted);
    if (relation == "&") return (a & w) != 0;
    if (relation == "&=") return (a & w) == w;
    return false;
}

}  // namespace

/// The entity under test; its groups are listed only when a filter asks for more than the commonest ones.
struct EntityFilter::Subject {
    explicit Subject(engine::Entity& e) : entity(e) {}
    const Value& groups() {
        if (!listed) {
            list = entityGroups(entity, {entity.handle(), 0}, {});
            listed = true;
        }
        return list;
    }
    engine::Entity& entity;
    Value list;
    bool listed = false;
};

EntityFilter::EntityFilter(const Value& list) {
    std::vector<Node> open(1);
    std::string relation;
    for (ListView item(list); item; ++item) {
        if (!item->isCons() || !item->car().isInteger()) throw LispError("SSGET: bad filter list");
        const std::int64_t code = item->car().asInteger();
        const Value& v = item->cdr();
        if (code == -3) {
            Node node;
            node.kind = Kind::Application;
            node.value = v;
            open.back().children.push_back(std::move(node));
            continue;
        }
        if (code != -4) {
            if (code < -2 || code > 1071) throw LispError("SSGET: bad filter list");
            Node node;
            node.kind = Kind::Group;
            node.code = static_cast<int>(code);
            node.relation = std::exchange(relation, {});
            node.value = v;
            open.back().children.push_back(std::move(node));
            continue;
        }
        if (!v.isString()) throw LispError("SSGET: bad filter list");
        const std::string word = engine::upperCase(v.text());
        static constexpr std::pair<std::string_view, Kind> kBrackets[] = {
            {"AND", Kind::And}, {"OR", Kind::Or}, {"XOR", Kind::Xor}, {"NOT", Kind::Not}};
        bool bracket = false;
        for (const auto& [name, kind] : kBrackets) {
            if (word == "<" + std::string(name)) {
                if (open.size() > kMaxNesting) throw LispError("SSGET: the filter is nested too deeply");
                open.emplace_back();
                open.back().kind = kind;
                bracket = true;
            } else if (word == std::string(name) + ">") {
                if (open.size() < 2 || open.back().kind != kind) throw LispError("SSGET: bad filter list");
                Node done = std::move(open.back());
                open.pop_back();
                open.back().children.push_back(std::move(done));
                bracket = true;
            }
        }
        if (!bracket) relation = word;
    }
    if (open.size() != 1 || !relation.empty()) throw LispError("SSGET: bad filter list");
    root_ = std::move(open.front());
}

bool EntityFilter::passes(engine::Entity& entity) const {
    if (root_.children.empty()) return true;
    Subject subject(entity);
    return test(root_, subject);
}

bool EntityFilter::test(const Node& node, Subject& subject) {
    switch (node.kind) {
        case Kind::And:
            return std::all_of(node.children.begin(), node.children.end(),
                               [&](const Node& n) { return test(n, subject); });
        case Kind::Or:
            return std::any_of(node.children.begin(), node.children.end(),
                               [&](const Node& n) { return test(n, subject); });
        case Kind::Xor: {
            bool odd = false;
            for (const Node& n : node.children) odd = odd != test(n, subject);
            return odd;
        }
        case Kind::Not:
            return std::none_of(node.children.begin(), node.children.end(),
                                [&](const Node& n) { return test(n, subject); });
        case Kind::Group:
            return testGroup(node, subject);
        case Kind::Application: {
            const engine::XData* data = subject.entity.xdata();
            for (ListView item(node.value); item; ++item) {
                const Value& name = item->isCons() ? item->car() : *item;
                if (!name.isString() || data == nullptr) return false;
                if (std::none_of(data->applications.begin(), data->applications.end(), [&](const auto& application) {
                        return cmd::matchesWildcards(application.name.view(), name.text());
                    }))
                    return false;
            }
            return true;
        }
    }
    return false;
}

bool EntityFilter::compare(const Node& node, const Value& actual) {
    const Value& wanted = node.value;
    if (wanted.isString()) {
        if (!actual.isString()) return false;
        const bool matches = cmd::matchesWildcards(actual.text(), wanted.text());
        return node.relation == "!=" || node.relation == "/=" || node.relation == "<>" ? !matches : matches;
    }
    if (wanted.isNumber()) return actual.isNumber() && related(node.relation, actual.number(), wanted.number());
    if (wanted.isEntity()) return actual.isEntity() && actual.handle() == wanted.handle();
    if (wanted.isCons()) {
        // Points: a relation each for x, y and z, parted by commas; one alone counts for all three.
        std::string_view relations = node.relation;
        const Value* a = &actual;
        std::string_view current = relations;
        for (ListView w(wanted); w; ++w, a = &a->cdr()) {
            if (const std::size_t comma = relations.find(','); comma != std::string_view::npos) {
                current = relations.substr(0, comma);
                relations.remove_prefix(comma + 1);
            } else {
                current = relations;
            }
            if (!w->isNumber() || !a->isCons() || !a->car().isNumber()) return false;
            if (!related(current, a->car().number(), w->number())) return false;
        }
        return true;
    }
    return false;
}

bool EntityFilter::testGroup(const Node& node, Subject& subject) {
    const engine::Entity& e = subject.entity;
    switch (node.code) {
        case 0:
            return compare(node, Value::string(groupTypeName(e)));
        case 8:
            return compare(node, Value::string(e.layer.str()));
        case 6:
            return compare(node, Value::string(e.linetype.str()));
        case 62:
            return compare(node, Value::integer(e.color.bareIndex()));
        case 48:
            return compare(node, Value::real(e.linetypeScale()));
        case 60:
            return compare(node, Value::integer(e.visible ? 0 : 1));
        case 370:
            return compare(node, Value::integer(e.lineweight));
        case 66:
            if (e.type() == engine::EntityType::BlockReference)
                return compare(
                    node,
                    Value::integer(static_cast<const engine::BlockReferenceEntity&>(e).attributes.empty() ? 0 : 1));
            break;
        case 2:
            if (e.type() == engine::EntityType::BlockReference)
                return compare(node,
                               Value::string(static_cast<const engine::BlockReferenceEntity&>(e).blockName.str()));
            break;
        default:
            break;
    }
    for (ListView group(subject.groups()); group; ++group)
        if (group->car().isInteger() && group->car().asInteger() == node.code && compare(node, group->cdr()))
            return true;
    return false;
}

}  // namespace kova::script::lisp
