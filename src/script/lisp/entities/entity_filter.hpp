#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/model/drawing.hpp"
#include "script/lisp/value.hpp"

namespace kova::script::lisp {

/// The filter list of SSGET: groups that an entity must have, with relations ((-4 . ">=") before a group) and brackets
/// ((-4 . "<OR") ... (-4 . "OR>")).
class EntityFilter {
public:
    /// An empty list lets everything pass. Throws LispError for a list that is no filter.
    explicit EntityFilter(const Value& list);
    bool passes(engine::Entity& entity) const;
    bool empty() const { return root_.children.empty(); }

private:
    enum class Kind : std::uint8_t { And, Or, Xor, Not, Group, Application };
    struct Node {
        Kind kind = Kind::And;
        int code = 0;
        std::string relation;  ///< empty: equal
        Value value;
        std::vector<Node> children;
    };
    struct Subject;
    static bool test(const Node& node, Subject& subject);
    static bool testGroup(const Node& node, Subject& subject);
    static bool compare(const Node& node, const Value& actual);

    Node root_;
};

}  // namespace kova::script::lisp
