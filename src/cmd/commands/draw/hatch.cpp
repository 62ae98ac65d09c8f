#include "engine/entities/hatch.hpp"

#include "cmd/prompts/hatch_areas.hpp"
#include "cmd/prompts/hatch_prompts.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/text_or_point.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd::commands {

namespace {

using engine::HatchEntity;
using engine::HatchLoop;
using math::BoundaryLoop;
using math::Vector2;

/// HATCH: fills areas round picked points, selected objects or drawn outlines. What the user names stays for the next
/// call in the HP variables.
class HatchTool : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        fill_ = HatchFill::current(drawing());
        if (startsWithGradient()) co_await askHatchGradient(ask, drawing(), fill_);
        const std::string prompt =
            "Specify internal point or [Properties/Select objects/draW boundary/remove Boundaries/Advanced/DRaw "
            "order/Origin/ANnotative/hatch COlor/LAyer/Transparency]:";
        for (;;) {
            // As text: the name of a pattern here is the short old way to the same end.
            const Answer answer =
                co_await ask.text(prompt,
                                  "Properties Select draWboundary Boundaries Advanced DRaworder Origin "
                                  "ANnotative COlor LAyer Transparency Undo");
            if (answer.isEnter()) break;
            if (answer.isText()) {
                const PointOfText typed =
                    co_await pointOfText(ask, document(), answer.text, ask.lastPoint(), cursor());
                if (typed.told) continue;
                if (typed.point) {
                    ask.setLastPoint(*typed.point);
                    pick(*typed.point);
                } else if (fill_.choose(drawing(), trimmed(answer.text))) {
                    co_await askOldForm(ask);
                    break;
                } else {
                    message("Invalid point or option keyword.");
                }
            } else if (answer.is("PROPERTIES")) {
                co_await askHatchFill(ask, drawing(), fill_);
                fill_.store(drawing());
            } else if (answer.is("SELECT")) {
                co_await askObjects(ask);
            } else if (answer.is("DRAWBOUNDARY")) {
                co_await askOutline(ask);
            } else if (answer.is("BOUNDARIES")) {
                co_await askRemoved(ask);
            } else if (answer.is("ADVANCED")) {
                co_await askAdvanced(ask);
            } else if (answer.is("DRAWORDER")) {
                co_await askOrder(ask);
            } else if (answer.is("ORIGIN")) {
                co_await askOrigin(ask);
            } else if (answer.is("ANNOTATIVE")) {
                annotative_ = co_await askYesNo(ask, "Create annotative hatch [Yes/No] <N>:", false);
            } else if (answer.is("UNDO")) {
                if (areas_.empty())
                    message("Nothing to undo.");
                else
                    areas_.pop_back();
            } else {
                co_await askProperty(ask, answer.word);
            }
        }
        apply();
    }

    void mousePress(const Vector2& point, int button) override {
        if (button == kLeftButton && prompt().starts_with("Specify internal point")) return pick(point);
        DialogueTool::mousePress(point, button);
    }

    virtual bool startsWithGradient() const { return false; }

private:
    // Settings ----------------------------------------------------------------------------------------------

    void set(const char* name, const engine::SysVarValue& value) { engine::setSysVar(drawing(), name, value); }
    double real(const char* name, double fallback) const { return engine::sysVarReal(drawing(), name, fallback); }

    Dialogue askOldForm(Ask& ask) {
        co_await askHatchScale(ask, drawing(), fill_);
        fill_.store(drawing());
        co_await askObjects(ask);
    }

    Dialogue askAdvanced(Ask& ask) {
        for (;;) {
            const Answer option = co_await ask.keyword(
                "Enter an option [Boundary set/Retain boundary/Island detection/Style/Associativity/Gap "
                "tolerance/separate Hatches]:",
                "Boundary Retain Island Style Associativity Gap Hatches");
            if (option.is("BOUNDARY")) {
                const Answer kind = co_await ask.keyword(
                    "Specify candidate set for boundary [New/Everything] <Everything>:", "New Everything");
                std::optional<std::vector<std::uint64_t>> only;
                if (kind.is("NEW")) {
                    const Answer chosen = co_await ask.selection();
                    only = chosen.ids;
                    document().selection().clear();
                }
                if (!finder_) finder_.emplace(document());
                finder_->limitTo(std::move(only));
            } else if (option.is("RETAIN")) {
                retain_ = co_await askYesNo(ask, "Retain derived boundaries? [Yes/No] <N>:", false);
            } else if (option.is("ISLAND")) {
                islands_ = co_await askYesNo(ask, "Do you want island detection? [Yes/No] <Y>:", true);
            } else if (option.is("STYLE")) {
                co_await askIslandStyle(ask, "Enter hatching style [Ignore/Outer/Normal]", fill_.islandStyle);
                set("HPISLANDDETECTION", fill_.islandStyle);
            } else if (option.is("ASSOCIATIVITY")) {
                const bool follows = co_await askYesNo(ask, "Do you want associativity? [Yes/No] <Y>:", true);
                set("HPASSOC", follows ? 1 : 0);
            } else if (option.is("GAP")) {
                std::string prompt = withDefault("Specify a boundary gap tolerance value",
                                                 lengthDefault(drawing(), real("HPGAPTOL", 0.0)));
                Range range;
                range.minimum = 0.0;
                range.maximum = 5000.0;
                const Answer gap = co_await ask.distance(std::move(prompt), {}, {}, range);
                if (gap.isNumber()) set("HPGAPTOL", gap.number);
            } else if (option.is("HATCHES")) {
                const bool separate = co_await askYesNo(ask, "Create separate hatches? [Yes/No] <N>:", false);
                set("HPSEPARATE", separate ? 1 : 0);
            } else {
                co_return;
            }
        }
    }

    Dialogue askOrder(Ask& ask) {
        const std::optional<int> order = co_await askHatchOrder(ask);
        if (order) set("HPDRAWORDER", *order);
    }

    Dialogue askOrigin(Ask& ask) {
        const Answer origin = co_await ask.point(
            "Specify pattern origin or [use Current origin/Default to boundary extents] <Current>:", "Current Default");
        if (origin.isPoint()) {
            set("HPORIGIN", math::Vector3(origin.point));
            set("HPORIGINMODE", 0);
        } else if (origin.is("DEFAULT")) {
            const int mode = co_await askOriginCorner(ask);
            set("HPORIGINMODE", mode);
        }
    }

    Dialogue askProperty(Ask& ask, std::string which) {
        if (which == "COLOR") {
            const auto color = co_await askColor(ask, "Enter hatch color <current>:");
            set("HPCOLOR", color ? engine::colorText(*color) : std::string());
        } else if (which == "LAYER") {
            const Answer name = co_await ask.text("Enter hatch layer <current>:");
            const std::string layer = typedName(name.text);
            if (!name.isText()) {
                set("HPLAYER", std::string());
            } else if (drawing().layers.find(engine::Name(layer)) != nullptr) {
                set("HPLAYER", layer);
            } else {
                message("Layer " + inQuotes(layer) + " not found.");
            }
        } else {
            const Answer value = co_await ask.integer("Enter hatch transparency (0-90) <current>:", 0, 90);
            set("HPTRANSPARENCY", value.isNumber() ? std::to_string(value.integer()) : std::string());
        }
    }

    // Areas -------------------------------------------------------------------------------------------------

    void pick(const Vector2& p) {
        if (!finder_) finder_.emplace(document());
        finder_->setGap(real("HPGAPTOL", 0.0));
        std::optional<HatchArea> area = finder_->around(p, fill_.islandStyle, islands_);
        if (!area) return message(finder_->refusal());
        // Twice the same outline would leave the area free.
        const auto again = [&](const HatchArea& known) {
            return !known.loops.empty() && sameOutline(known.loops.front(), area->loops.front());
        };
        if (std::any_of(areas_.begin(), areas_.end(), again)) return message("That area is chosen already.");
        areas_.push_back(std::move(*area));
    }

    Dialogue askObjects(Ask& ask) {
        const Answer selected = co_await ask.selection();
        document().selection().clear();
        if (selected.ids.empty()) co_return;
        HatchArea area = areaOfObjects(document(), selected.ids, real("HPGAPTOL", 0.0));
        if (area.loops.empty()) co_return message(area.refusal);
        areas_.push_back(std::move(area));
    }

    Dialogue askOutline(Ask& ask) {
        const bool retain = co_await askYesNo(ask, "Retain polyline boundary? [Yes/No] <N>:", false);
        for (;;) {
            const Answer start = co_await ask.point(drawn_ == 0 ? "Specify start point:"
                                                                : "Specify start point for new boundary or <apply "
                                                                  "hatch>:");
            if (!start.isPoint()) co_return;
            BoundaryLoop loop;
            loop.points.push_back(start.point);
            co_await askOutlinePoints(ask, loop);
            loop.bulges.resize(loop.points.size());
            if (loop.points.size() < 2 || !(std::abs(math::signedArea(loop.points, loop.bulges)) > 0.0)) {
                message(kNoHatchBoundary);
                continue;
            }
            HatchArea area;
            area.loops.push_back(hatchLoop(loop, false));
            if (retain) area.kept = std::move(loop);
            areas_.push_back(std::move(area));
            ++drawn_;
        }
    }

    Dialogue askOutlinePoints(Ask& ask, BoundaryLoop& loop) {
        bool arcs = false;
        const auto tangent = [&]() -> Vector2 {
            const std::size_t n = loop.points.size();
            if (n < 2) return drawing().ucs.xAxis;
            const Vector2 chord = (loop.points[n - 1] - loop.points[n - 2]).normalized();
            return Vector2::from_angle(chord.angle() + 2.0 * std::atan(loop.bulges[n - 2]));
        };
        for (;;) {
            const Answer next =
                co_await ask.point(arcs ? "Specify endpoint of arc or [CLose/Line/Undo]:"
                                        : "Specify next point or [Arc/Close/Length/Undo]:",
                                   arcs ? "CLose Line Undo" : "Arc Close Length Undo", loop.points.back());
            loop.bulges.resize(loop.points.size());
            if (next.isPoint()) {
                if (next.point == loop.points.back()) continue;
                loop.bulges.back() = arcs ? math::bulgeFromTangent(loop.points.back(), tangent(), next.point) : 0.0;
                loop.points.push_back(next.point);
            } else if (next.is("ARC")) {
                arcs = true;
            } else if (next.is("LINE")) {
                arcs = false;
            } else if (next.is("LENGTH")) {
                const Answer length = co_await ask.distance("Specify length of line:", {}, loop.points.back());
                if (length.isNumber() && length.number != 0.0)
                    loop.points.push_back(loop.points.back() + tangent() * length.number);
            } else if (next.is("UNDO")) {
                if (loop.points.size() > 1) loop.points.pop_back();
                loop.bulges.resize(loop.points.size());
            } else {
                if (arcs && next.is("CLOSE"))
                    loop.bulges.back() = math::bulgeFromTangent(loop.points.back(), tangent(), loop.points.front());
                co_return;
            }
        }
    }

    /// Takes loops out of the areas chosen so far, by picks of the objects they run along.
    Dialogue askRemoved(Ask& ask) {
        const Answer selected = co_await ask.selection("Select objects to remove:");
        document().selection().clear();
        const auto chosen = closedFigures(document(), selected.ids);
        std::size_t removed = 0;
        for (HatchArea& area : areas_) removed += removeLoops(area.loops, chosen.loops);
        std::erase_if(areas_, [](const HatchArea& area) { return area.loops.empty(); });
        message(counted(removed, "boundary loop") + " removed.");
    }

    // Making ------------------------------------------------------------------------------------------------

    Vector2 originOf(const std::vector<HatchLoop>& loops) const {
        if (const auto corner = hatchOriginAt(engine::sysVarInt(drawing(), "HPORIGINMODE"), loops)) return *corner;
        if (const auto value = engine::getSysVar(drawing(), "HPORIGIN"))
            if (const auto* p = std::get_if<math::Vector3>(&*value)) return p->xy();
        return {};
    }

    std::unique_ptr<HatchEntity> make(std::vector<HatchLoop> loops) {
        auto hatch = std::make_unique<HatchEntity>();
        applyCurrentValues(document(), *hatch);
        if (const auto color = engine::parseColor(engine::sysVarString(drawing(), "HPCOLOR"))) hatch->color = *color;
        const engine::Name layer(engine::sysVarString(drawing(), "HPLAYER"));
        if (drawing().layers.find(layer) != nullptr) hatch->layer = layer;
        if (const auto percent = parseInteger(engine::sysVarString(drawing(), "HPTRANSPARENCY")))
            hatch->transparency = std::clamp(*percent, 0, 90);
        hatch->setAnnotative(annotative_);
        hatch->patternOrigin = originOf(loops);
        fill_.applyTo(*hatch);
        hatch->loops = std::move(loops);
        return hatch;
    }

    void apply() {
        if (areas_.empty()) return;
        const doc::GroupScope group(document(), "HATCH");
        const bool separate = engine::sysVarInt(drawing(), "HPSEPARATE") != 0;
        std::vector<engine::Entity*> made;
        std::vector<std::uint64_t> sources;
        std::vector<HatchLoop> all;
        std::vector<Vector2> seeds;
        const auto add = [&] {
            auto hatch = make(std::move(all));
            hatch->seedPoints = std::move(seeds);
            made.push_back(&document().addEntity(std::move(hatch)));
            all.clear();
            seeds.clear();
        };
        if (retain_) retainOutlines();
        const bool follows = engine::sysVarInt(drawing(), "HPASSOC", 1) != 0;
        for (HatchArea& area : areas_) {
            if (area.kept) area.loops.front().sources.push_back(addPolyline(*area.kept).handle());
            if (!follows)
                for (HatchLoop& loop : area.loops) loop.sources.clear();
            std::move(area.loops.begin(), area.loops.end(), std::back_inserter(all));
            sources.insert(sources.end(), area.sources.begin(), area.sources.end());
            if (area.seed) seeds.push_back(*area.seed);
            if (separate) add();
        }
        if (!all.empty()) add();
        // New entities are in front of all others.
        const int order = engine::sysVarInt(drawing(), "HPDRAWORDER", 3);
        if (order == 1 || order == 3) orderHatches(document(), made, sources, order);
    }

    engine::Entity& addPolyline(const BoundaryLoop& loop) {
        auto polyline = polylineOf(loop);
        applyCurrentValues(document(), *polyline);
        return document().addEntity(std::move(polyline));
    }
    void retainOutlines() {
        for (const HatchArea& area : areas_)
            for (const HatchLoop& loop : area.loops)
                if ((loop.type & HatchLoop::kDerived) != 0 && (loop.type & HatchLoop::kTextBox) == 0)
                    addPolyline(polylineLoop(loop));
    }

    HatchFill fill_;
    bool annotative_ = false;
    bool islands_ = true;
    bool retain_ = false;
    std::vector<HatchArea> areas_;
    int drawn_ = 0;
    std::optional<HatchAreaFinder> finder_;
};

/// GRADIENT: the same with a gradient asked for first.
class GradientTool final : public HatchTool {
protected:
    bool startsWithGradient() const override { return true; }
};

}  // namespace

KOVA_TOOL_COMMAND(Hatch, "HATCH", "Hatch", "Draw", {"H", "BH"})
KOVA_TOOL_COMMAND(Gradient, "GRADIENT", "Gradient", "Draw", {"GD"})

}  // namespace kova::cmd::commands
