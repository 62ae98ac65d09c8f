#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

// Names under which the settings stay for the next rectangle.
constexpr const char* kChamferA = "rectangleChamferA";
constexpr const char* kChamferB = "rectangleChamferB";
constexpr const char* kFillet = "rectangleFillet";
constexpr const char* kElevation = "rectangleElevation";
constexpr const char* kThickness = "rectangleThickness";
constexpr const char* kWidth = "rectangleWidth";
constexpr const char* kArea = "rectangleArea";
constexpr const char* kSizeX = "rectangleLength";
constexpr const char* kSizeY = "rectangleBreadth";

class RectangleTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer first =
                co_await ask.point("Specify first corner point or [Chamfer/Elevation/Fillet/Thickness/Width]:",
                                   "Chamfer Elevation Fillet Thickness Width");
            if (first.isPoint()) co_return co_await otherCorner(ask, first.point);
            if (first.is("CHAMFER")) {
                co_await askChamfer(ask);
            } else if (first.is("FILLET")) {
                co_await askSetting(ask, "Specify fillet radius for rectangles", kFillet, kNotNegative);
                if (setting(kFillet) > 0.0) {
                    remember(document(), kChamferA, 0.0);
                    remember(document(), kChamferB, 0.0);
                }
            } else if (first.is("ELEVATION")) {
                co_await askSetting(ask, "Specify the elevation for rectangles", kElevation, {},
                                    engine::sysVarReal(drawing(), "ELEVATION"));
            } else if (first.is("THICKNESS")) {
                co_await askSetting(ask, "Specify thickness for rectangles", kThickness, {},
                                    engine::sysVarReal(drawing(), "THICKNESS"));
            } else if (first.is("WIDTH")) {
                co_await askSetting(ask, "Specify line width for rectangles", kWidth, kNotNegative,
                                    engine::sysVarReal(drawing(), "PLINEWID"));
            } else {
                co_return;
            }
        }
    }

private:
    double setting(const char* name, double fallback = 0.0) const { return remembered(document(), name, fallback); }

    Dialogue askSetting(Ask& ask, const char* question, const char* name, Range range, double fallback = 0.0) {
        std::string prompt = withDefault(question, lengthDefault(drawing(), setting(name, fallback)));
        const Answer answer = co_await ask.distance(std::move(prompt), {}, {}, range);
        if (answer.isNumber()) remember(document(), name, answer.number);
    }

    Dialogue askChamfer(Ask& ask) {
        co_await askSetting(ask, "Specify first chamfer distance for rectangles", kChamferA, kNotNegative);
        co_await askSetting(ask, "Specify second chamfer distance for rectangles", kChamferB, kNotNegative,
                            setting(kChamferA));
        remember(document(), kChamferB, setting(kChamferB, setting(kChamferA)));
        if (setting(kChamferA) > 0.0 || setting(kChamferB) > 0.0) remember(document(), kFillet, 0.0);
    }

    Dialogue otherCorner(Ask& ask, Vector2 corner) {
        std::optional<Vector2> size;  // given by Dimensions; the point then only chooses the side
        for (;;) {
            const Answer other = co_await ask.point(
                "Specify other corner point or [Area/Dimensions/Rotation]:", "Area Dimensions Rotation", corner);
            if (other.isPoint()) {
                const Vector2 d = other.point - corner;
                Vector2 extent{d.dot(xAxis()), d.dot(xAxis().perpendicular())};
                if (size) extent = {std::copysign(size->x, extent.x), std::copysign(size->y, extent.y)};
                if (add(corner, extent)) co_return;
            } else if (other.is("AREA")) {
                const std::optional<Vector2> extent = co_await askArea(ask);
                if (extent && add(corner, *extent)) co_return;
            } else if (other.is("DIMENSIONS")) {
                co_await askSetting(ask, "Specify length for rectangles", kSizeX, kPositive, 10.0);
                co_await askSetting(ask, "Specify width for rectangles", kSizeY, kPositive, 10.0);
                size = Vector2{setting(kSizeX, 10.0), setting(kSizeY, 10.0)};
            } else if (other.is("ROTATION")) {
                co_await askRotation(ask, corner);
            } else {
                if (size) add(corner, *size);
                co_return;
            }
        }
    }

    Task<std::optional<Vector2>> askArea(Ask& ask) {
        std::string prompt =
            withDefault("Enter area of rectangle in current units", lengthDefault(drawing(), setting(kArea, 100.0)));
        const Answer area = co_await ask.number(std::move(prompt), {}, kPositive);
        if (area.isNumber()) remember(document(), kArea, area.number);
        const Answer side =
            co_await ask.keyword("Calculate rectangle dimensions based on [Length/Width] <Length>:", "Length Width");
        const bool byWidth = side.is("WIDTH");
        co_await askSetting(ask, byWidth ? "Enter rectangle width" : "Enter rectangle length",
                            byWidth ? kSizeY : kSizeX, kPositive, 10.0);
        const double known = setting(byWidth ? kSizeY : kSizeX, 10.0);
        // What the corners lose counts, so that the finished shape has the area.
        const double fillet = setting(kFillet);
        const double lost = (4.0 - math::kPi) * fillet * fillet + 2.0 * setting(kChamferA) * setting(kChamferB);
        const double found = (setting(kArea, 100.0) + lost) / known;
        if (!std::isfinite(found)) co_return std::nullopt;
        remember(document(), byWidth ? kSizeX : kSizeY, found);
        co_return byWidth ? Vector2{found, known} : Vector2{known, found};
    }

    Dialogue askRotation(Ask& ask, Vector2 corner) {
        std::string prompt = withDefault("Specify rotation angle or [Pick points]", angleText(drawing(), rotation_));
        const Answer answer = co_await ask.angle(std::move(prompt), "Pick", corner);
        if (answer.isNumber()) {
            rotation_ = answer.number - (isTyped(answer) ? 0.0 : ucsRotation(drawing()));
        } else if (answer.is("PICK")) {
            const Answer a = co_await ask.point("Specify first point:");
            if (!a.isPoint()) co_return;
            const Answer b = co_await ask.point("Specify second point:", {}, a.point);
            if (b.isPoint() && b.point != a.point) rotation_ = (b.point - a.point).angle() - ucsRotation(drawing());
        }
    }

    Vector2 xAxis() const { return math::unitAt(ucsRotation(drawing()) + rotation_); }

    /// False, with a line, when the extent encloses no area.
    bool add(const Vector2& corner, const Vector2& extent) {
        const Vector2 x = xAxis() * extent.x;
        const Vector2 y = xAxis().perpendicular() * extent.y;
        const Vector2 corners[] = {corner, corner + x, corner + x + y, corner + y};
        if (!(std::abs(extent.x * extent.y) > 0.0) || !corners[2].is_finite()) {
            message("Invalid input.");
            return false;
        }
        auto polyline = std::make_unique<engine::PolylineEntity>();
        const double least = std::min(std::abs(extent.x), std::abs(extent.y));
        const double fillet = setting(kFillet);
        // Corners that do not fit stay sharp.
        double before = setting(kChamferA);
        double after = setting(kChamferB);
        double bulge = 0.0;
        if (fillet > 0.0) {
            before = after = fillet;
            bulge = std::copysign(std::tan(math::kPi / 8.0), extent.x * extent.y);
        }
        const bool cut = before + after > 0.0 && before + after <= least * (1.0 + 1e-12);
        const auto put = [&](const Vector2& p, double b) {
            // Cuts that leave nothing of a side meet in one vertex.
            if (!polyline->vertices.empty() && polyline->vertices.back().distance_to(p) <= 1e-12 * least) {
                polyline->setBulge(polyline->vertices.size() - 1, b);
                return;
            }
            polyline->addVertex(p, b);
        };
        for (std::size_t i = 0; i < 4; ++i) {
            const Vector2& at = corners[i];
            if (!cut) {
                put(at, 0.0);
                continue;
            }
            put(at + (corners[(i + 3) % 4] - at).normalized() * before, bulge);
            put(at + (corners[(i + 1) % 4] - at).normalized() * after, 0.0);
        }
        if (polyline->vertices.size() > 4 &&
            polyline->vertices.back().distance_to(polyline->vertices.front()) <= 1e-12 * least)
            polyline->eraseVertex(polyline->vertices.size() - 1);
        polyline->closed = true;
        const double width = setting(kWidth, engine::sysVarReal(drawing(), "PLINEWID"));
        for (std::size_t i = 0; width > 0.0 && i < polyline->vertices.size(); ++i) polyline->setWidths(i, width, width);
        applyCurrentValues(document(), *polyline);
        polyline->elevation = setting(kElevation, polyline->elevation);
        polyline->setThickness(setting(kThickness, polyline->thickness()));
        const doc::GroupScope group(document(), "RECTANGLE");
        document().addEntity(std::move(polyline));
        return true;
    }

    double rotation_ = 0.0;  ///< against the current coordinate system
};

}  // namespace

KOVA_TOOL_COMMAND(Rectangle, "RECTANGLE", "Rectangle", "Draw", {"REC", "RECTANG"})

}  // namespace kova::cmd::commands
