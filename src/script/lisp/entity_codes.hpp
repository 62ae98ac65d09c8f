#pragma once

#include <memory>
#include <string>

#include "engine/drawing.hpp"
#include "engine/entity.hpp"
#include "script/lisp/group_list.hpp"

namespace kova::script::lisp {

/// Entities as lists of DXF groups. Angles are radians, points of the kinds that DXF keeps in an object coordinate
/// system stand in that one; sub-entities (attributes, vertices) have lists of their own.

/// Moves the fields of one entity into groups, or groups into fields: each kind names its codes once.
class GroupIo {
public:
    explicit GroupIo(const GroupList& in) : in_(&in) {}
    explicit GroupIo(GroupWriter& out) : out_(&out) {}

    bool reading() const { return in_ != nullptr; }
    const GroupList& in() const { return *in_; }
    GroupWriter& out() const { return *out_; }
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

/// Layer, colour, linetype and what else all kinds have.
void commonGroups(const GroupIo& io, engine::Entity& entity);
void writeExtendedData(GroupWriter& out, const engine::Entity& entity, const Value& applications);
void readExtendedData(const Value& list, engine::Entity& entity);

void hatchGroups(const GroupIo& io, engine::Entity& entity);
void dimensionGroups(const GroupIo& io, engine::Entity& entity);

}  // namespace kova::script::lisp
