#include "kdraw/entities/curves.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void CircleEntity::describe(Fields& f) {
    f.subclass("AcDbCircle");
    f.bd3(10, center);
    f.bd(40, radius);
    f.thickness(39, thickness);
    f.extrusion(210, normal);
}

void ArcEntity::describe(Fields& f) {
    CircleEntity::describe(f);
    f.subclass("AcDbArc");
    f.angle(50, startAngle);
    f.angle(51, endAngle);
}

void EllipseEntity::describe(Fields& f) {
    f.subclass("AcDbEllipse");
    f.bd3(10, center);
    f.bd3(11, majorAxis);
    plainExtrusion(f, normal);
    f.bd(40, ratio);
    f.bd(41, startParameter);
    f.bd(42, endParameter);
}

}  // namespace kdraw
