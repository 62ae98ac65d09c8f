#include "engine/model/entity_type.hpp"
#include "script/python/entity_object.hpp"

namespace kova::script::python {

using engine::EntityType;

const KindNames& kindNames(EntityType kind) {
    static const std::array<KindNames, engine::kEntityTypeCount> all = [] {
        const KindNames named[] = {
            {EntityType::Line, {{"start_point", "start"}, {"end_point", "end"}}, {"start", "end"}},
            {EntityType::Circle, {}, {"center", "radius"}},
            {EntityType::Arc, {}, {"center", "radius", "start_angle", "end_angle"}},
            {EntityType::Polyline, {{"points", "vertices"}}, {"vertices", "closed", "bulges"}},
            {EntityType::Point, {{"location", "position"}}, {"position"}},
            {EntityType::Text,
             {{"insertion_point", "position"}, {"text", "content"}},
             {"insertion_point", "height", "rotation", "content"}},
            {EntityType::MText,
             {{"insertion_point", "position"}, {"text", "content"}},
             {"insertion_point", "width", "height", "content"}},
            {EntityType::Dimension, {{"dim_style", "dim_style_name"}}, {}},
            {EntityType::BlockReference,
             {{"insertion_point", "insert"}, {"name", "block_name"}},
             {"block_name", "insertion_point", "scale_x", "scale_y", "rotation"}},
            {EntityType::Spline, {}, {"control_points", "degree", "knots", "weights", "closed"}},
            {EntityType::Ellipse,
             {{"major_axis", "major"}, {"ratio", "minor_ratio"}},
             {"center", "major", "minor_ratio", "start_param", "end_param"}},
            {EntityType::Xline, {{"base_point", "base"}, {"direction", "dir"}}, {"base", "dir"}},
            {EntityType::Ray, {{"base_point", "origin"}, {"direction", "dir"}}, {"origin", "dir"}},
            {EntityType::Leader, {{"text", "annotation"}}, {"vertices", "annotation"}},
            {EntityType::MLine, {{"justification", "justification_acad"}}, {"vertices", "mline_scale"}},
            {EntityType::MLeader, {{"text", "text_content"}}, {}},
            {EntityType::Table, {{"insertion_point", "insertion"}}, {"insertion", "rows", "cols"}},
            {EntityType::Wipeout, {}, {"vertices"}},
            {EntityType::Tolerance, {{"insertion_point", "insertion"}}, {}},
            {EntityType::AttributeDefinition,
             {{"insertion_point", "insertion"}, {"height", "text_height"}},
             {"tag", "insertion", "text_height"}},
            {EntityType::Polyline3D, {{"points", "vertices"}}, {"vertices", "closed"}},
        };
        std::array<KindNames, engine::kEntityTypeCount> out;
        for (int i = 0; i < engine::kEntityTypeCount; ++i)
            out[static_cast<std::size_t>(i)].kind = static_cast<EntityType>(i);
        for (const KindNames& row : named) out[static_cast<std::size_t>(row.kind)] = row;
        return out;
    }();
    return all[static_cast<std::size_t>(kind)];
}

const std::vector<FieldInfo>& kindFields(EntityType kind) {
    static const std::array<std::vector<FieldInfo>, engine::kEntityTypeCount> all = [] {
        std::array<std::vector<FieldInfo>, engine::kEntityTypeCount> out;
        for (std::size_t i = 0; i < out.size(); ++i) {
            FieldLister lister;
            engine::makeEntity(static_cast<EntityType>(i))->describe(lister);
            // Every entity has a `kind`, its display name, and a method `scale`.
            for (FieldInfo& field : lister.fields) {
                if (field.name == "kind") field.name = "body_kind";
                if (field.name == "scale") field.name = "mline_scale";
            }
            out[i] = std::move(lister.fields);
        }
        return out;
    }();
    return all[static_cast<std::size_t>(kind)];
}

}  // namespace kova::script::python
