#include "cmd/dialogue.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/format.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/object_plane.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/path.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockReferenceEntity;
using math::Vector2;

using Polygon = std::vector<Vector2>;

/// Points that a clip may have; more come from no sensible boundary.
constexpr std::size_t kMaxPoints = 100'000;

/// XCLIP: shows only a part of block references.
class XclipTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        for (const std::uint64_t id : selected.ids)
            if (dynamic_cast<const BlockReferenceEntity*>(drawing().findById(id)) != nullptr) ids_.push_back(id);
        if (ids_.empty()) {
            if (!selected.ids.empty()) message("No block references selected.");
            co_return;
        }
        const Answer option = co_await ask.keyword(
            "Enter clipping option [ON/OFF/Clipdepth/Delete/generate Polyline/New boundary] <New>:",
            "ON OFF Clipdepth Delete Polyline New");
        if (option.is("ON") || option.is("OFF"))
            edit(true, [&](BlockReferenceEntity& reference) { reference.clipEnabled = option.is("ON"); });
        else if (option.is("CLIPDEPTH"))
            message("Clips have no depth here.");
        else if (option.is("DELETE"))
            edit(true, remove);
        else if (option.is("POLYLINE"))
            generate();
        else
            co_await define(ask);
    }

private:
    std::vector<BlockReferenceEntity*> references() const {
        std::vector<BlockReferenceEntity*> found;
        for (const std::uint64_t id : ids_)
            if (auto* reference = dynamic_cast<BlockReferenceEntity*>(drawing().findById(id)))
                found.push_back(reference);
        return found;
    }

    static bool hasClip(const BlockReferenceEntity& reference) { return reference.clipBoundary.size() >= 2; }
    static void remove(BlockReferenceEntity& reference) {
        reference.clipBoundary.clear();
        reference.clipInverted = false;
        reference.clipEnabled = true;
    }

    /// Changes the references, `clipped`: only those with a boundary.
    void edit(bool clipped, const std::function<void(BlockReferenceEntity&)>& change) {
        const doc::GroupScope group(document(), "XCLIP");
        std::size_t count = 0;
        for (BlockReferenceEntity* reference : references()) {
            if (clipped && !hasClip(*reference)) continue;
            document().modifyEntity(
                *reference, [&](engine::Entity& entity) { change(static_cast<BlockReferenceEntity&>(entity)); });
            ++count;
        }
        if (count == 0) message("No clipping boundary found.");
        repaint();
    }

    /// A polyline along each boundary.
    void generate() {
        const doc::GroupScope group(document(), "XCLIP");
        std::size_t count = 0;
        for (const BlockReferenceEntity* reference : references()) {
            BlockReferenceEntity copy(*reference);
            copy.clipEnabled = true;
            Polygon polygon = copy.clipPolygon();
            if (polygon.empty()) continue;
            const math::Matrix4 matrix = reference->blockMatrix();
            for (Vector2& p : polygon) p = matrix.transform_point(p);
            addNew(document(), std::make_unique<engine::PolylineEntity>(std::move(polygon), true), "XCLIP");
            ++count;
        }
        if (count == 0) message("No clipping boundary found.");
    }

    Dialogue define(Ask& ask) {
        const auto all = references();
        if (std::any_of(all.begin(), all.end(), [](const auto* r) { return hasClip(*r); })) {
            const bool replace = co_await askYesNo(ask, "Delete old boundary(s)? [Yes/No] <Yes>:", true);
            if (!replace) co_return;
        }
        bool inverted = false;
        Polygon polygon;
        for (;;) {
            const Answer kind = co_await ask.keyword(
                "Specify clipping boundary or select invert option: [Select polyline/Polygonal/Rectangular/Invert "
                "clip] <Rectangular>:",
                "Select Polygonal Rectangular Invert");
            if (kind.is("INVERT")) {
                inverted = !inverted;
                message(inverted ? "Outside mode - Objects inside boundary will be hidden."
                                 : "Inside mode - Objects outside boundary will be hidden.");
                continue;
            }
            if (kind.is("SELECT"))
                polygon = co_await byPolyline(ask);
            else if (kind.is("POLYGONAL"))
                polygon = co_await byPoints(ask);
            else
                polygon = co_await byCorners(ask);
            break;
        }
        if (polygon.size() < 3) co_return;
        const std::size_t chosen = clip(polygon, inverted);
        if (chosen == 0) message("The boundary cannot be used.");
    }

    std::size_t clip(const Polygon& polygon, bool inverted) {
        const doc::GroupScope group(document(), "XCLIP");
        std::size_t count = 0;
        for (BlockReferenceEntity* reference : references()) {
            // The boundary stands in the block's own coordinates.
            const auto toBlock = reference->blockMatrix().inverse();
            if (!toBlock) continue;
            document().modifyEntity(*reference, [&](engine::Entity& entity) {
                auto& target = static_cast<BlockReferenceEntity&>(entity);
                target.clipBoundary.clear();
                for (const Vector2& p : polygon) target.clipBoundary.push_back(toBlock->transform_point(p));
                target.clipInverted = inverted;
                target.clipEnabled = true;
            });
            ++count;
        }
        repaint();
        return count;
    }

    Task<Polygon> byCorners(Ask& ask) {
        const Answer first = co_await ask.point("Specify first corner:");
        if (!first.isPoint()) co_return Polygon();
        const Answer second = co_await ask.point("Specify opposite corner:", {}, first.point);
        if (!second.isPoint()) co_return Polygon();
        // Its sides run along the axes of the current coordinate system.
        const engine::Ucs& ucs = drawing().ucs;
        const Vector2 a = ucs.fromWorld(first.point);
        const Vector2 b = ucs.fromWorld(second.point);
        if (a.x == b.x || a.y == b.y) {
            message("The boundary needs a width and a height.");
            co_return Polygon();
        }
        Polygon polygon;
        polygon.push_back(ucs.toWorld(a));
        polygon.push_back(ucs.toWorld({b.x, a.y}));
        polygon.push_back(ucs.toWorld(b));
        polygon.push_back(ucs.toWorld({a.x, b.y}));
        co_return polygon;
    }

    Task<Polygon> byPoints(Ask& ask) {
        const Answer first = co_await ask.point("Specify first point:");
        if (!first.isPoint()) co_return Polygon();
        Polygon polygon(1, first.point);
        for (;;) {
            const Answer next = co_await ask.point("Specify next point or [Undo]:", "Undo", polygon.back());
            if (next.isPoint() && polygon.size() < kMaxPoints) polygon.push_back(next.point);
            if (next.is("UNDO") && polygon.size() > 1) polygon.pop_back();
            if (!next.isEnter()) continue;
            if (polygon.size() < 3) message("A boundary needs at least three points.");
            co_return polygon;
        }
    }

    Task<Polygon> byPolyline(Ask& ask) {
        const Answer pick = co_await ask.object("Select polyline:", {}, [](const engine::Entity& entity) {
            return entity.type() == engine::EntityType::Polyline;
        });
        const engine::Entity* entity = pick.isObject() ? drawing().findById(pick.id) : nullptr;
        if (entity == nullptr) co_return Polygon();
        const auto& polyline = static_cast<const engine::PolylineEntity&>(*entity);
        const math::Bounds2 box = polyline.bounds();
        const double size = box.is_empty() ? 1.0 : std::max(box.width(), box.height());
        Polygon polygon;
        for (const auto& figure : engine::flattenPath(polyline.path(), std::max(size * 1e-4, 1e-12)))
            for (const Vector2& p : figure)
                if (polygon.size() < kMaxPoints) polygon.push_back(engine::planFromObject(polyline, p));
        if (polygon.size() > 1 && polygon.front() == polygon.back()) polygon.pop_back();
        if (polygon.size() < 3) message("A boundary needs at least three points.");
        co_return polygon;
    }

    std::vector<std::uint64_t> ids_;
};

}  // namespace

KOVA_TOOL_COMMAND(Xclip, "XCLIP", "Clip Reference", "Insert", {"XC"})

}  // namespace kova::cmd::commands
