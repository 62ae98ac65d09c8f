#include "kdraw/entities/mline.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void MLineEntity::describe(Fields& f) {
    f.subclass("AcDbMline");
    f.bd(40, scale);
    f.rc(70, justification);
    f.bd3(10, base);
    plainExtrusion(f, normal);
    f.bs(71, flags);
    // Groups have the number of vertices before that of the elements.
    std::size_t count = 0;
    const auto vertexCount = [&] {
        count = f.count(Width::BS, 72, vertices.size(), 3 * kBitsOfPoint + 4U * elementCount);
    };
    if (f.dxf()) vertexCount();
    f.rc(73, elementCount);
    if (!f.dxf()) vertexCount();
    f.rest(vertices, count, [&](Vertex& vertex) {
        f.bd3(11, vertex.position);
        f.bd3(12, vertex.direction);
        f.bd3(13, vertex.miter);
        if (f.reading() || vertex.elements.size() != elementCount) vertex.elements.resize(elementCount);
        for (Element& element : vertex.elements) {
            if (f.failed()) return;
            f.list(Width::BS, 74, element.parameters, kBitsOfReal, [&](double& v) { f.bd(41, v); });
            f.list(Width::BS, 75, element.fill, kBitsOfReal, [&](double& v) { f.bd(42, v); });
        }
    });
    f.handle(Ref::HardPointer, 340, style);
}

}  // namespace kdraw
