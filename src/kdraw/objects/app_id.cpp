#include "kdraw/objects/app_id.hpp"

namespace kdraw {

void AppIdRecord::describe(Fields& f) {
    describeHead(f, "AcDbRegAppTableRecord");
    if (!f.dxf()) f.rc(0, unknown);
}

}  // namespace kdraw
