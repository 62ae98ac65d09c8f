#include "kdraw/entities/others.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void OleFrameEntity::describeFrame(Fields& f, std::string_view marker) {
    f.subclass(marker);
    f.constant(70, 2);
    f.bs(71, kind);
    f.bs(72, space);
    std::size_t size = 0;
    if (f.input() == nullptr) size = f.count(Width::BL, 90, data.size(), 8);
    f.bytes(310, data, size);
    if (f.output() != nullptr) f.output()->word(1, "OLE");
}

void Ole2FrameEntity::describe(Fields& f) {
    describeFrame(f, "AcDbOle2Frame");
    f.rc(0, lockAspect);
}

}  // namespace kdraw
