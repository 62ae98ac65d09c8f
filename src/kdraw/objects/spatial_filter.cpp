#include "kdraw/objects/spatial_filter.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void SpatialFilter::describe(Fields& f) {
    f.subclass("AcDbFilter");
    f.subclass("AcDbSpatialFilter");
    if (!f.reading() && points.size() > 32767) points.resize(32767);
    if (DxfInput* in = f.input()) {
        points.clear();
        // The cursor stands before the points; two coordinates each.
        while (in->seek(10)) {
            Vector2& p = points.emplace_back();
            p.x = in->real();
            in->skip();
            if (in->peek() == 20) {
                p.y = in->real();
                in->skip();
            }
        }
    } else {
        f.list(Width::BS, 70, points, 128, [&](Vector2& p) { f.rd2(10, p); });
    }
    f.bd3(210, extrusion);
    f.bd3(11, origin);
    f.bs(71, shown);
    f.bs(72, frontOn);
    if (frontOn != 0) f.bd(40, front);
    f.bs(73, backOn);
    if (backOn != 0) f.bd(41, back);
    for (double& v : inverseInsert) f.bd(40, v);
    for (double& v : toClip) f.bd(40, v);
}

}  // namespace kdraw
