#pragma once

#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A scale of annotations: paper units for drawing units.
class Scale : public Object {
public:
    std::int16_t unknown = 0;
    std::string name = "1:1";
    double paperUnits = 1.0;
    double drawingUnits = 1.0;
    bool isUnit = true;

    void describe(Fields& f) override;
};

/// How images are shown.
class RasterVariables : public Object {
public:
    std::int32_t classVersion = 0;
    std::int16_t frame = 1;
    std::int16_t quality = 1;
    std::int16_t units = 5;

    void describe(Fields& f) override;
};

class WipeoutVariables : public Object {
public:
    std::int16_t frame = 1;

    void describe(Fields& f) override;
};

/// A colour of a colour book.
class BookColor : public Object {
public:
    Color color;

    void describe(Fields& f) override;
};

/// The draw order of a block's entities: pairs of an entity and the handle to sort it by.
class SortEntities : public Object {
public:
    struct Pair {
        Handle sort = 0;
        Handle entity = 0;
    };
    Handle block = 0;
    std::vector<Pair> pairs;

    void describe(Fields& f) override;
};

/// All fields of the drawing.
class FieldList : public Object {
public:
    bool unknown = false;
    std::vector<Handle> fields;

    void describe(Fields& f) override;
};

}  // namespace kdraw
