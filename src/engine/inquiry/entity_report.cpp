#include "engine/inquiry/entity_report.hpp"

#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "engine/kinds/all.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/model/units.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd {

namespace {

using engine::Entity;
using engine::EntityType;
using math::Vector2;

/// Vertices of one object that are listed; more are only counted.
constexpr std::size_t kMaxListed = 1000;

/// Collects the lines of one report.
class Report {
public:
    explicit Report(const engine::Drawing& drawing) : drawing_(drawing) {}

    void line(const std::string& text) { lines_.push_back("    " + text); }
    std::string length(double v) const { return lengthText(drawing_, v); }
    std::string angle(double v) const { return angleText(drawing_, v); }
    std::string size(double v) const {
        engine::AngularFormat format;
        format.units = engine::sysVarInt(drawing_, "AUNITS");
        format.precision = engine::sysVarInt(drawing_, "AUPREC");
        return engine::formatAngleSize(v, format);
    }
    std::string at(const Vector2& world, double z = 0.0) const {
        const Vector2 p = drawing_.ucs.fromWorld(world);
        return "X=" + length(p.x) + "  Y=" + length(p.y) + "  Z=" + length(z);
    }
    void point(const std::string& name, const Vector2& world, double z = 0.0) { line(name + " " + at(world, z)); }
    void area(double v) { line("area " + areaText(drawing_, v)); }
    void value(const std::string& name, double v) { line(name + " " + length(v)); }
    void text(const std::string& name, const std::string& v) { line(name + " " + v); }

    void common(const Entity& entity);
    void geometry(const Entity& entity);
    std::vector<std::string> take() { return std::move(lines_); }

private:
    void polyline(const engine::PolylineEntity& polyline);
    void reference(const engine::BlockReferenceEntity& reference);
    void spline(const engine::SplineEntity& spline);
    void dimension(const engine::DimensionEntity& dimension);
    void viewport(const engine::ViewportEntity& viewport);
    void areaAndLength(const Entity& entity);
    void points(const std::string& name, const std::vector<Vector2>& list);
    void spacePoints(const std::string& name, const std::vector<math::Vector3>& list);

    const engine::Drawing& drawing_;
    std::vector<std::string> lines_;
};

std::string spaceText(const engine::Drawing& drawing, const Entity& entity) {
    if (entity.owner() == &drawing.modelSpace()) return "Model space";
    for (const auto& layout : drawing.layouts())
        if (&layout->entities == entity.owner()) return "Paper space, layout " + inQuotes(layout->name);
    for (const auto& block : drawing.blocks())
        if (&block->entities == entity.owner()) return "Block " + inQuotes(block->name);
    if (drawing.editedBlock() != nullptr && &drawing.editedBlock()->entities == entity.owner()) return "Block editor";
    return "No space";
}

void Report::common(const Entity& entity) {
    lines_.push_back(std::string(engine::displayName(entity.type())) + "    Layer: " + inQuotes(entity.layer));
    line("Space: " + spaceText(drawing_, entity));
    line("Handle = " + handleText(entity.handle()));
    const engine::CommonNames& names = engine::commonNames();
    if (entity.color.method != engine::ColorMethod::ByLayer) text("Color:", engine::colorText(entity.color));
    if (entity.linetype != names.byLayer) text("Linetype:", inQuotes(entity.linetype));
    if (entity.linetypeScale() != 1.0) value("Linetype scale:", entity.linetypeScale());
    if (entity.lineweight != -1) text("Lineweight:", lineweightText(entity.lineweight));
    if (entity.transparency != 0) text("Transparency:", std::to_string(entity.transparency));
    if (entity.thickness() != 0.0) value("Thickness:", entity.thickness());
    if (!engine::inWorldPlane(entity)) {
        const math::Vector3 n = entity.normal();
        line("Extrusion direction X=" + length(n.x) + "  Y=" + length(n.y) + "  Z=" + length(n.z));
    }
    if (!entity.visible) line("Hidden");
}

void Report::points(const std::string& name, const std::vector<Vector2>& list) {
    for (std::size_t i = 0; i < list.size() && i < kMaxListed; ++i) point(name, list[i]);
    if (list.size() > kMaxListed) line("... " + std::to_string(list.size() - kMaxListed) + " more");
}

void Report::spacePoints(const std::string& name, const std::vector<math::Vector3>& list) {
    for (std::size_t i = 0; i < list.size() && i < kMaxListed; ++i) point(name, list[i].xy(), list[i].z);
    if (list.size() > kMaxListed) line("... " + std::to_string(list.size() - kMaxListed) + " more");
}

void Report::areaAndLength(const Entity& entity) {
    if (const auto area = entityArea(entity)) {
        this->area(area->area);
        value(area->circle ? "circumference" : area->open ? "length" : "perimeter", area->perimeter);
    } else if (const auto length = entityLength(entity)) {
        value("length", *length);
    }
}

void Report::polyline(const engine::PolylineEntity& p) {
    line(p.closed ? "Closed" : "Open");
    areaAndLength(p);
    for (std::size_t i = 0; i < p.vertices.size() && i < kMaxListed; ++i) {
        point("at point", engine::planFromObject(p, p.vertices[i]), p.elevation);
        if (p.startWidth(i) != 0.0 || p.endWidth(i) != 0.0)
            line("  starting width " + length(p.startWidth(i)) + "  ending width " + length(p.endWidth(i)));
        if (p.bulge(i) == 0.0 || i >= p.segmentCount()) continue;
        line("  bulge " + length(p.bulge(i)));
        if (const auto arc = math::arcFromBulge(p.vertices[i], p.segmentEnd(i), p.bulge(i))) {
            point("  center", engine::planFromObject(p, arc->center), p.elevation);
            line("  radius " + length(arc->radius) + "  start angle " + angle(arc->start) + "  end angle " +
                 angle(arc->end()));
        }
    }
    if (p.vertices.size() > kMaxListed) line("... " + std::to_string(p.vertices.size() - kMaxListed) + " more");
}

void Report::reference(const engine::BlockReferenceEntity& r) {
    text("Block Name:", inQuotes(r.blockName));
    point("at point", engine::planFromObject(r, r.insert), r.elevation);
    line("X scale factor: " + length(r.scaleX));
    line("Y scale factor: " + length(r.scaleY));
    line("Z scale factor: " + length(r.effectiveScaleZ()));
    line("rotation angle: " + angle(r.rotation));
    if (r.rowCount() > 1 || r.columnCount() > 1)
        line("rows: " + std::to_string(r.rowCount()) + "  row spacing: " + length(r.rowSpacing) +
             "  columns: " + std::to_string(r.columnCount()) + "  column spacing: " + length(r.columnSpacing));
    if (r.isClipped()) line(r.clipInverted ? "Clipped, inverted" : "Clipped");
    for (const engine::BlockAttribute& a : r.attributes) {
        line("Attribute tag: " + a.tag + "  value: " + a.value + "  layer: " + inQuotes(a.layer) +
             (a.invisible ? "  invisible" : ""));
        point("  at point", r.planFromAttribute(a, a.position), a.plane ? a.plane->elevation : r.elevation);
    }
}

void Report::spline(const engine::SplineEntity& s) {
    line("Degree: " + std::to_string(s.degree) + (s.closed ? "  Closed" : "  Open"));
    areaAndLength(s);
    points("Control point", s.controlPoints);
    points("Fit point", s.fitPoints);
}

void Report::dimension(const engine::DimensionEntity& d) {
    text("dimension style:", inQuotes(d.dimStyleName));
    if (!d.textOverride.empty()) text("text:", inQuotes(d.textOverride));
    text("measured text:", inQuotes(d.text()));
    point("first definition point", d.def1);
    point("second definition point", d.def2);
    point("dimension line point", d.dimLine);
}

void Report::viewport(const engine::ViewportEntity& v) {
    line("Number " + std::to_string(v.vpId) + (v.isOn() ? "  On" : "  Off") + (v.locked ? "  Locked" : ""));
    point("center", v.center);
    line("width " + length(v.width) + "  height " + length(v.height));
    point("view target", v.viewTarget);
    line("scale " + length(v.viewScale) + "  twist " + angle(v.viewTwist));
    const math::Vector3& from = v.viewDirection;
    if (!v.showsPlan()) line("view direction " + length(from.x) + "," + length(from.y) + "," + length(from.z));
    if (const Entity* border = v.clipEntity()) line("bounded by " + handleText(border->handle()));
}

void Report::geometry(const Entity& entity) {
    switch (entity.type()) {
        case EntityType::Line: {
            const auto& e = static_cast<const engine::LineEntity&>(entity);
            point("from point", e.start, e.start3().z);
            point("to point", e.end, e.end3().z);
            const math::Vector3 way = e.end3() - e.start3();
            const Vector2 d = drawing_.ucs.fromWorld(e.end) - drawing_.ucs.fromWorld(e.start);
            line("Length = " + length(way.length()) + ",  Angle in XY Plane = " + angle(d.angle()));
            line("Delta X = " + length(d.x) + ",  Delta Y = " + length(d.y) + ",  Delta Z = " + length(way.z));
            return;
        }
        case EntityType::Circle: {
            const auto& e = static_cast<const engine::CircleEntity&>(entity);
            point("center point", engine::planFromObject(e, e.center), e.elevation);
            value("radius", e.radius);
            value("circumference", math::kTwoPi * std::abs(e.radius));
            area(math::kPi * e.radius * e.radius);
            return;
        }
        case EntityType::Arc: {
            const auto& e = static_cast<const engine::ArcEntity&>(entity);
            point("center point", engine::planFromObject(e, e.center), e.elevation);
            value("radius", e.radius);
            line("start angle " + angle(e.startAngle));
            line("end angle " + angle(e.endAngle));
            value("length", e.arcLength());
            return;
        }
        case EntityType::Polyline:
            return polyline(static_cast<const engine::PolylineEntity&>(entity));
        case EntityType::Point: {
            const auto& e = static_cast<const engine::PointEntity&>(entity);
            return point("at point", e.position, e.elevation);
        }
        case EntityType::Text: {
            const auto& e = static_cast<const engine::TextEntity&>(entity);
            text("Style =", inQuotes(e.textStyle));
            point("start point", engine::planFromObject(e, e.position), e.elevation);
            value("height", e.height);
            text("text", e.content);
            line("rotation angle " + angle(e.rotation));
            value("width scale factor", e.widthFactor);
            return line("obliquing angle " + size(e.oblique));
        }
        case EntityType::MText: {
            const auto& e = static_cast<const engine::MTextEntity&>(entity);
            point("Location:", engine::planFromObject(e, e.position), e.elevation);
            value("Width:", e.width);
            value("Text height:", e.height);
            line("Rotation: " + angle(e.rotation));
            text("Text style:", inQuotes(e.textStyle));
            return text("Contents:", e.content);
        }
        case EntityType::AttributeDefinition: {
            const auto& e = static_cast<const engine::AttributeDefinitionEntity&>(entity);
            text("Style =", inQuotes(e.textStyle));
            point("start point", engine::planFromObject(e, e.insertion), e.elevation);
            value("height", e.textHeight);
            text("tag", e.tag);
            text("prompt", e.prompt);
            text("value", e.defaultValue);
            return line(std::string("modes") + (e.invisible ? " invisible" : "") + (e.constant ? " constant" : "") +
                        (e.verify ? " verify" : "") + (e.preset ? " preset" : ""));
        }
        case EntityType::Hatch: {
            const auto& e = static_cast<const engine::HatchEntity&>(entity);
            text("Hatch pattern", e.patternName.str());
            if (!e.isSolid()) line("Hatch scale " + length(e.patternScale) + "  angle " + size(e.patternAngle));
            if (e.isAssociative()) line("Associative");
            line(counted(e.loops.size(), "boundary loop"));
            return area(e.area());
        }
        case EntityType::BlockReference:
            return reference(static_cast<const engine::BlockReferenceEntity&>(entity));
        case EntityType::Dimension:
            return dimension(static_cast<const engine::DimensionEntity&>(entity));
        case EntityType::Viewport:
            return viewport(static_cast<const engine::ViewportEntity&>(entity));
        case EntityType::Spline:
            return spline(static_cast<const engine::SplineEntity&>(entity));
        case EntityType::Ellipse: {
            const auto& e = static_cast<const engine::EllipseEntity&>(entity);
            point("Center:", e.center, e.elevation);
            line("Major axis: X=" + length(e.major.x) + "  Y=" + length(e.major.y));
            value("Radius ratio:", e.minorRatio);
            if (!e.isFull()) {
                point("Start point:", e.startPoint(), e.elevation);
                point("End point:", e.endPoint(), e.elevation);
            }
            return areaAndLength(e);
        }
        case EntityType::Xline: {
            const auto& e = static_cast<const engine::XlineEntity&>(entity);
            point("base point", e.base);
            return line("direction " + angle(e.dir.angle()));
        }
        case EntityType::Ray: {
            const auto& e = static_cast<const engine::RayEntity&>(entity);
            point("base point", e.origin);
            return line("direction " + angle(e.dir.angle()));
        }
        case EntityType::Region: {
            const auto& e = static_cast<const engine::RegionEntity&>(entity);
            line(counted(1 + e.loops.size(), "boundary loop"));
            break;
        }
        case EntityType::Polyline3D: {
            const auto& e = static_cast<const engine::Polyline3DEntity&>(entity);
            line(e.closed ? "Closed" : "Open");
            value("length", e.length());
            return spacePoints("at point", e.vertices);
        }
        case EntityType::Mesh: {
            const auto& e = static_cast<const engine::MeshEntity&>(entity);
            line("M vertices " + std::to_string(e.rows) + (e.closedM ? "  closed" : "") + "  N vertices " +
                 std::to_string(e.cols) + (e.closedN ? "  closed" : ""));
            return spacePoints("at point", e.vertices);
        }
        case EntityType::Polyface: {
            const auto& e = static_cast<const engine::PolyfaceEntity&>(entity);
            line("vertices " + std::to_string(e.vertices.size()) + "  faces " + std::to_string(e.faces.size()));
            return spacePoints("at point", e.vertices);
        }
        case EntityType::MLeader: {
            const auto& e = static_cast<const engine::MLeaderEntity&>(entity);
            text("multileader style:", inQuotes(e.styleName));
            if (!e.textContent.empty()) text("text:", e.textContent);
            if (!e.blockName.empty()) text("block:", inQuotes(e.blockName));
            for (const engine::MLeaderAttribute& a : e.attributes) text("attribute " + a.tag + ":", a.value);
            return point("content", e.contentPos);
        }
        case EntityType::Tolerance: {
            const auto& e = static_cast<const engine::ToleranceEntity&>(entity);
            text("dimension style:", inQuotes(e.styleName));
            point("insertion point", e.insertion);
            return text("text:", e.contentText());
        }
        case EntityType::Shape: {
            const auto& e = static_cast<const engine::ShapeEntity&>(entity);
            text("Shape name:", inQuotes(e.name));
            point("at point", e.position);
            value("size", e.size);
            return line("rotation angle " + angle(e.rotation));
        }
        case EntityType::Face3D: {
            const auto& e = static_cast<const engine::Face3DEntity&>(entity);
            return spacePoints("corner", {e.corners.begin(), e.corners.end()});
        }
        case EntityType::Solid2D: {
            const auto& e = static_cast<const engine::Solid2DEntity&>(entity);
            for (const Vector2& corner : e.corners) point("corner", engine::planFromObject(e, corner), e.elevation);
            return;
        }
        case EntityType::Solid3D:
            text("Body:", std::string(engine::bodyKindName(static_cast<const engine::Solid3DEntity&>(entity).kind)));
            break;
        case EntityType::Leader:
            return points("vertex", static_cast<const engine::LeaderEntity&>(entity).vertices);
        case EntityType::MLine:
            return points("vertex", static_cast<const engine::MLineEntity&>(entity).vertices);
        case EntityType::Table: {
            const auto& e = static_cast<const engine::TableEntity&>(entity);
            point("insertion point", e.insertion);
            return line("rows " + std::to_string(e.rowCount()) + "  columns " + std::to_string(e.colCount()));
        }
        case EntityType::Image: {
            const auto& e = static_cast<const engine::ImageEntity&>(entity);
            return text("Image file:", e.filePath);
        }
        default:
            break;
    }
    areaAndLength(entity);
    const math::Bounds2 box = entity.bounds();
    if (box.is_empty()) return;
    point("lower bound", box.min);
    point("upper bound", box.max);
}

/// Inches of some power with feet of that power behind them, `perFoot` going into one; like a length in other units.
std::string powerText(const engine::Drawing& drawing, double v, const char* power, double perFoot) {
    const int units = engine::sysVarInt(drawing, "LUNITS", engine::kDecimal);
    if (units != engine::kEngineering && units != engine::kArchitectural) return lengthText(drawing, v);
    const auto number = [&](double n) {
        return engine::formatLinear(n, engine::kDecimal, engine::sysVarInt(drawing, "LUPREC", 4));
    };
    return number(v) + " " + power + " in. (" + number(v / perFoot) + " " + power + " ft.)";
}

EntityArea closedArea(const engine::Path& path) { return {std::abs(engine::pathArea(path)), engine::pathLength(path)}; }

}  // namespace

std::vector<std::string> entityReport(const engine::Drawing& drawing, const Entity& entity) {
    Report report(drawing);
    report.common(entity);
    report.geometry(entity);
    return report.take();
}

std::string areaText(const engine::Drawing& drawing, double area) { return powerText(drawing, area, "square", 144.0); }
std::string volumeText(const engine::Drawing& drawing, double volume) {
    return powerText(drawing, volume, "cubic", 1728.0);
}

std::optional<EntityArea> entityArea(const Entity& entity) {
    switch (entity.type()) {
        case EntityType::Circle: {
            const double r = std::abs(static_cast<const engine::CircleEntity&>(entity).radius);
            return EntityArea{math::kPi * r * r, math::kTwoPi * r, true};
        }
        case EntityType::Arc: {
            const auto& arc = static_cast<const engine::ArcEntity&>(entity);
            const double sweep = arc.sweep();
            const double area = arc.radius * arc.radius * (sweep - std::sin(sweep)) / 2.0;
            return EntityArea{area, arc.arcLength(), false, true};
        }
        case EntityType::Ellipse: {
            const auto& ellipse = static_cast<const engine::EllipseEntity&>(entity);
            EntityArea area = closedArea(ellipse.path());
            area.circle = ellipse.isFull();
            area.open = !area.circle;
            return area;
        }
        case EntityType::Polyline: {
            const auto& polyline = static_cast<const engine::PolylineEntity&>(entity);
            return EntityArea{polyline.area(), polyline.length(), false, !polyline.closed};
        }
        case EntityType::Polyline3D: {
            const auto& polyline = static_cast<const engine::Polyline3DEntity&>(entity);
            EntityArea area = closedArea(polyline.path());
            area.perimeter = polyline.length();
            area.open = !polyline.closed;
            return area;
        }
        case EntityType::Spline: {
            const auto& spline = static_cast<const engine::SplineEntity&>(entity);
            EntityArea area = closedArea(spline.path());
            area.open = !spline.closed;
            return area;
        }
        case EntityType::Region: {
            const auto& region = static_cast<const engine::RegionEntity&>(entity);
            return EntityArea{region.area(), region.perimeter()};
        }
        case EntityType::Hatch: {
            const auto& hatch = static_cast<const engine::HatchEntity&>(entity);
            return EntityArea{hatch.area(), engine::pathLength(hatch.boundary())};
        }
        case EntityType::Solid2D:
            return closedArea(static_cast<const engine::Solid2DEntity&>(entity).path());
        case EntityType::Wipeout:
            return closedArea(static_cast<const engine::WipeoutEntity&>(entity).path());
        default:
            return std::nullopt;
    }
}

std::optional<double> entityLength(const Entity& entity) {
    if (entity.type() == EntityType::Line) {
        const auto& line = static_cast<const engine::LineEntity&>(entity);
        return (line.end3() - line.start3()).length();
    }
    const auto area = entityArea(entity);
    return area ? std::optional<double>(area->perimeter) : std::nullopt;
}

}  // namespace kova::cmd
