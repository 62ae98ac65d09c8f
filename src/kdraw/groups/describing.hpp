#pragma once

#include "kdraw/groups/dxf_input.hpp"
#include "kdraw/groups/dxf_output.hpp"
#include "kdraw/fields/object.hpp"

// What the descriptions of many entity kinds need.

namespace kdraw {

/// Fewest bits that things take: for the bounds of counts.
inline constexpr unsigned kBitsOfReal = 2, kBitsOfPoint = 6, kBitsOfHandle = 8;

/// False where groups are written and a value tells nothing.
inline bool wanted(const Fields& f, bool tells) { return f.mode() != Fields::Mode::ToDxf || tells; }

/// For optional groups whose place matters: true when the next group is this one, or where it has to be written.
inline bool follows(Fields& f, int code, bool tells) {
    if (const DxfInput* in = f.input()) return in->peek() == code;
    return wanted(f, tells);
}

/// An extrusion that is stored as three plain numbers.
inline void plainExtrusion(Fields& f, Vector3& v) {
    if (f.dxf())
        f.extrusion(210, v);
    else
        f.bd3(0, v);
}

/// An angle in radians whose group is left off when 0.
inline void sparseAngle(Fields& f, int code, double& v) {
    if (wanted(f, v != 0.0)) f.angle(code, v);
}

/// A number whose group is left off when it has its usual value.
inline void sparseReal(Fields& f, int code, double& v, double usual) {
    if (wanted(f, v != usual)) f.bd(code, v);
}

/// References that stand in groups of their own, anywhere in the present part.
void groupHandles(Fields& f, int code, std::vector<Handle>& v);

/// A text in pieces of 250 characters: group `more` for all but the last, `last` for that one.
void longText(Fields& f, int more, int last, std::string& v);

/// A record that is not named in groups is the one called "Standard".
void standardWhenMissing(Fields& f, Table table, Handle& v);

}  // namespace kdraw
