#include "cmd/commands/modify/parallel_tool.hpp"

#include "edit/new_entities.hpp"
#include "engine/curves/offset_entity.hpp"

namespace kova::cmd::commands {

namespace {

constexpr const char* kErase = "offsetErase";
constexpr const char* kCurrentLayer = "offsetCurrentLayer";

}  // namespace

bool ParallelTool::erases() const { return remembered(document(), kErase, 0.0) != 0.0; }
void ParallelTool::setErases(bool erases) { remember(document(), kErase, erases ? 1.0 : 0.0); }
bool ParallelTool::takesCurrentLayer() const { return remembered(document(), kCurrentLayer, 0.0) != 0.0; }

Dialogue ParallelTool::askLayer(Ask& ask, std::string question) {
    const Answer layer =
        co_await ask.keyword(withDefault(question, takesCurrentLayer() ? "Current" : "Source"), "Current Source");
    if (!layer.isEnter()) remember(document(), kCurrentLayer, layer.is("Current") ? 1.0 : 0.0);
}

void ParallelTool::setDistance(double distance) {
    distance_ = distance;
    engine::setSysVar(drawing(), "OFFSETDIST", distance > 0.0 ? distance : -1.0);
}

PickRequest ParallelTool::objectRequest(std::string prompt, std::string_view options) {
    PickRequest request;
    request.prompt = std::move(prompt);
    request.options = options;
    request.usable = engine::canOffset;
    request.refusal = "Cannot offset that object.";
    return request;
}

std::uint64_t ParallelTool::offset(StepGroup& group, engine::Entity& source, const math::Vector2& side, bool erase) {
    const std::optional<double> through = engine::offsetDistanceTo(source, side);
    if (!through) {
        message("Requires a point off the object.");
        return 0;
    }
    const auto gap = static_cast<math::OffsetGap>(std::clamp(engine::sysVarInt(drawing(), "OFFSETGAPTYPE"), 0, 2));
    const double distance = distance_ > 0.0 ? std::copysign(distance_, *through) : *through;
    std::vector<std::unique_ptr<engine::Entity>> parallels = engine::offsetEntity(source, distance, gap);
    if (parallels.empty()) {
        message("No parallel at that offset.");
        return 0;
    }
    group.begin();
    std::uint64_t first = 0;
    for (std::unique_ptr<engine::Entity>& parallel : parallels) {
        if (takesCurrentLayer()) parallel->layer = drawing().currentLayer;
        const std::uint64_t id = document().addEntity(std::move(parallel)).id();
        if (first == 0) first = id;
    }
    if (erase) document().removeEntity(source);
    return first;
}

}  // namespace kova::cmd::commands
