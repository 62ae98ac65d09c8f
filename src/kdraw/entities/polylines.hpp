#pragma once

#include <array>

#include "kdraw/fields/object.hpp"

// Light polylines, and polylines and meshes whose vertices are objects of their own.

namespace kdraw {

class LwPolylineEntity : public Entity {
public:
    void describe(Fields& f) override;

    struct Taper {
        double start = 0.0, end = 0.0;
    };
    bool closed = false;
    bool linetypeGeneration = false;
    double constantWidth = 0.0;
    double elevation = 0.0;
    double thickness = 0.0;
    Vector3 normal{0.0, 0.0, 1.0};
    std::vector<Vector2> vertices;
    std::vector<double> bulges;     ///< empty, or one for each vertex
    std::vector<std::int32_t> ids;  ///< empty, or one for each vertex
    std::vector<Taper> widths;      ///< empty, or one for each vertex

private:
    void readGroups(DxfInput& in);
    void writeGroups(DxfOutput& out);
};

/// What owns VERTEX objects. Records before R2004 name only the first and the last of them.
class VertexOwner : public Entity {
public:
    std::vector<Handle>* owned() override { return &vertices; }
    Handle* seqEnd() override { return &end; }

    std::vector<Handle> vertices;
    Handle end = 0;  ///< SEQEND

protected:
    void describeOwned(Fields& f);
};

class Polyline2dEntity : public VertexOwner {
public:
    void describe(Fields& f) override;

    std::uint16_t flags = 0;      ///< as group 70
    std::uint16_t curveType = 0;  ///< 0, 5 quadratic, 6 cubic, 8 Bezier
    double startWidth = 0.0, endWidth = 0.0;
    double thickness = 0.0;
    double elevation = 0.0;
    Vector3 normal{0.0, 0.0, 1.0};
};

class Polyline3dEntity : public VertexOwner {
public:
    void describe(Fields& f) override;

    bool closed = false;
    std::uint16_t curveType = 0;  ///< 0, 5 or 6
};

class PolygonMeshEntity : public VertexOwner {
public:
    void describe(Fields& f) override;

    std::uint16_t flags = 0;  ///< as group 70 without the mesh bit
    std::uint16_t curveType = 0;
    std::uint16_t mCount = 0, nCount = 0;
    std::uint16_t mDensity = 0, nDensity = 0;
};

class PolyfaceMeshEntity : public VertexOwner {
public:
    void describe(Fields& f) override;

    std::uint16_t vertexCount = 0, faceCount = 0;
};

class Vertex2dEntity : public Entity {
public:
    void describe(Fields& f) override;

    std::uint8_t flags = 0;
    Vector3 position;
    double startWidth = 0.0, endWidth = 0.0;
    double bulge = 0.0;
    std::int32_t id = 0;
    double tangent = 0.0;  ///< radians
};

/// A vertex that is a point: of 3D polylines, polygon meshes and polyface meshes.
class PointVertexEntity : public Entity {
public:
    std::uint8_t flags = 0;
    Vector3 position;

protected:
    void describeAs(Fields& f, std::string_view marker);
};

class Vertex3dEntity : public PointVertexEntity {
public:
    Vertex3dEntity() { flags = 32; }
    void describe(Fields& f) override { describeAs(f, "AcDb3dPolylineVertex"); }
};

class MeshVertexEntity : public PointVertexEntity {
public:
    MeshVertexEntity() { flags = 64; }
    void describe(Fields& f) override { describeAs(f, "AcDbPolygonMeshVertex"); }
};

class PolyfaceVertexEntity : public PointVertexEntity {
public:
    PolyfaceVertexEntity() { flags = 192; }
    void describe(Fields& f) override { describeAs(f, "AcDbPolyFaceMeshVertex"); }
};

class PolyfaceFaceEntity : public Entity {
public:
    void describe(Fields& f) override;

    std::array<std::int16_t, 4> corners{};  ///< from 1; negative: the edge behind it is invisible; 0: none
};

}  // namespace kdraw
