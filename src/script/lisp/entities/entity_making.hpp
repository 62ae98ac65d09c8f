#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/model/drawing.hpp"
#include "math/vector3.hpp"
#include "script/lisp/entities/entity_names.hpp"

namespace kova::script::lisp {

/// What ENTMAKE has begun over several calls.
struct PendingEntities {
    std::unique_ptr<engine::Entity> insert;  ///< takes attributes until SEQEND
    struct Polyline {
        std::int64_t flags = 0;
        std::int64_t rows = 0;
        std::int64_t columns = 0;
        std::unique_ptr<engine::Entity> common;  ///< carries the common properties
        std::vector<math::Vector3> points;
        std::vector<double> bulges;
        std::vector<double> startWidths;
        std::vector<double> endWidths;
        std::vector<std::vector<std::int32_t>> faces;
    };
    std::unique_ptr<Polyline> polyline;
    std::unique_ptr<engine::Block> block;  ///< takes entities until ENDBLK
};

/// All groups of an entity, or of one of its parts.
Value entityGroups(engine::Entity& entity, const SubName& name, const Value& applications);
/// Makes an entity, or takes a further step of one: false when it cannot be made. `handle` is 0 while it is not whole;
/// `block` is the name of a block that ENDBLK completed.
bool makeFromGroups(Machine& machine, const Value& list, std::uint64_t& handle, std::string& block);
/// Changes the entity, or its part, that group -1 names.
bool modifyFromGroups(Machine& machine, const Value& list);
/// Brings back what ENTDEL deleted.
bool restoreDeleted(Machine& machine, std::uint64_t name);

}  // namespace kova::script::lisp
