#include <cmath>

#include "engine/audit/audit.hpp"
#include "engine/kinds/all.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/model/idle_visitor.hpp"
#include "engine/symbols/symbol_references.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

namespace {

bool isFinite(const Vector2& p) { return std::isfinite(p.x) && std::isfinite(p.y); }
bool isFinite(const Vector3& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

/// Goes through an entity's own fields: numbers that are not finite, names and handles that lead nowhere.
class FieldAudit final : public IdleVisitor {
public:
    FieldAudit(Auditor& auditor, EntityType type) : auditor_(auditor), type_(type) {}
    /// A field that nothing can stand in for is not usable.
    bool isLost() const { return lost_; }

protected:
    void onNumber(const Field& f, double& v) override {
        if (std::isfinite(v)) return;
        if (!f.optional && f.unit != Unit::Angle) return lose(f);
        auditor_.finite(v, f.optional ? f.fallback : 0.0, f.key);
    }
    void onPoint(const Field& f, Vector2& v) override {
        if (!isFinite(v)) lose(f);
    }
    void onPoint3(const Field& f, Vector3& v) override {
        if (!isFinite(v)) lose(f);
    }
    void onPointObject(const Field& f, Vector2& v) override { onPoint(f, v); }
    void onPointObject3(const Field& f, Vector3& v) override { onPoint3(f, v); }
    void onPoints(const Field& f, std::vector<Vector2>& v) override {
        for (const Vector2& p : v)
            if (!isFinite(p)) return lose(f);
    }
    void onPoints3(const Field& f, std::vector<Vector3>& v) override {
        for (const Vector3& p : v)
            if (!isFinite(p)) return lose(f);
    }
    void onNumbers(const Field& f, std::vector<double>& v) override {
        for (double& number : v) auditor_.finite(number, 0.0, f.key);
    }
    void onNumberMap(const Field& f, std::map<std::string, double>& v) override {
        for (auto& [name, number] : v) auditor_.finite(number, 0.0, f.key);
    }
    void onName(const Field& f, Name& v) override {
        const auto kind = referencedKind(type_, f.key);
        if (!kind || v.empty()) return;
        switch (*kind) {
            case SymbolKind::Block:
                if (type_ == EntityType::BlockReference) {
                    if (auditor_.drawing().findBlock(v) == nullptr) lose(f, "block \"" + v.str() + "\" is missing");
                } else if (arrowKind(v.view()) == ArrowKind::User) {
                    auditor_.reference(*kind, v, Name(), "block");
                }
                break;
            case SymbolKind::Layer:
                auditor_.reference(*kind, v, commonNames().layerZero, "layer");
                break;
            case SymbolKind::Linetype:
                auditor_.reference(*kind, v, commonNames().byLayer, "linetype");
                break;
            default:
                auditor_.reference(*kind, v, commonNames().standard, symbolKindName(*kind));
                break;
        }
    }
    void onHandle(const Field& f, std::uint64_t& v) override {
        if (v == 0 || auditor_.drawing().findByHandle(v) != nullptr) return;
        auditor_.note(std::string(f.key) + " leads to no object", "removed");
        if (auditor_.mending()) v = 0;
    }

private:
    void lose(const Field& f) { lose(f, std::string(f.key) + " is no finite number"); }
    void lose(const Field&, const std::string& fault) {
        if (!lost_) auditor_.note(fault, "erased");
        lost_ = true;
    }

    Auditor& auditor_;
    EntityType type_;
    bool lost_ = false;
};

void auditCommon(Auditor& auditor, Entity& entity) {
    if (entity.layer.empty()) {
        auditor.note("has no layer", "layer set to 0");
        if (auditor.mending()) entity.layer = commonNames().layerZero;
    }
    auditor.reference(SymbolKind::Layer, entity.layer, commonNames().layerZero, "layer");
    auditor.reference(SymbolKind::Linetype, entity.linetype, commonNames().byLayer, "linetype");
    auditor.finite(entity.elevation, 0.0, "elevation");
    if (entity.lineweight < -3 || entity.lineweight > 211) {
        auditor.note("lineweight " + std::to_string(entity.lineweight) + " is out of range", "set to ByLayer");
        if (auditor.mending()) entity.lineweight = -1;
    }
    if (entity.transparency < 0 || entity.transparency > 90) {
        auditor.note("transparency " + std::to_string(entity.transparency) + " is out of range", "set to ByLayer");
        if (auditor.mending()) entity.transparency = 0;
    }
    if (!std::isfinite(entity.linetypeScale()) || !(entity.linetypeScale() > 0.0)) {
        auditor.note("linetype scale is not above 0", "set to 1");
        if (auditor.mending()) entity.setLinetypeScale(1.0);
    }
    if (!std::isfinite(entity.thickness())) {
        auditor.note("thickness is no finite number", "set to 0");
        if (auditor.mending()) entity.setThickness(0.0);
    }
    const Vector3 normal = entity.normal();
    if (!isFinite(normal) || !(normal.length() > 0.0)) {
        auditor.note("extrusion direction is no direction", "set to 0,0,1");
        if (auditor.mending()) entity.setNormal({0, 0, 1});
    }
}

/// A size that must be above 0.
void positive(Auditor& auditor, double& v, double fallback, std::string_view what) {
    if (v > 0.0) return;
    auditor.note(std::string(what) + " is not above 0", "set to " + strings::fixed(fallback, 6).substr(0, 6));
    if (auditor.mending()) v = fallback;
}

void notZero(Auditor& auditor, double& v, std::string_view what) {
    if (v != 0.0) return;
    auditor.note(std::string(what) + " is 0", "set to 1");
    if (auditor.mending()) v = 1.0;
}

/// A list that runs parallel to another one.
template <class T>
void parallel(Auditor& auditor, std::vector<T>& list, std::size_t count, std::string_view what) {
    if (list.size() <= count) return;
    auditor.note("more " + std::string(what) + " than vertices", "cut off");
    if (auditor.mending()) list.resize(count);
}

double textSize(const Drawing& drawing) {
    const double size = sysVarReal(drawing, "TEXTSIZE", 2.5);
    return size > 0.0 && std::isfinite(size) ? size : 2.5;
}

void auditSpline(Auditor& auditor, SplineEntity& s) {
    if (s.controlPoints.empty()) return;
    const std::size_t needed = s.controlPoints.size() + static_cast<std::size_t>(std::max(s.degree, 0)) + 1;
    const bool wrong =
        !s.knots.empty() && (s.knots.size() != needed || !std::is_sorted(s.knots.begin(), s.knots.end()));
    if (wrong) {
        auditor.note("knots do not fit the control points", "made uniform");
        if (auditor.mending()) s.knots.clear();
    }
    if (!s.weights.empty() && s.weights.size() != s.controlPoints.size()) {
        auditor.note("weights do not fit the control points", "removed");
        if (auditor.mending()) s.weights.clear();
    }
    parallel(auditor, s.controlZ, s.controlPoints.size(), "heights");
}

void auditPolyface(Auditor& auditor, PolyfaceEntity& p) {
    const auto wrong = [&](const std::vector<std::int32_t>& face) {
        return face.size() < 2 ||
               std::any_of(face.begin(), face.end(), [&](std::int32_t c) { return !p.vertexIndex(c); });
    };
    const auto count = std::count_if(p.faces.begin(), p.faces.end(), wrong);
    if (count == 0) return;
    auditor.note(std::to_string(count) + " faces lead to missing vertices", "faces removed");
    if (auditor.mending()) std::erase_if(p.faces, wrong);
}

/// What only the kind knows; a text tells why the entity cannot be kept, null: it can.
const char* auditKind(Auditor& auditor, Entity& entity) {
    switch (entity.type()) {
        case EntityType::Circle:
            return static_cast<CircleEntity&>(entity).radius > 0.0 ? nullptr : "radius is not above 0";
        case EntityType::Arc:
            return static_cast<ArcEntity&>(entity).radius > 0.0 ? nullptr : "radius is not above 0";
        case EntityType::Ellipse: {
            const auto& e = static_cast<EllipseEntity&>(entity);
            if (!(e.major3().length() > 0.0)) return "major axis has no length";
            return e.minorRatio != 0.0 ? nullptr : "minor axis has no length";
        }
        case EntityType::Polyline: {
            auto& p = static_cast<PolylineEntity&>(entity);
            if (p.vertices.size() < 2) return "fewer than two vertices";
            parallel(auditor, p.bulges, p.vertices.size(), "bulges");
            parallel(auditor, p.startWidths, p.vertices.size(), "widths");
            parallel(auditor, p.endWidths, p.vertices.size(), "widths");
            return nullptr;
        }
        case EntityType::Polyline3D:
            return static_cast<Polyline3DEntity&>(entity).vertices.size() >= 2 ? nullptr : "fewer than two vertices";
        case EntityType::Leader:
            return static_cast<LeaderEntity&>(entity).vertices.size() >= 2 ? nullptr : "fewer than two vertices";
        case EntityType::MLine:
            return static_cast<MLineEntity&>(entity).vertices.size() >= 2 ? nullptr : "fewer than two vertices";
        case EntityType::Wipeout:
            return static_cast<WipeoutEntity&>(entity).vertices.size() >= 2 ? nullptr : "fewer than two vertices";
        case EntityType::Spline: {
            auto& s = static_cast<SplineEntity&>(entity);
            if (s.controlPoints.size() < 2 && s.fitPoints.size() < 2) return "fewer than two points";
            if (s.degree < 1) return "degree is not above 0";
            auditSpline(auditor, s);
            return nullptr;
        }
        case EntityType::Text: {
            auto& t = static_cast<TextEntity&>(entity);
            positive(auditor, t.height, textSize(auditor.drawing()), "text height");
            notZero(auditor, t.widthFactor, "width factor");
            return nullptr;
        }
        case EntityType::MText:
            positive(auditor, static_cast<MTextEntity&>(entity).height, textSize(auditor.drawing()), "text height");
            return nullptr;
        case EntityType::AttributeDefinition: {
            auto& a = static_cast<AttributeDefinitionEntity&>(entity);
            positive(auditor, a.textHeight, textSize(auditor.drawing()), "text height");
            notZero(auditor, a.widthFactor, "width factor");
            return a.tag.empty() ? "has no tag" : nullptr;
        }
        case EntityType::Hatch: {
            auto& h = static_cast<HatchEntity&>(entity);
            if (h.loops.empty()) return "has no boundary";
            if (!h.isSolid()) positive(auditor, h.patternScale, 1.0, "pattern scale");
            return nullptr;
        }
        case EntityType::BlockReference: {
            auto& r = static_cast<BlockReferenceEntity&>(entity);
            if (r.blockName.empty()) return "names no block";
            notZero(auditor, r.scaleX, "X scale");
            notZero(auditor, r.scaleY, "Y scale");
            for (BlockAttribute& a : r.attributes)
                positive(auditor, a.textHeight, textSize(auditor.drawing()), "attribute text height");
            return nullptr;
        }
        case EntityType::Viewport: {
            const auto& v = static_cast<ViewportEntity&>(entity);
            if (v.vpId == ViewportEntity::kSheetId) return nullptr;
            return v.width > 0.0 && v.height > 0.0 ? nullptr : "has no size";
        }
        case EntityType::Xline:
            return static_cast<XlineEntity&>(entity).dir.length() > 0.0 ? nullptr : "has no direction";
        case EntityType::Ray:
            return static_cast<RayEntity&>(entity).dir.length() > 0.0 ? nullptr : "has no direction";
        case EntityType::Region: {
            const auto& r = static_cast<RegionEntity&>(entity);
            return r.vertices.size() >= 2 || !r.loops.empty() ? nullptr : "has no boundary";
        }
        case EntityType::Image: {
            const auto& i = static_cast<ImageEntity&>(entity);
            return i.width != 0.0 && i.height != 0.0 ? nullptr : "has no size";
        }
        case EntityType::Table: {
            const auto& t = static_cast<TableEntity&>(entity);
            return t.rows > 0 && t.cols > 0 ? nullptr : "has no cells";
        }
        case EntityType::Shape:
            positive(auditor, static_cast<ShapeEntity&>(entity).size, 1.0, "size");
            return nullptr;
        case EntityType::Mesh: {
            const auto& m = static_cast<MeshEntity&>(entity);
            return m.filledRows() > 0 && m.filledColumns() > 0 ? nullptr : "has no vertices";
        }
        case EntityType::Polyface: {
            auto& p = static_cast<PolyfaceEntity&>(entity);
            if (p.vertices.size() < 2) return "has no vertices";
            auditPolyface(auditor, p);
            return nullptr;
        }
        case EntityType::Solid3D:
            return static_cast<Solid3DEntity&>(entity).hasBody() ? nullptr : "has no body";
        case EntityType::Dimension: {
            auto& d = static_cast<DimensionEntity&>(entity);
            auditor.reference(SymbolKind::Block, d.blockName, Name(), "picture");
            return nullptr;
        }
        default:
            return nullptr;
    }
}

}  // namespace

bool auditEntity(Auditor& auditor, Entity& entity) {
    auditCommon(auditor, entity);
    FieldAudit fields(auditor, entity.type());
    entity.describe(fields);
    if (fields.isLost()) return true;
    const char* lost = auditKind(auditor, entity);
    if (lost != nullptr) auditor.note(lost, "erased");
    return lost != nullptr;
}

void mendEntity(const Drawing& drawing, Entity& entity) {
    Auditor auditor(drawing, nullptr, true);
    auditEntity(auditor, entity);
}

}  // namespace kova::engine
