#pragma once

#include <memory>
#include <span>

#include "kdraw/fields/fields.hpp"

namespace kdraw {

/// Everything that has a handle. The parts that all objects have are coded by the database (kdraw/record_codec.cpp);
/// a kind describes its own fields.
class Object {
public:
    virtual ~Object() = default;
    /// The fields of the kind behind the common part, with their groups.
    virtual void describe(Fields& f) = 0;
    virtual bool isEntity() const { return false; }
    /// Of a class that this library does not know.
    virtual bool isOpaque() const { return false; }
    /// Name of a table record; empty for everything else.
    virtual std::string_view recordName() const { return {}; }

    std::uint16_t type = 0;       ///< type code in the file (class number from 500 on)
    bool hasBinaryData = false;   ///< its modeller data stands in the data storage section
    bool visited = false;         ///< free for whoever passes over all objects and must not take one twice
    Handle handle = 0;
    Handle owner = 0;
    Handle dictionary = 0;        ///< extension dictionary
    std::vector<Handle> reactors;
    std::vector<XBlock> xdata;
};

/// A graphical object.
class Entity : public Object {
public:
    bool isEntity() const override { return true; }
    /// Adds what describe() cannot see: handles of objects of its own that follow it (vertices, attributes).
    virtual std::vector<Handle>* owned() { return nullptr; }
    /// Handle of the SEQEND that ends what it owns; null: the kind has none.
    virtual Handle* seqEnd() { return nullptr; }

    std::uint8_t mode = 2;            ///< 0 owner stored, 1 active paper space, 2 model space
    std::uint16_t colorIndex = 256;   ///< 0 ByBlock, 256 ByLayer
    std::uint32_t trueColor = 0;      ///< 0xC2RRGGBB; 0: none
    Handle bookColor = 0;             ///< DBCOLOR object
    std::uint32_t transparency = 0;   ///< as DXF 440; 0: ByLayer
    double linetypeScale = 1.0;
    std::uint8_t linetypeFlags = 0;   ///< 0 ByLayer, 1 ByBlock, 2 Continuous, 3 linetype
    std::uint8_t materialFlags = 0;
    std::uint8_t shadowFlags = 0;
    std::uint8_t plotStyleFlags = 0;
    bool fullVisualStyle = false, faceVisualStyle = false, edgeVisualStyle = false;
    std::uint16_t invisible = 0;
    std::uint8_t lineweight = 0x1D;   ///< index as stored; see lineweightOf
    Handle layer = 0;
    Handle linetype = 0;
    Handle material = 0;
    Handle plotStyle = 0;
    Handle visualStyles[3] = {0, 0, 0};
    // R2000 only: neighbours in the chain of their block; 0: not stored
    Handle previous = 0, next = 0;
    bool noLinks = true;  ///< R2000: the neighbours are handle - 1 and handle + 1
};

/// A kind of object: how it is known in files, and how one is made.
struct ObjectKind {
    std::uint16_t type;        ///< fixed type code; 0: by class
    const char* dxfName;       ///< group 0, and the name of its class
    const char* cppClass;      ///< of its class record
    const char* application;   ///< of its class record; null for fixed kinds
    std::uint16_t proxyFlags;  ///< of its class record
    bool entity;
    std::unique_ptr<Object> (*make)();
};

template <class T>
std::unique_ptr<Object> makeObject() {
    return std::make_unique<T>();
}

/// An object of a class that this library does not know: its record as it stood.
class OpaqueObject final : public Object {
public:
    void describe(Fields&) override {}
    bool isOpaque() const override { return true; }
    std::string className;
    std::string record;
};
class OpaqueEntity final : public Entity {
public:
    void describe(Fields&) override {}
    bool isOpaque() const override { return true; }
    std::string className;
    std::string record;
};

/// All kinds with a description of their own.
std::span<const ObjectKind> entityKinds();  // entities/entity_kinds.cpp
std::span<const ObjectKind> objectKinds();  // objects/object_kinds.cpp

/// Hundredths of a millimetre (-1 ByLayer, -2 ByBlock, -3 default) of a stored lineweight, and back (nearest).
int lineweightOf(std::uint8_t index);
std::uint8_t lineweightIndex(int hundredths);

}  // namespace kdraw
