#include "kdraw/objects/group.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void Group::describe(Fields& f) {
    f.subclass("AcDbGroup");
    f.text(300, description);
    f.bs(70, unnamed);
    f.bs(71, selectable);
    countedHandles(f, Width::BL, Ref::HardPointer, 340, members);
}

}  // namespace kdraw
