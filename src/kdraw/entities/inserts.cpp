#include "kdraw/entities/inserts.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void BlockBeginEntity::describe(Fields& f) {
    f.subclass("AcDbBlockBegin");
    f.text(2, name);
    if (!f.dxf()) return;
    f.bs(70, flags);
    f.bd3(10, base);
    if (f.output() != nullptr) f.text(3, name);
    f.text(1, path);
    if (wanted(f, !description.empty())) f.text(4, description);
}

void BlockEndEntity::describe(Fields& f) { f.subclass("AcDbBlockEnd"); }

void BlockReference::describeScale(Fields& f) {
    if (f.dxf()) {
        sparseReal(f, 41, scale.x, 1.0);
        sparseReal(f, 42, scale.y, 1.0);
        sparseReal(f, 43, scale.z, 1.0);
        return;
    }
    // Which of the factors are stored.
    enum : std::uint8_t { kAll, kXIsOne, kUniform, kAllOne };
    std::uint8_t form = kAll;
    if (scale.x == scale.y && scale.x == scale.z) form = scale.x == 1.0 ? kAllOne : kUniform;
    f.bb(0, form);
    if (form == kXIsOne) {
        f.dd(0, scale.y, 1.0);
        f.dd(0, scale.z, 1.0);
    } else if (form != kAllOne) {
        f.rd(0, scale.x);
        if (form == kUniform) {
            scale.y = scale.z = scale.x;
        } else {
            f.dd(0, scale.y, scale.x);
            f.dd(0, scale.z, scale.x);
        }
    }
}

void BlockReference::describeReference(Fields& f, Grid* grid) {
    bool hasAttributes = !attributes.empty();
    if (f.output() != nullptr && hasAttributes) f.b(66, hasAttributes);
    if (f.dxf()) f.record(Table::Block, 2, block);
    f.bd3(10, position);
    describeScale(f);
    sparseAngle(f, 50, rotation);
    plainExtrusion(f, normal);
    std::size_t count = 0;
    if (!f.dxf()) {
        f.b(0, hasAttributes);
        if (hasAttributes && f.since(Version::R2004)) count = f.count(Width::BL, 0, attributes.size(), kBitsOfHandle);
    }
    if (grid != nullptr) {
        f.bs(70, grid->columns);
        f.bs(71, grid->rows);
        f.bd(44, grid->columnSpacing);
        f.bd(45, grid->rowSpacing);
    }
    if (f.dxf()) return;
    f.record(Table::Block, 0, block);
    if (!hasAttributes) return;
    if (f.before(Version::R2004)) {
        attributes.resize(2);
        f.handle(Ref::SoftPointer, 0, attributes[0]);
        f.handle(Ref::SoftPointer, 0, attributes[1]);
    } else {
        f.restOfHandles(Ref::HardOwner, 0, attributes, count);
    }
    f.handle(Ref::HardOwner, 0, end);
}

void InsertEntity::describe(Fields& f) {
    f.subclass("AcDbBlockReference");
    describeReference(f, nullptr);
}

void MInsertEntity::describe(Fields& f) {
    f.subclass("AcDbMInsertBlock");
    describeReference(f, &grid);
}

}  // namespace kdraw
