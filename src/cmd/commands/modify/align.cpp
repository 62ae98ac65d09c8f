#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Matrix4;
using math::Vector2;

struct PointPair {
    Vector2 source;
    Vector2 destination;
};

/// The map that lays the source points onto the destination points: the first exactly, the others by direction and
/// (third pair) by side.
Matrix4 alignment(const std::vector<PointPair>& pairs, bool scale) {
    const Vector2 from = pairs[0].source;
    const Vector2 to = pairs[0].destination;
    if (pairs.size() < 2) return Matrix4::translation(to - from);
    const Vector2 a = pairs[1].source - from;
    const Vector2 b = pairs[1].destination - to;
    const double factor = scale ? b.length() / a.length() : 1.0;
    double side = 1.0;
    if (pairs.size() > 2) {
        // On the other side of the line the objects are turned over it, as in space.
        const double before = a.cross(pairs[2].source - from);
        const double after = b.cross(pairs[2].destination - to);
        if (before * after < 0.0) side = -1.0;
    }
    return Matrix4::translation(to) * Matrix4::rotation_z(b.angle()) *
           Matrix4::scaling(factor, factor * side, factor * side) * Matrix4::rotation_z(-a.angle()) *
           Matrix4::translation(-from);
}

/// ALIGN: moves, turns and (two pairs) scales objects by pairs of points.
class AlignTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        std::vector<PointPair> pairs;
        static constexpr const char* kSource[] = {
            "Specify first source point:", "Specify second source point:", "Specify third source point or <continue>:"};
        static constexpr const char* kDestination[] = {
            "Specify first destination point:", "Specify second destination point:",
            "Specify third destination point:"};
        while (pairs.size() < 3) {
            const Answer source = co_await ask.point(kSource[pairs.size()]);
            if (!source.isPoint()) break;
            if (pairs.size() == 1 && source.point == pairs[0].source) {
                message("The two points coincide.");
                continue;
            }
            Answer destination;
            for (;;) {
                destination = co_await ask.point(kDestination[pairs.size()], {}, source.point);
                if (pairs.size() != 1 || !destination.isPoint() || destination.point != pairs[0].destination) break;
                message("The two points coincide.");
            }
            if (!destination.isPoint()) co_return;
            pairs.push_back({source.point, destination.point});
        }
        if (pairs.empty()) co_return;
        bool scale = false;
        if (pairs.size() == 2)
            scale = co_await askYesNo(ask, "Scale objects based on alignment points? [Yes/No] <N>:", false);
        const doc::GroupScope group(document(), "ALIGN");
        document().transformEntities(selected.ids, alignment(pairs, scale));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Align, "ALIGN", "Align", "Modify", {"AL"})

}  // namespace kova::cmd::commands
