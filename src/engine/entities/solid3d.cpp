#include "engine/entities/solid3d.hpp"

#include <QByteArray>

#include "engine/model/pick_distance.hpp"
#include "engine/model/outline.hpp"
#include "engine/solids/sat_edges.hpp"

namespace kova::engine {

using math::Vector2;

std::string_view bodyKindName(Solid3DEntity::BodyKind kind) {
    switch (kind) {
        case Solid3DEntity::BodyKind::Region:
            return "Region";
        case Solid3DEntity::BodyKind::Body:
            return "Body";
        default:
            return "Solid3D";
    }
}

const ModelerEdges& Solid3DEntity::edges() const {
    // The data are public members: a hash, far cheaper than taking them apart, tells when they have changed.
    const std::string_view data = sat.empty() ? sab : sat;
    const std::size_t key = std::hash<std::string_view>{}(data);
    if (!edges_ || key != edgesKey_) {
        edges_ = std::make_shared<const ModelerEdges>(modelerEdges(data));
        edgesKey_ = key;
    }
    return *edges_;
}

math::Bounds2 Solid3DEntity::bounds() const { return pathBounds(edges().plan()); }

bool Solid3DEntity::canTransform(const math::Matrix4& m) const {
    const auto follows = [&](std::string data) { return data.empty() || transformModelerData(data, m); };
    return hasBody() && follows(sat) && follows(sab);
}

void Solid3DEntity::transform(const math::Matrix4& m) {
    if (!sat.empty()) transformModelerData(sat, m);
    if (!sab.empty()) transformModelerData(sab, m);
}

double Solid3DEntity::distanceTo(const Vector2& p) const { return distanceToShape(*this, p, edges().edges.empty()); }
Vector2 Solid3DEntity::nearestPoint(const Vector2& p) const { return nearestOnPath(edges().plan(), p); }

// One grip in the middle, which moves the body.
std::vector<Vector2> Solid3DEntity::gripPoints() const {
    const math::Bounds2 box = bounds();
    if (box.is_empty()) return {};
    return {box.center()};
}

void Solid3DEntity::moveGrip(std::size_t index, const Vector2& to) {
    const math::Bounds2 box = bounds();
    if (index == 0 && !box.is_empty()) transform(math::Matrix4::translation(to - box.center()));
}

void Solid3DEntity::describe(FieldVisitor& v) {
    std::string name(bodyKindName(kind));
    v.text("kind", name);
    if (v.reading()) {
        kind = BodyKind::Solid;
        for (const BodyKind other : {BodyKind::Region, BodyKind::Body})
            if (name == bodyKindName(other)) kind = other;
    }
    v.integer("modelerVersion", modelerVersion);
    v.text("sat", sat, "");
    // Binary data stand in the file as base64.
    std::string coded;
    if (!v.reading() && !sab.empty())
        coded = QByteArray::fromRawData(sab.data(), static_cast<qsizetype>(sab.size())).toBase64().toStdString();
    v.text("sab", coded, "");
    if (v.reading() && !coded.empty())
        sab = QByteArray::fromBase64(QByteArray::fromRawData(coded.data(), static_cast<qsizetype>(coded.size())))
                  .toStdString();
}

void Solid3DEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Path plan = edges().plan();
    if (!plan.empty()) sink.stroke(plan, style);
}

std::size_t Solid3DEntity::sizeInBytes() const { return sizeof *this + extrasSize() + sat.capacity() + sab.capacity(); }

}  // namespace kova::engine
