#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/describe.hpp"
#include "engine/model/entity_type.hpp"
#include "engine/model/name.hpp"
#include "engine/model/xdata.hpp"
#include "math/bounds2.hpp"
#include "math/matrix4.hpp"
#include "math/vector2.hpp"
#include "math/vector3.hpp"

namespace kova::engine {

class Drawing;
class EntityList;
class OutlineSink;
struct OutlineStyle;

/// Base of every drawable object: the common properties and the operations that every kind implements.
///
/// Fields are plain members. An entity that stands in a drawing is changed through the document, which keeps
/// undo and the spatial index true; code below the document (readers, tests) may set members directly.
class Entity {
public:
    virtual ~Entity();
    virtual EntityType type() const = 0;
    /// 2-D extents, computed afresh; empty when there is nothing to measure.
    virtual math::Bounds2 bounds() const = 0;
    /// Applies the matrix to all defining points, directions, radii, angles and scales, in place. A kind that
    /// cannot hold the result (a circle under unequal scales) keeps the nearest it can: see transformedEntity.
    virtual void transform(const math::Matrix4& m) = 0;
    /// A copy with a new id, outside any drawing, with the same handle.
    virtual std::unique_ptr<Entity> clone() const = 0;
    virtual double distanceTo(const math::Vector2& p) const = 0;
    virtual math::Vector2 nearestPoint(const math::Vector2& p) const = 0;
    virtual std::vector<math::Vector2> gripPoints() const = 0;
    /// Moves one grip; an index without a grip is ignored.
    virtual void moveGrip(std::size_t index, const math::Vector2& to) = 0;

    /// Names the kind's own fields (not the common ones).
    virtual void describe(FieldVisitor& v) = 0;
    /// Emits the shape in drawing coordinates, drawn in `style`.
    virtual void emit(OutlineSink& sink, const OutlineStyle& style) const = 0;
    /// Bytes this entity occupies, its lists included; an estimate for the undo history.
    virtual std::size_t sizeInBytes() const = 0;

    /// Identity of this object in memory; never saved. The first entity of a process gets 1.
    std::uint64_t id() const { return id_; }
    /// The drawing-wide handle; 0 until the entity is added to a drawing.
    std::uint64_t handle() const { return handle_; }
    /// For readers, before the entity is added to a drawing.
    void setHandle(std::uint64_t handle);
    /// The list that holds this entity, and its drawing; null while it stands outside.
    EntityList* owner() const { return owner_; }
    Drawing* drawing() const;
    /// Position in drawing order within its list: a lower number is drawn first.
    std::uint32_t order() const { return slot_; }

    Name layer = commonNames().layerZero;
    Name linetype = commonNames().byLayer;
    double elevation = 0.0;          ///< z of the entity's plane
    std::int32_t lineweight = -1;    ///< hundredths of a millimetre; -1 ByLayer, -2 ByBlock, -3 default
    std::int32_t transparency = 0;   ///< percent 0..90; 0 takes the layer's
    Color color;
    bool visible = true;

    // Properties that few entities have; they stand in a side record that is made when one is set.
    double linetypeScale() const { return extras_ ? extras_->linetypeScale : 1.0; }
    void setLinetypeScale(double v) { set(&Extras::linetypeScale, v); }
    double thickness() const { return extras_ ? extras_->thickness : 0.0; }
    void setThickness(double v) { set(&Extras::thickness, v); }
    math::Vector3 normal() const { return extras_ ? extras_->normal : math::Vector3{0, 0, 1}; }
    void setNormal(const math::Vector3& v) { set(&Extras::normal, v); }
    Name plotStyleName() const { return extras_ ? extras_->plotStyleName : commonNames().byLayer; }
    void setPlotStyleName(Name v) { set(&Extras::plotStyleName, v); }
    bool annotative() const { return extras_ && extras_->annotative; }
    void setAnnotative(bool v) { set(&Extras::annotative, v); }
    double annotationScale() const { return extras_ ? extras_->annotationScale : 1.0; }
    void setAnnotationScale(double v) { set(&Extras::annotationScale, v); }
    const std::vector<Name>& objectScales() const;
    void setObjectScales(std::vector<Name> v);
    /// Null when there is none.
    const XData* xdata() const { return extras_ ? extras_->xdata.get() : nullptr; }
    XData& ensureXdata();
    /// Replaces the extended data; an empty one removes it.
    void setXdata(XData data);

    /// Names the common properties in file order. "handle" and "xdata" come through the visitor's user, since
    /// their file forms are special.
    void describeCommon(FieldVisitor& v);
    /// Copies all common properties except id and handle.
    void copyCommonFrom(const Entity& o);

protected:
    Entity();
    Entity(const Entity& o);
    Entity& operator=(const Entity&) = delete;
    std::size_t extrasSize() const;

private:
    friend class EntityList;

    struct Extras {
        double linetypeScale = 1.0;
        double thickness = 0.0;
        math::Vector3 normal{0, 0, 1};
        Name plotStyleName = commonNames().byLayer;
        bool annotative = false;
        double annotationScale = 1.0;
        std::vector<Name> objectScales;
        std::unique_ptr<XData> xdata;

        Extras() = default;
        Extras(const Extras& o);
    };
    template <class T>
    void set(T Extras::*member, const std::type_identity_t<T>& v) {
        if (!extras_) {
            const Extras fresh;
            if (fresh.*member == v) return;
            extras_ = std::make_unique<Extras>();
        }
        (*extras_).*member = v;
    }

    std::uint32_t slot_ = 0;
    std::uint64_t id_;
    std::uint64_t handle_ = 0;
    EntityList* owner_ = nullptr;
    std::unique_ptr<Extras> extras_;
};

/// A default-initialised entity of a kind; null for a number outside the table.
std::unique_ptr<Entity> makeEntity(EntityType type);
/// The entity under a transform, as a copy (new id): of the kind that can hold the result, so that a circle or an
/// arc under unequal scales becomes an ellipse and a polyline with arcs becomes what keeps its shape best.
std::unique_ptr<Entity> transformedEntity(const Entity& entity, const math::Matrix4& m);
/// False for what a transform would leave where it is: a solid-modeller body whose data are not understood, or that
/// the modeller could not hold under `m`.
bool canTransform(const Entity& entity, const math::Matrix4& m);

}  // namespace kova::engine

/// Declares, inside a kind's class, the overrides that all kinds have: `class ArcEntity final : public Entity {
/// KOVA_ENTITY(ArcEntity, Arc) ... };`. bounds, transform, nearestPoint, gripPoints, moveGrip, describe and emit
/// are written by the kind.
#define KOVA_ENTITY(Class, Kind)                                                                                      \
public:                                                                                                               \
    static constexpr EntityType kType = EntityType::Kind;                                                             \
    Class() = default;                                                                                                \
    Class(const Class&) = default;                                                                                    \
    EntityType type() const override { return EntityType::Kind; }                                                     \
    math::Bounds2 bounds() const override;                                                                            \
    void transform(const math::Matrix4& m) override;                                                                  \
    std::unique_ptr<Entity> clone() const override { return std::make_unique<Class>(*this); }                         \
    double distanceTo(const math::Vector2& p) const override;                                                         \
    math::Vector2 nearestPoint(const math::Vector2& p) const override;                                                \
    std::vector<math::Vector2> gripPoints() const override;                                                           \
    void moveGrip(std::size_t index, const math::Vector2& to) override;                                               \
    void describe(FieldVisitor& v) override;                                                                          \
    void emit(OutlineSink& sink, const OutlineStyle& style) const override;                                           \
    std::size_t sizeInBytes() const override;
