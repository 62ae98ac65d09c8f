#include "kdraw/entities/mesh.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void MeshEntity::describe(Fields& f) {
    f.subclass("AcDbSubDMesh");
    f.bs(71, version);
    f.b(72, blendCrease);
    f.bl(91, level);
    f.list(Width::BL, 92, vertices, kBitsOfPoint, [&](Vector3& p) { f.bd3(10, p); });
    f.list(Width::BL, 93, faces, 2, [&](std::int32_t& v) { f.bl(90, v); });
    f.list(Width::BL, 94, edges, 4, [&](Edge& edge) {
        f.bl(90, edge.from);
        f.bl(90, edge.to);
    });
    f.list(Width::BL, 95, creases, kBitsOfReal, [&](double& crease) { f.bd(140, crease); });
    if (!f.reading()) overrides = 0;
    f.bl(90, overrides);
    // Nothing of the kind is kept.
    if (f.mode() == Fields::Mode::Decode && overrides != 0) f.skipRest();
}

}  // namespace kdraw
