#pragma once

#include <memory>
#include <string>

#include "engine/model/drawing.hpp"
#include "engine/model/entity.hpp"
#include "script/lisp/entities/group_list.hpp"

namespace kova::script::lisp {

/// Entities as lists of DXF groups. Angles are radians, points of the kinds that DXF keeps in an object coordinate
/// system stand in that one; sub-entities (attributes, vertices) have lists of their own.

/// Moves the fields of one entity into groups, or groups into fields: each kind names its codes once.
class GroupIo {
public:
    /// `standing`: the entity that is being changed, as it stands in the drawing; null for one that is being made.
    explicit GroupIo(const GroupList& in, const engine::Entity* standing = nullptr) : in_(&in), standing_(standing) {}
    explicit GroupIo(GroupWriter& out) : out_(&out) {}

    bool reading() const { return in_ != nullptr; }
    const GroupList& in() const { return *in_; }
    GroupWriter& out() const { return *out_; }
    const engine::Entity* standing() const { return standing_; }
    void marker(const char* subclass) const {
        if (!reading()) out_->text(100, subclass);
    }
    void real(int code, double& v) const;
    /// Left out while it has the default.
    void real(int code, double& v, double usual) const;
    template <class T>
    void integer(int code, T& v) const {
        if (!reading())
            out_->integer(code, static_cast<std::int64_t>(v));
        else if (const Value* given = in_->find(code))
            v = static_cast<T>(narrow(code, *given));
    }
    void boolean(int code, bool& v) const;
    void text(int code, std::string& v) const;
    void name(int code, engine::Name& v) const;
    void point(int code, math::Vector3& p) const;
    /// A point of a plane at the height z, which is read too.
    void point(int code, math::Vector2& p, double& z) const;
    /// A point whose z does not count.
    void flat(int code, math::Vector2& p) const;

private:
    static std::int32_t narrow(int code, const Value& v);

    const GroupList* in_ = nullptr;
    GroupWriter* out_ = nullptr;
    const engine::Entity* standing_ = nullptr;
};

/// The type name under code 0: "LINE", "LWPOLYLINE" ... ; old-style polylines of meshes are "POLYLINE".
std::string groupTypeName(const engine::Entity& entity);
/// All groups of an entity from the subclass markers on.
void kindGroups(const GroupIo& io, engine::Entity& entity);
/// A fresh entity for a type name, with what its list needs at least checked; null: the type cannot be made, or groups
/// are missing.
std::unique_ptr<engine::Entity> entityForGroups(const GroupList& groups);
/// False for values that no such entity can have (a circle without radius ...).
bool isSound(const engine::Entity& entity);
/// False for a body whose data the modeller's reader cannot take apart: one from a file is kept, none is made of it.
bool isUnderstood(const engine::Entity& entity);

/// The direction of the z axis, as groups tell it behind a kind's own; it is read with the common ones.
void normalGroup(const GroupIo& io, const engine::Entity& entity);
/// Layer, colour, linetype and what else all kinds have.
void commonGroups(const GroupIo& io, engine::Entity& entity);
void writeExtendedData(GroupWriter& out, const engine::Entity& entity, const Value& applications);
void readExtendedData(const Value& list, engine::Entity& entity);

// Each of these takes an entity of its kind.
void lineGroups(const GroupIo& io, engine::Entity& entity);
void arcGroups(const GroupIo& io, engine::Entity& entity);
void circleGroups(const GroupIo& io, engine::Entity& entity);
void ellipseGroups(const GroupIo& io, engine::Entity& entity);
void polylineGroups(const GroupIo& io, engine::Entity& entity);
void splineGroups(const GroupIo& io, engine::Entity& entity);
void mlineGroups(const GroupIo& io, engine::Entity& entity);
void plainTextGroups(const GroupIo& io, engine::Entity& entity);
void attdefGroups(const GroupIo& io, engine::Entity& entity);
void mtextGroups(const GroupIo& io, engine::Entity& entity);
void shapeGroups(const GroupIo& io, engine::Entity& entity);
void insertGroups(const GroupIo& io, engine::Entity& entity);
void imageGroups(const GroupIo& io, engine::Entity& entity);
void viewportGroups(const GroupIo& io, engine::Entity& entity);
void leaderGroups(const GroupIo& io, engine::Entity& entity);
void mleaderGroups(const GroupIo& io, engine::Entity& entity);
void tableGroups(const GroupIo& io, engine::Entity& entity);
void hatchGroups(const GroupIo& io, engine::Entity& entity);
void bodyGroups(const GroupIo& io, engine::Entity& entity);
void dimensionGroups(const GroupIo& io, engine::Entity& entity);

}  // namespace kova::script::lisp
