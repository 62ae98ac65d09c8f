#include "cmd/prompts/hatch_areas.hpp"
#include "cmd/prompts/hatch_prompts.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/region.hpp"
#include "math/curves/ring_nesting.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using engine::HatchEntity;
using engine::HatchLoop;
using math::Vector2;

/// HATCHEDIT: one hatch gets another pattern, other bounds, another place in the drawing order ...
class HatchEditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const auto isHatch = [](const Entity& e) { return e.type() == engine::EntityType::Hatch; };
        const Answer picked = co_await ask.object("Select hatch object:", {}, isHatch);
        if (!picked.isObject()) co_return;
        id_ = picked.id;
        const Answer option = co_await ask.keyword(
            "Enter hatch option [DIsassociate/Style/Properties/DRaw order/ADd boundaries/Remove boundaries/recreate "
            "Boundary/ASsociate/separate Hatches/Origin/ANnotative/hatch COlor/LAyer/Transparency] <Properties>:",
            "DIsassociate Style Properties DRaworder ADd Remove Boundary ASsociate Hatches Origin ANnotative COlor "
            "LAyer Transparency");
        if (hatch() == nullptr) co_return;
        if (option.isEnter() || option.is("PROPERTIES")) {
            HatchFill fill = HatchFill::of(*hatch());
            co_await askHatchFill(ask, drawing(), fill);
            change([&](HatchEntity& h) { fill.applyTo(h); });
        } else if (option.is("DISASSOCIATE")) {
            dissociate();
        } else if (option.is("STYLE")) {
            std::int32_t style = hatch()->islandStyle;
            co_await askIslandStyle(ask, "Enter hatching style [Ignore/Outer/Normal]", style);
            change([&](HatchEntity& h) { h.islandStyle = style; });
        } else if (option.is("DRAWORDER")) {
            const std::optional<int> order = co_await askHatchOrder(ask);
            if (hatch() != nullptr) reorder(order.value_or(3));
        } else if (option.is("ADD")) {
            co_await addBoundaries(ask);
        } else if (option.is("REMOVE")) {
            co_await removeBoundaries(ask);
        } else if (option.is("BOUNDARY")) {
            co_await recreateBoundary(ask);
        } else if (option.is("ASSOCIATE")) {
            co_await takeBoundary(ask);
        } else if (option.is("HATCHES")) {
            separate();
        } else if (option.is("ORIGIN")) {
            co_await askOrigin(ask);
        } else if (option.is("ANNOTATIVE")) {
            const bool annotative = co_await askYesNo(ask, "Create annotative hatch [Yes/No] <N>:", false);
            change([&](HatchEntity& h) { h.setAnnotative(annotative); });
        } else if (option.is("COLOR")) {
            std::string prompt = withDefault("Enter hatch color", engine::colorText(hatch()->color));
            const auto color = co_await askColor(ask, std::move(prompt));
            if (color) change([&](HatchEntity& h) { h.color = *color; });
        } else if (option.is("LAYER")) {
            co_await askLayer(ask);
        } else {
            std::string prompt = withDefault("Enter hatch transparency (0-90)", std::to_string(hatch()->transparency));
            const Answer value = co_await ask.integer(std::move(prompt), 0, 90);
            if (value.isNumber()) change([&](HatchEntity& h) { h.transparency = value.integer(); });
        }
    }

private:
    /// Null when it is gone.
    HatchEntity* hatch() const { return dynamic_cast<HatchEntity*>(drawing().findById(id_)); }

    void change(const std::function<void(HatchEntity&)>& edit) {
        if (hatch() == nullptr) return;
        const doc::GroupScope group(document(), "HATCHEDIT");
        document().modifyEntity(*hatch(), [&](Entity& e) { edit(static_cast<HatchEntity&>(e)); });
    }

    /// What the hatch follows, else the entities of the space that have the extents of one of the loops.
    std::vector<std::uint64_t> boundaryObjects() const {
        if (hatch()->isAssociative()) return followedObjects();
        std::vector<math::Bounds2> boxes;
        for (const HatchLoop& loop : hatch()->loops) boxes.push_back(engine::pathBounds(loop.path()));
        const auto lower = [](const math::Bounds2& a, const math::Bounds2& b) { return a.min.x < b.min.x; };
        std::sort(boxes.begin(), boxes.end(), lower);
        std::vector<std::uint64_t> ids;
        for (const Entity& entity : drawing().currentSpace()) {
            if (entity.type() == engine::EntityType::Hatch) continue;
            const math::Bounds2 own = entity.bounds();
            const double near = 1e-6 * (1.0 + own.width() + own.height());
            math::Bounds2 from = own;
            from.min.x -= near;
            for (auto it = std::lower_bound(boxes.begin(), boxes.end(), from, lower);
                 it != boxes.end() && it->min.x <= own.min.x + near; ++it) {
                if (!it->min.near_equal(own.min, near) || !it->max.near_equal(own.max, near)) continue;
                ids.push_back(entity.id());
                break;
            }
        }
        return ids;
    }

    std::vector<std::uint64_t> followedObjects() const {
        std::vector<std::uint64_t> ids;
        for (const HatchLoop& loop : hatch()->loops)
            for (const std::uint64_t handle : loop.sources)
                if (const Entity* entity = drawing().findByHandle(handle)) ids.push_back(entity->id());
        return ids;
    }

    void dissociate() {
        if (!hatch()->isAssociative()) return message("The hatch is not associative.");
        change([](HatchEntity& h) { h.dissociate(); });
    }

    void reorder(int mode) {
        const std::vector<std::uint64_t> objects = boundaryObjects();
        if (mode >= 3 && objects.empty()) return message("The boundary is not known: send the hatch to back or front.");
        const doc::GroupScope group(document(), "HATCHEDIT");
        orderHatches(document(), {hatch()}, objects, mode);
    }

    Dialogue addBoundaries(Ask& ask) {
        HatchAreaFinder finder(document());
        finder.setGap(engine::sysVarReal(drawing(), "HPGAPTOL", 0.0));
        std::vector<HatchLoop> added;
        std::vector<Vector2> seeds;
        for (;;) {
            const Answer answer = co_await ask.point("Specify internal point or [Select objects]:", "Select");
            if (answer.isEnter() || hatch() == nullptr) break;
            std::optional<HatchArea> area;
            if (answer.isPoint()) {
                area = finder.around(answer.point, hatch()->islandStyle, true);
            } else {
                const Answer selected = co_await ask.selection();
                document().selection().clear();
                area = areaOfObjects(document(), selected.ids, engine::sysVarReal(drawing(), "HPGAPTOL", 0.0));
            }
            if (!area || area->loops.empty()) {
                message(area ? area->refusal : finder.refusal());
                continue;
            }
            // An outline that is there already would leave its area free.
            const auto known = [&](const HatchLoop& loop) {
                const auto same = [&](const HatchLoop& other) { return sameOutline(other, loop); };
                return hatch() != nullptr && (std::any_of(hatch()->loops.begin(), hatch()->loops.end(), same) ||
                                              std::any_of(added.begin(), added.end(), same));
            };
            if (known(area->loops.front())) {
                message("That area is chosen already.");
                continue;
            }
            std::move(area->loops.begin(), area->loops.end(), std::back_inserter(added));
            if (area->seed) seeds.push_back(*area->seed);
        }
        if (added.empty()) co_return;
        // A hatch that follows nothing goes on so.
        if (hatch() == nullptr || !hatch()->isAssociative())
            for (HatchLoop& loop : added) loop.sources.clear();
        change([&](HatchEntity& h) {
            h.loops.insert(h.loops.end(), added.begin(), added.end());
            h.seedPoints.insert(h.seedPoints.end(), seeds.begin(), seeds.end());
        });
    }

    Dialogue removeBoundaries(Ask& ask) {
        const Answer selected = co_await ask.selection("Select objects to remove:");
        document().selection().clear();
        const auto figures = closedFigures(document(), selected.ids);
        if (hatch() == nullptr) co_return;
        std::vector<HatchLoop> loops = hatch()->loops;
        const std::size_t removed = removeLoops(loops, figures.loops);
        if (loops.empty()) co_return message("A hatch needs a boundary.");
        if (removed > 0) change([&](HatchEntity& h) { h.loops = loops; });
        message(counted(removed, "boundary loop") + " removed.");
    }

    Dialogue recreateBoundary(Ask& ask) {
        const Answer kind =
            co_await ask.keyword("Enter type of boundary object [Region/Polyline] <Polyline>:", "Region Polyline");
        const bool follow = co_await askYesNo(ask, "Associate hatch with new boundary? [Yes/No] <N>:", false);
        if (hatch() == nullptr) co_return;
        std::vector<HatchLoop> loops = hatch()->loops;
        const doc::GroupScope group(document(), "HATCHEDIT");
        for (HatchLoop& loop : loops) {
            std::unique_ptr<Entity> outline;
            math::BoundaryLoop figure = polylineLoop(loop);
            if (kind.is("REGION")) {
                auto region = std::make_unique<engine::RegionEntity>();
                region->vertices = std::move(figure.points);
                region->bulges = std::move(figure.bulges);
                outline = std::move(region);
            } else {
                outline = polylineOf(figure);
            }
            applyCurrentValues(document(), *outline);
            outline->elevation = hatch()->elevation;
            outline->setNormal(hatch()->normal());
            // What is made of the text's box is no text any more.
            if (follow) loop.type &= ~(HatchLoop::kTextBox | HatchLoop::kDerived);
            loop.sources = {document().addEntity(std::move(outline)).handle()};
        }
        if (follow) change([&](HatchEntity& h) { h.loops = loops; });
        message(counted(loops.size(), "boundary object") + " created.");
    }

    /// The hatch fills what other objects enclose.
    Dialogue takeBoundary(Ask& ask) {
        const Answer selected = co_await ask.selection();
        document().selection().clear();
        if (selected.ids.empty()) co_return;
        HatchArea area = areaOfObjects(document(), selected.ids, engine::sysVarReal(drawing(), "HPGAPTOL", 0.0));
        if (area.loops.empty()) co_return message(area.refusal);
        change([&](HatchEntity& h) {
            h.loops = area.loops;
            h.seedPoints.clear();
        });
    }

    /// Leaves out the points picked in what is no part of the hatch any more.
    static void keepSeeds(HatchEntity& hatch) {
        const engine::Path area = hatch.boundary();
        const std::vector<engine::Ring> rings = engine::ringsOf(area);
        std::erase_if(hatch.seedPoints, [&](const Vector2& p) { return !engine::insideRings(rings, p); });
    }

    /// Every outer loop with the islands in it becomes a hatch of its own.
    void separate() {
        const std::vector<HatchLoop> loops = hatch()->loops;
        std::vector<std::vector<engine::Ring>> rings;
        for (const HatchLoop& loop : loops) rings.push_back(engine::ringsOf(loop.path()));
        const auto depths = engine::ringDepths(rings);
        if (!depths) return message("The boundary is too large for that.");
        // Even depths are filled, odd ones are holes of the filled loop around them.
        std::vector<std::vector<HatchLoop>> parts;
        std::vector<std::size_t> owners;
        for (std::size_t i = 0; i < loops.size(); ++i) {
            if ((*depths)[i] % 2 != 0) continue;
            parts.push_back({loops[i]});
            owners.push_back(i);
        }
        for (std::size_t i = 0; i < loops.size(); ++i) {
            if ((*depths)[i] % 2 == 0 || rings[i].empty()) continue;
            const auto inside = engine::pointInside(rings[i].front());
            for (std::size_t k = 0; inside && k < owners.size(); ++k)
                if ((*depths)[owners[k]] == (*depths)[i] - 1 && engine::insideRings(rings[owners[k]], *inside)) {
                    parts[k].push_back(loops[i]);
                    break;
                }
        }
        if (parts.size() < 2) return message("The hatch has one area only.");
        const doc::GroupScope group(document(), "HATCHEDIT");
        std::vector<Entity*> made;
        for (std::size_t k = 1; k < parts.size(); ++k) {
            auto copy = std::make_unique<HatchEntity>(*hatch());
            copy->setHandle(0);
            copy->loops = parts[k];
            keepSeeds(*copy);
            made.push_back(&document().addEntity(std::move(copy)));
        }
        document().modifyEntity(*hatch(), [&](Entity& e) {
            static_cast<HatchEntity&>(e).loops = parts.front();
            keepSeeds(static_cast<HatchEntity&>(e));
        });
        orderHatches(document(), made, {id_}, 4);
        message(counted(parts.size(), "separate area") + ".");
    }

    Dialogue askOrigin(Ask& ask) {
        const Answer answer = co_await ask.keyword(
            "[Use current origin/Set new origin/Default to boundary extents] <Use current origin>:", "Use Set Default");
        std::optional<Vector2> origin;
        if (answer.is("SET")) {
            const Answer point = co_await ask.point("Specify origin point:");
            if (!point.isPoint()) co_return;
            origin = point.point;
        } else if (answer.is("DEFAULT")) {
            const int corner = co_await askOriginCorner(ask);
            if (hatch() != nullptr) origin = hatchOriginAt(corner, hatch()->loops);
        } else if (const auto value = engine::getSysVar(drawing(), "HPORIGIN")) {
            if (const auto* p = std::get_if<math::Vector3>(&*value)) origin = p->xy();
        }
        if (origin) change([&](HatchEntity& h) { h.patternOrigin = *origin; });
    }

    Dialogue askLayer(Ask& ask) {
        for (;;) {
            std::string prompt = withDefault("Enter hatch layer", hatch()->layer.view());
            const Answer answer = co_await ask.text(std::move(prompt));
            if (answer.isEnter() || hatch() == nullptr) co_return;
            const engine::Name name(typedName(answer.text));
            if (const engine::Layer* layer = drawing().layers.find(name)) {
                change([&](HatchEntity& h) { h.layer = layer->name; });
                co_return;
            }
            message("Unknown layer " + inQuotes(name) + ".");
        }
    }

    std::uint64_t id_ = 0;
};

}  // namespace

KOVA_TOOL_COMMAND(HatchEdit, "HATCHEDIT", "Edit Hatch", "Modify", {"HE"})

}  // namespace kova::cmd::commands
