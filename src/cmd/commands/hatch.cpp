#include "engine/entities/hatch.hpp"

#include "cmd/boundary_shapes.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/format.hpp"
#include "cmd/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "engine/libraries.hpp"
#include "math/curves.hpp"
#include "math/polygon.hpp"

#include <set>

namespace kova::cmd::commands {

namespace {

using engine::HatchEntity;
using engine::HatchLoop;
using math::BoundaryLoop;
using math::Vector2;

constexpr const char* kGradients =
    "Linear Cylinder Invcylinder SPherical Hemispherical Curved INVSpherical "
    "INVHemispherical INVCurved";

/// One area to be filled: its loops, and the entities they were taken from.
struct Area {
    std::vector<HatchLoop> loops;
    std::vector<std::uint64_t> sources;
    std::optional<Vector2> seed;
};

/// HATCH: fills areas round picked points, selected objects or drawn outlines. What the user names stays for the next
/// call in the HP variables.
class HatchTool : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        readSettings();
        if (startsWithGradient()) co_await askGradient(ask);
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
                const auto p = parsePointInput(answer.text, ask.lastPoint(), cursor() - ask.lastPoint(),
                                               PointContext::of(drawing()));
                if (p) {
                    ask.setLastPoint(*p);
                    pick(*p);
                } else if (choosePattern(trimmed(answer.text))) {
                    co_await askOldForm(ask);
                    break;
                } else {
                    message("Invalid point or option keyword.");
                }
            } else if (answer.is("PROPERTIES")) {
                co_await askPattern(ask);
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

    void readSettings() {
        const engine::Drawing& d = drawing();
        pattern_ = engine::Name(engine::sysVarString(d, "HPNAME", "ANSI31"));
        if (pattern_.view().starts_with('_')) user_ = true;
        if (pattern_.empty()) pattern_ = "ANSI31";
        style_ = engine::sysVarInt(d, "HPISLANDDETECTION", 1);
    }
    void set(const char* name, const engine::SysVarValue& value) { engine::setSysVar(drawing(), name, value); }
    double real(const char* name, double fallback) const { return engine::sysVarReal(drawing(), name, fallback); }

    /// Takes a pattern by its name, with ",N" ",O" or ",I" behind it for the island style. False: no such pattern.
    bool choosePattern(std::string_view text) {
        std::string_view name = text;
        int style = style_;
        if (const auto comma = text.find(','); comma != std::string_view::npos) {
            const std::string mode = engine::upperCase(text.substr(comma + 1));
            if (mode != "N" && mode != "O" && mode != "I") return false;
            style = mode == "N" ? HatchEntity::kNormal : mode == "O" ? HatchEntity::kOuter : HatchEntity::kIgnore;
            name = text.substr(0, comma);
        }
        if (name.starts_with('_') || name.empty()) return false;
        const bool solid = engine::equalNoCase(name, "SOLID");
        if (!solid && drawing().findHatchPattern(engine::Name(name)) == nullptr) return false;
        pattern_ = solid ? engine::Name("SOLID") : drawing().findHatchPattern(engine::Name(name))->name;
        style_ = style;
        user_ = false;
        gradient_.reset();
        set("HPNAME", pattern_.str());
        return true;
    }

    Dialogue askScaleAndAngle(Ask& ask) {
        if (pattern_ == "SOLID" && !user_) co_return;
        std::string prompt =
            withDefault("Specify a scale for the pattern", lengthDefault(drawing(), real("HPSCALE", 1.0)));
        const Answer scale = co_await ask.distance(std::move(prompt), {}, {}, kPositive);
        if (scale.isNumber()) set("HPSCALE", scale.number);
        co_await askAngle(ask, "Specify an angle for the pattern");
    }

    Dialogue askAngle(Ask& ask, const char* question) {
        std::string prompt = withDefault(question, lengthDefault(drawing(), math::toDegrees(real("HPANG", 0.0))));
        const Answer angle = co_await ask.angle(std::move(prompt));
        if (angle.isNumber()) set("HPANG", isTyped(angle) ? includedAngle(angle, drawing()) : angle.number);
    }

    Dialogue askPattern(Ask& ask) {
        for (;;) {
            std::string prompt = withDefault("Enter a pattern name or [?/Solid/User defined/Gradient]",
                                             user_ ? std::string_view("U") : pattern_.view());
            const Answer answer = co_await ask.text(std::move(prompt), "? Solid User Gradient");
            if (answer.is("?")) {
                for (const engine::HatchPattern& p : engine::builtinHatchPatterns(drawing().isMetric()))
                    message(p.name.str() + " - " + p.description);
                continue;
            }
            if (answer.is("USER")) co_return co_await askUserPattern(ask);
            if (answer.is("GRADIENT")) co_return co_await askGradient(ask);
            if (answer.is("SOLID")) {
                choosePattern("SOLID");
                co_return;
            }
            if (answer.isEnter() && user_) co_return co_await askUserPattern(ask);
            if (answer.isEnter() || choosePattern(trimmed(answer.text))) {
                gradient_.reset();
                co_return co_await askScaleAndAngle(ask);
            }
            message("Unknown pattern " + quoted(trimmed(answer.text)) + ".");
        }
    }

    Dialogue askUserPattern(Ask& ask) {
        user_ = true;
        gradient_.reset();
        co_await askAngle(ask, "Specify angle for crosshatch lines");
        std::string prompt =
            withDefault("Specify spacing between the lines", lengthDefault(drawing(), real("HPSPACE", 1.0)));
        const Answer space = co_await ask.distance(std::move(prompt), {}, {}, kPositive);
        if (space.isNumber()) set("HPSPACE", space.number);
        const bool doubled = engine::sysVarInt(drawing(), "HPDOUBLE") != 0;
        const bool now = co_await askYesNo(
            ask, doubled ? "Double hatch area? [Yes/No] <Y>:" : "Double hatch area? [Yes/No] <N>:", doubled);
        set("HPDOUBLE", now ? 1 : 0);
    }

    Dialogue askGradient(Ask& ask) {
        const Answer name = co_await ask.keyword(
            "Enter gradient pattern name [Linear/Cylinder/Invcylinder/SPherical/Hemispherical/Curved/INVSpherical/"
            "INVHemispherical/INVCurved] <Linear>:",
            kGradients);
        engine::HatchGradient gradient;
        if (!name.isEnter()) gradient.name = name.word;
        const auto first = co_await askColor(ask, "Enter color 1 <5>:", true);
        const auto second = co_await askColor(ask, "Enter color 2 <single color>:", true);
        gradient.stops.push_back({0.0, first.value_or(engine::Color::index(5))});
        gradient.stops.push_back({1.0, second.value_or(engine::Color::index(7))});
        gradient.singleColor = !second.has_value();
        gradient.tint = second ? 0.0 : 1.0;
        const Answer angle = co_await ask.angle("Specify gradient angle <0>:");
        if (angle.isNumber()) gradient.angle = isTyped(angle) ? includedAngle(angle, drawing()) : angle.number;
        user_ = false;
        gradient_ = std::move(gradient);
    }

    Dialogue askOldForm(Ask& ask) {
        co_await askScaleAndAngle(ask);
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
                limited_ = kind.is("NEW");
                if (limited_) {
                    const Answer chosen = co_await ask.selection();
                    set_ = chosen.ids;
                    document().selection().clear();
                }
                forgetWork();
            } else if (option.is("RETAIN")) {
                retain_ = co_await askYesNo(ask, "Retain derived boundaries? [Yes/No] <N>:", false);
            } else if (option.is("ISLAND")) {
                islands_ = co_await askYesNo(ask, "Do you want island detection? [Yes/No] <Y>:", true);
            } else if (option.is("STYLE")) {
                const char* known[] = {"Normal", "Outer", "Ignore"};
                std::string prompt =
                    withDefault("Enter hatching style [Ignore/Outer/Normal]", known[std::clamp(style_, 0, 2)]);
                const Answer style = co_await ask.keyword(std::move(prompt), "Ignore Outer Normal");
                if (style.is("NORMAL")) style_ = HatchEntity::kNormal;
                if (style.is("OUTER")) style_ = HatchEntity::kOuter;
                if (style.is("IGNORE")) style_ = HatchEntity::kIgnore;
                set("HPISLANDDETECTION", style_);
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
                forgetWork();
            } else if (option.is("HATCHES")) {
                const bool separate = co_await askYesNo(ask, "Create separate hatches? [Yes/No] <N>:", false);
                set("HPSEPARATE", separate ? 1 : 0);
            } else {
                co_return;
            }
        }
    }

    Dialogue askOrder(Ask& ask) {
        const Answer order = co_await ask.keyword(
            "Enter draw order [do Not assign/send to Back/bring to Front/send beHind boundary/bring in front of "
            "bounDary] <send behind boundary>:",
            "Not Back Front beHind bounDary");
        if (order.isEnter()) co_return;
        set("HPDRAWORDER", order.is("NOT")      ? 0
                           : order.is("BACK")   ? 1
                           : order.is("FRONT")  ? 2
                           : order.is("BEHIND") ? 3
                                                : 4);
    }

    Dialogue askOrigin(Ask& ask) {
        const Answer origin = co_await ask.point(
            "Specify pattern origin or [use Current origin/Default to boundary extents] <Current>:", "Current Default");
        if (origin.isPoint()) {
            set("HPORIGIN", math::Vector3(origin.point));
            set("HPORIGINMODE", 0);
        } else if (origin.is("DEFAULT")) {
            const Answer corner = co_await ask.keyword(
                "Specify location [bottom Left/bottom Right/top rIght/top lEft/Center] <bottom Left>:",
                "Left Right rIght lEft Center");
            int mode = 1;
            const std::string typed = engine::upperCase(trimmed(corner.text));
            if (typed == "R" || typed == "RIGHT") mode = 2;
            if (typed == "I") mode = 3;
            if (typed == "E") mode = 4;
            if (typed == "C" || typed == "CENTER") mode = 5;
            set("HPORIGINMODE", mode);
        }
    }

    Dialogue askProperty(Ask& ask, std::string which) {
        if (which == "COLOR") {
            const auto color = co_await askColor(ask, "Enter hatch color <current>:");
            set("HPCOLOR", color ? engine::colorText(*color) : std::string());
        } else if (which == "LAYER") {
            const Answer name = co_await ask.text("Enter hatch layer <current>:");
            if (!name.isText()) {
                set("HPLAYER", std::string());
            } else if (drawing().layers.find(engine::Name(trimmed(name.text))) != nullptr) {
                set("HPLAYER", std::string(trimmed(name.text)));
            } else {
                message("Layer " + quoted(trimmed(name.text)) + " not found.");
            }
        } else {
            const Answer value = co_await ask.integer("Enter hatch transparency (0-90) <current>:", 0, 90);
            set("HPTRANSPARENCY", value.isNumber() ? std::to_string(value.integer()) : std::string());
        }
    }

    // Areas -------------------------------------------------------------------------------------------------

    void forgetWork() {
        work_.reset();
        search_.reset();
    }

    void pick(const Vector2& p) {
        if (!work_) work_ = boundaryWork(document(), limited_ ? &set_ : nullptr);
        if (!search_) search_ = std::make_unique<math::BoundarySearch>(work_->pieces, real("HPGAPTOL", 0.0));
        const bool wanted = islands_ && style_ != HatchEntity::kIgnore;
        const auto found = search_->around(p, wanted);
        if (!found) return message("Valid hatch boundary not found.");
        Area area;
        area.seed = p;
        area.loops.push_back(hatchLoop(found->outer, false));
        // Twice the same outline would leave the area free.
        const auto again = [&](const Area& known) { return sameOutline(known.loops, area.loops.front()); };
        if (std::any_of(areas_.begin(), areas_.end(), again)) return message("That area is chosen already.");
        takeSources(found->outer, area);
        const int deepest = style_ == HatchEntity::kNormal ? 1 << 20 : 0;
        if (wanted) {
            for (const BoundaryLoop& island : found->islands) {
                if (island.depth > deepest) continue;
                area.loops.push_back(hatchLoop(island, true));
                takeSources(island, area);
            }
            for (const BoundaryLoop& box : work_->texts)
                if (isFree(box, *found)) {
                    area.loops.push_back(hatchLoop(box, true));
                    area.loops.back().type |= HatchLoop::kTextBox;
                }
        }
        areas_.push_back(std::move(area));
    }

    /// Whether the first of an area's loops runs as the other one, wherever either begins.
    static bool sameOutline(const std::vector<HatchLoop>& known, const HatchLoop& other) {
        if (known.empty()) return false;
        const HatchLoop& loop = known.front();
        if (loop.vertices.size() != other.vertices.size() || loop.bulges.size() != other.bulges.size()) return false;
        const auto from = std::find(loop.vertices.begin(), loop.vertices.end(), other.vertices.front());
        if (from == loop.vertices.end()) return false;
        const std::size_t n = loop.vertices.size();
        const auto shift = static_cast<std::size_t>(from - loop.vertices.begin());
        for (std::size_t i = 0; i < n; ++i) {
            const std::size_t k = (i + shift) % n;
            if (loop.vertices[k] != other.vertices[i]) return false;
            if (!loop.bulges.empty() && loop.bulges[k] != other.bulges[i]) return false;
        }
        return true;
    }

    /// A text's box is an island when all of it lies in the area, outside the others.
    static bool isFree(const BoundaryLoop& box, const math::BoundaryArea& area) {
        for (const Vector2& p : box.points) {
            if (!math::pointInPolygon(p, area.outer.points, area.outer.bulges)) return false;
            for (const BoundaryLoop& island : area.islands)
                if (math::pointInPolygon(p, island.points, island.bulges)) return false;
        }
        return true;
    }

    void takeSources(const BoundaryLoop& loop, Area& area) const {
        for (const int source : loop.sources) area.sources.push_back(work_->ids[static_cast<std::size_t>(source)]);
    }

    Dialogue askObjects(Ask& ask) {
        const Answer selected = co_await ask.selection();
        document().selection().clear();
        if (selected.ids.empty()) co_return;
        ClosedFigures figures = closedFigures(document(), selected.ids, real("HPGAPTOL", 0.0));
        if (figures.loops.empty()) co_return message("Valid hatch boundary not found.");
        Area area;
        area.loops = std::move(figures.loops);
        area.sources = std::move(figures.used);
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
                message("Valid hatch boundary not found.");
                continue;
            }
            Area area;
            area.loops.push_back(hatchLoop(loop, false));
            areas_.push_back(std::move(area));
            if (retain) drawnKept_.push_back(std::move(loop));
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
        for (const HatchLoop& figure : chosen.loops) {
            const math::Bounds2 box = engine::pathBounds(figure.path());
            const double near = 1e-6 * (1.0 + box.width() + box.height());
            for (Area& area : areas_)
                removed += std::erase_if(area.loops, [&](const HatchLoop& loop) {
                    const math::Bounds2 other = engine::pathBounds(loop.path());
                    return other.min.near_equal(box.min, near) && other.max.near_equal(box.max, near);
                });
        }
        std::erase_if(areas_, [](const Area& area) { return area.loops.empty(); });
        message(counted(removed, "boundary loop") + " removed.");
    }

    // Making ------------------------------------------------------------------------------------------------

    Vector2 originOf(const std::vector<HatchLoop>& loops) const {
        const int mode = engine::sysVarInt(drawing(), "HPORIGINMODE");
        math::Bounds2 box;
        if (mode != 0)
            for (const HatchLoop& loop : loops) box.expand(engine::pathBounds(loop.path()));
        switch (box.is_empty() ? 0 : mode) {
            case 1:
                return box.min;
            case 2:
                return {box.max.x, box.min.y};
            case 3:
                return box.max;
            case 4:
                return {box.min.x, box.max.y};
            case 5:
                return box.center();
            default:
                break;
        }
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
        hatch->islandStyle = style_;
        hatch->patternOrigin = originOf(loops);
        hatch->patternAngle = real("HPANG", 0.0);
        hatch->patternScale = real("HPSCALE", 1.0);
        if (gradient_) {
            hatch->patternName = "SOLID";
            hatch->gradient = gradient_;
        } else if (user_) {
            hatch->patternType = HatchEntity::kUserDefined;
            hatch->patternName = "_USER";
            hatch->patternScale = real("HPSPACE", 1.0);
            hatch->doubled = engine::sysVarInt(drawing(), "HPDOUBLE") != 0;
        } else {
            hatch->patternName = pattern_;
            if (pattern_ == "SOLID") {
                hatch->patternAngle = 0.0;
                hatch->patternScale = 1.0;
            }
        }
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
        for (const BoundaryLoop& loop : drawnKept_) addPolyline(loop);
        for (Area& area : areas_) {
            std::move(area.loops.begin(), area.loops.end(), std::back_inserter(all));
            sources.insert(sources.end(), area.sources.begin(), area.sources.end());
            if (area.seed) seeds.push_back(*area.seed);
            if (separate) add();
        }
        if (!all.empty()) add();
        putInOrder(made, sources);
    }

    void addPolyline(const BoundaryLoop& loop) {
        auto polyline = polylineOf(loop);
        applyCurrentValues(document(), *polyline);
        document().addEntity(std::move(polyline));
    }
    void retainOutlines() {
        for (const Area& area : areas_)
            for (const HatchLoop& loop : area.loops)
                if ((loop.type & HatchLoop::kDerived) != 0 && (loop.type & HatchLoop::kTextBox) == 0)
                    addPolyline(polylineLoop(loop));
    }

    /// Moves the new hatches to their place in the drawing order (HPDRAWORDER).
    void putInOrder(const std::vector<engine::Entity*>& made, const std::vector<std::uint64_t>& sources) {
        const int mode = engine::sysVarInt(drawing(), "HPDRAWORDER", 3);
        if (mode != 1 && mode != 3) return;  // new entities are in front of all others
        engine::EntityList& space = drawing().currentSpace();
        std::uint32_t before = mode == 1 ? 0 : std::numeric_limits<std::uint32_t>::max();
        for (const std::uint64_t id : sources)
            if (const engine::Entity* entity = drawing().findById(id)) before = std::min(before, entity->order());
        if (before == std::numeric_limits<std::uint32_t>::max()) return;
        std::vector<engine::Entity*> order = space.entities();
        const std::set<const engine::Entity*> moved(made.begin(), made.end());
        std::erase_if(order, [&](engine::Entity* e) { return moved.count(e) != 0; });
        const auto at =
            std::find_if(order.begin(), order.end(), [&](engine::Entity* e) { return e->order() >= before; });
        if (at == order.end()) return;
        order.insert(at, made.begin(), made.end());
        document().setDrawOrder(space, order);
    }

    engine::Name pattern_;
    bool user_ = false;
    std::optional<engine::HatchGradient> gradient_;
    int style_ = HatchEntity::kOuter;
    bool annotative_ = false;
    bool islands_ = true;
    bool retain_ = false;
    bool limited_ = false;
    std::vector<std::uint64_t> set_;
    std::vector<Area> areas_;
    std::vector<BoundaryLoop> drawnKept_;
    int drawn_ = 0;
    std::optional<BoundaryWork> work_;
    std::unique_ptr<math::BoundarySearch> search_;
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
