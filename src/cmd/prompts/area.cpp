#include "cmd/prompts/area.hpp"

#include "engine/inquiry/entity_report.hpp"
#include "engine/inquiry/value_text.hpp"
#include "math/curves/path.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd {

namespace {

using math::Vector2;

/// A closed way of lines and arcs that grows point by point.
struct Outline {
    std::vector<Vector2> points;
    std::vector<double> bulges;  ///< of the segment behind each point

    void add(const Vector2& p, double bulge = 0.0) {
        bulges.back() = bulge;
        points.push_back(p);
        bulges.push_back(0.0);
    }
    void undo() {
        points.pop_back();
        bulges.pop_back();
        bulges.back() = 0.0;
    }
    /// Direction in which the next segment leaves: that of the last one.
    Vector2 heading() const {
        const std::size_t n = points.size();
        if (n < 2) return {1, 0};
        const Vector2 a = points[n - 2];
        const Vector2 b = points[n - 1];
        if (const auto arc = math::arcFromBulge(a, b, bulges[n - 2]))
            return math::unitAt(arc->end()).perpendicular() * (arc->sweep < 0.0 ? -1.0 : 1.0);
        return (b - a).normalized();
    }
};

/// One run of the dialogue.
class AreaDialogue {
public:
    AreaDialogue(Ask& ask, doc::Document& document, bool height) : ask_(ask), document_(document), height_(height) {}

    Dialogue run() {
        for (;;) {
            const char* prompt = mode_ == Mode::Add        ? "Specify first corner point or [Object/Subtract area]:"
                                 : mode_ == Mode::Subtract ? "Specify first corner point or [Object/Add area]:"
                                 : height_
                                     ? "Specify first corner point or [Object/Add volume/Subtract volume] <Object>:"
                                     : "Specify first corner point or [Object/Add area/Subtract area] <Object>:";
            const Answer first = co_await ask_.point(prompt, "Object Add Subtract eXit");
            if (first.is("EXIT") || (first.isEnter() && mode_ != Mode::Single)) co_return;
            if (first.is("ADD") || first.is("SUBTRACT")) {
                mode_ = first.is("ADD") ? Mode::Add : Mode::Subtract;
                continue;
            }
            if (first.isPoint())
                co_await outline(first.point);
            else
                co_await objects();
            if (mode_ == Mode::Single) co_return;
        }
    }

private:
    enum class Mode { Single, Add, Subtract };

    std::string length(double v) const { return lengthText(document_.drawing(), v); }

    /// Prints an area and, while adding up, the total.
    Dialogue report(EntityArea area) {
        const char* outline = area.circle ? "Circumference = " : area.open ? "Length = " : "Perimeter = ";
        ask_.message("Area = " + areaText(document_.drawing(), area.area) + ", " + outline + length(area.perimeter));
        double amount = area.area;
        if (height_) {
            const Answer height = co_await ask_.distance("Specify height:");
            amount = area.area * height.numberOr(0.0);
            ask_.message("Volume = " + volumeText(document_.drawing(), amount));
        }
        engine::publishSysVar(document_.drawing(), "PERIMETER", area.perimeter);
        if (mode_ == Mode::Single) {
            engine::publishSysVar(document_.drawing(), "AREA", area.area);
            co_return;
        }
        total_ += mode_ == Mode::Add ? amount : -amount;
        if (height_)
            ask_.message("Total volume = " + volumeText(document_.drawing(), total_));
        else
            ask_.message("Total area = " + areaText(document_.drawing(), total_));
        if (!height_) engine::publishSysVar(document_.drawing(), "AREA", total_);
    }

    Dialogue objects() {
        const char* prompt = mode_ == Mode::Add        ? "(ADD mode) Select objects:"
                             : mode_ == Mode::Subtract ? "(SUBTRACT mode) Select objects:"
                                                       : "Select objects:";
        for (;;) {
            const Answer pick = co_await ask_.object(
                prompt, {}, [](const engine::Entity& entity) { return entityArea(entity).has_value(); });
            const engine::Entity* entity = pick.isObject() ? document_.drawing().findById(pick.id) : nullptr;
            if (entity == nullptr) co_return;
            const std::optional<EntityArea> area = entityArea(*entity);
            if (area) co_await report(*area);
            if (mode_ == Mode::Single) co_return;
        }
    }

    Dialogue outline(Vector2 first) {
        Outline outline;
        outline.points.push_back(first);
        outline.bulges.push_back(0.0);
        bool arcs = false;
        for (;;) {
            const bool many = outline.points.size() >= 3;
            const char* prompt = arcs
                                     ? "Specify endpoint of arc or [Angle/CEnter/Direction/Line/Radius/Second pt/Undo]:"
                                 : many ? "Specify next point or [Arc/Length/Undo/Total] <Total>:"
                                        : "Specify next point or [Arc/Length/Undo]:";
            const char* keywords = arcs ? "Angle CEnter Direction Line Radius Second Undo" : "Arc Length Undo Total";
            const Vector2 last = outline.points.back();
            const Answer answer = co_await ask_.point(prompt, keywords, last);
            if (answer.isEnter() || answer.is("TOTAL")) break;
            if (answer.is("ARC") || answer.is("LINE")) {
                arcs = answer.is("ARC");
            } else if (answer.is("UNDO")) {
                if (outline.points.size() > 1) outline.undo();
            } else if (answer.is("LENGTH")) {
                const Answer along = co_await ask_.distance("Specify length of line:", {}, last);
                if (along.isNumber()) outline.add(last + outline.heading() * along.number);
            } else if (answer.isPoint()) {
                outline.add(answer.point, arcs ? math::bulgeFromTangent(last, outline.heading(), answer.point) : 0.0);
            } else {
                co_await arc(outline, answer.word);
            }
        }
        if (outline.points.size() < 2) co_return;
        EntityArea area;
        area.area = std::abs(math::signedArea(outline.points, outline.bulges));
        area.perimeter = math::perimeter(outline.points, outline.bulges);
        co_await report(area);
    }

    /// An arc by its option.
    Dialogue arc(Outline& outline, std::string option) {
        const Vector2 from = outline.points.back();
        if (option == "SECOND") {
            const Answer through = co_await ask_.point("Specify second point on arc:", {}, from);
            if (!through.isPoint()) co_return;
            const Answer to = co_await ask_.point("Specify end point of arc:", {}, from);
            if (to.isPoint()) outline.add(to.point, math::bulgeThrough(from, through.point, to.point));
        } else if (option == "ANGLE") {
            const Answer angle = co_await ask_.number("Specify included angle:", {}, Range{-359.999, 359.999, true});
            if (!angle.isNumber()) co_return;
            const Answer to = co_await ask_.point("Specify endpoint of arc:", {}, from);
            if (to.isPoint()) outline.add(to.point, math::bulgeFromSweep(math::toRadians(angle.number)));
        } else if (option == "CENTER") {
            const Answer center = co_await ask_.point("Specify center point of arc:", {}, from);
            if (!center.isPoint()) co_return;
            const Answer to = co_await ask_.point("Specify endpoint of arc:", {}, center.point);
            if (!to.isPoint() || center.point == from || to.point == center.point) co_return;
            const double start = (from - center.point).angle();
            const double end = (to.point - center.point).angle();
            const Vector2 at = center.point + math::unitAt(end) * from.distance_to(center.point);
            outline.add(at, math::bulgeFromSweep(math::sweepAngle(start, end)));
        } else if (option == "DIRECTION") {
            const Answer direction =
                co_await ask_.angle("Specify the tangent direction for the start point of arc:", {}, from);
            if (!direction.isNumber()) co_return;
            const Answer to = co_await ask_.point("Specify endpoint of arc:", {}, from);
            if (to.isPoint())
                outline.add(to.point, math::bulgeFromTangent(from, math::unitAt(direction.number), to.point));
        } else if (option == "RADIUS") {
            const Answer radius = co_await ask_.distance("Specify radius of arc:", {}, from, kPositive);
            if (!radius.isNumber()) co_return;
            const Answer to = co_await ask_.point("Specify endpoint of arc:", {}, from);
            if (!to.isPoint()) co_return;
            const double half = from.distance_to(to.point) / 2.0;
            if (half > radius.number) {
                ask_.message("Invalid value.");
                co_return;
            }
            // The smaller of the two arcs, counter-clockwise.
            outline.add(to.point, math::bulgeFromSweep(2.0 * std::asin(half / radius.number)));
        }
    }

    Ask& ask_;
    doc::Document& document_;
    bool height_;
    Mode mode_ = Mode::Single;
    double total_ = 0.0;
};

}  // namespace

Dialogue measureArea(Ask& ask, doc::Document& document, bool height) {
    AreaDialogue dialogue(ask, document, height);
    co_await dialogue.run();
}

}  // namespace kova::cmd
