#include "kdraw/objects/text_style.hpp"

namespace kdraw {

void StyleRecord::describe(Fields& f) {
    int flags = (isShapeFile ? 1 : 0) | (vertical ? 4 : 0);
    describeHead(f, "AcDbTextStyleTableRecord", flags);
    if (!f.dxf()) {
        f.b(0, isShapeFile);
        f.b(0, vertical);
    } else if (f.reading()) {
        isShapeFile = (flags & 1) != 0;
        vertical = (flags & 4) != 0;
    }
    f.bd(40, height);
    f.bd(41, width);
    f.angle(50, oblique);
    f.rc(71, generation);
    f.bd(42, lastHeight);
    f.text(3, font);
    f.text(4, bigFont);
}

}  // namespace kdraw
