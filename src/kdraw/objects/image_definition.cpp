#include "kdraw/objects/image_definition.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void ImageDefinition::describe(Fields& f) {
    f.subclass("AcDbRasterImageDef");
    f.bl(90, classVersion);
    f.rd2(10, size);
    f.text(1, path);
    f.b(280, loaded);
    f.rc(281, unit);
    f.rd2(11, pixel);
}

void ImageReactor::describe(Fields& f) {
    f.subclass("AcDbRasterImageDefReactor");
    f.bl(90, classVersion);
    if (DxfOutput* out = f.output()) out->handle(330, owner);
}

void UnderlayDefinition::describe(Fields& f) {
    f.subclass("AcDbUnderlayDefinition");
    f.text(1, path);
    f.text(2, page);
}

}  // namespace kdraw
