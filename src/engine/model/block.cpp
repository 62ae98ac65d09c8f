#include "engine/model/block.hpp"

namespace kova::engine {

void DynParameter::describe(FieldVisitor& v) {
    v.text("type", type);
    v.text("name", name);
    v.point("base", base);
    if (v.reading()) v.point("basePoint", base);  // the other spelling that files have
    v.point("endPoint", endPoint);
    v.number("value", value);
    v.angle("angle", angle);
    v.boolean("flipState", flipState);
    v.text("activeVisibility", activeVisibility);
    v.integer("lookupRow", lookupRow);
    v.integer("gripShape", gripShape);
    v.boolean("showProperties", showProperties);
    v.integer("chainActionIndex", chainActionIndex);
    v.integer("constraint", constraint);
    v.number("increment", increment);
    v.numbers("valueList", valueList, true);
    v.boolean("baseAtMidpoint", baseAtMidpoint, false);
}

void DynAction::describe(FieldVisitor& v) {
    v.text("type", type);
    v.text("name", name);
    v.integer("parameterIndex", parameterIndex);
    v.integers("affectedEntityIndices", affectedEntityIndices);
    v.points("stretchFrame", stretchFrame, true);
    v.integer("arrayCount", arrayCount);
    v.length("arraySpacing", arraySpacing);
    v.length("arrayRowSpacing", arrayRowSpacing, 0.0);
    v.pointObject("scaleBase", scaleBase);
    v.boolean("constrainToAxis", constrainToAxis);
    v.angle("axisAngle", axisAngle);
    v.boolean("atStartPoint", atStartPoint, false);
}

void VisibilityState::describe(FieldVisitor& v) {
    v.text("name", name);
    v.integers("visibleEntityIndices", visibleEntityIndices);
}

void LookupColumn::describe(FieldVisitor& v) {
    v.text("name", name);
    v.boolean("isInput", isInput);
}

void LookupTable::describe(FieldVisitor& v) {
    v.objects("columns", columns);
    v.textLists("rows", rows);
    v.boolean("allowReverseLookup", allowReverseLookup);
}

void Block::describeHead(FieldVisitor& v) {
    v.name("name", name);
    v.text("description", description);
    v.point("base", base);
    v.boolean("explodable", explodable);
    v.boolean("scaleUniform", scaleUniform);
    if (xrefType == XrefType::None && !v.reading()) return;
    v.integer("xrefType", xrefType);
    v.text("xrefPath", xrefPath);
    v.integer("xrefStatus", xrefStatus);
}

void Block::describeDynamic(FieldVisitor& v) {
    if (!isDynamic && !v.reading()) return;
    v.boolean("isDynamic", isDynamic, false);
    v.objects("dynParams", dynParams, true);
    v.objects("dynActions", dynActions, true);
    v.objects("visibilityStates", visibilityStates, true);
    v.object("lookupTable", lookupTable);
}

std::optional<std::vector<bool>> Block::visibleEntities(std::string_view state) const {
    if (visibilityStates.empty()) return std::nullopt;
    const auto find = [&](std::string_view wanted) -> const VisibilityState* {
        if (wanted.empty()) return nullptr;
        for (const VisibilityState& s : visibilityStates)
            if (equalNoCase(s.name, wanted)) return &s;
        return nullptr;
    };
    const VisibilityState* shown = find(state);
    for (std::size_t i = 0; shown == nullptr && i < dynParams.size(); ++i) shown = find(dynParams[i].activeVisibility);
    if (shown == nullptr) return std::nullopt;
    std::vector<bool> visible(entities.size(), false);
    for (const std::int32_t index : shown->visibleEntityIndices)
        if (index >= 0 && static_cast<std::size_t>(index) < visible.size())
            visible[static_cast<std::size_t>(index)] = true;
    return visible;
}

}  // namespace kova::engine
