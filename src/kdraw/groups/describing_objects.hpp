#pragma once

#include "kdraw/groups/describing.hpp"

namespace kdraw {

/// A reference that is left off in groups when it is null.
inline void optionalHandle(Fields& f, Ref kind, int code, Handle& v) {
    if (f.mode() == Fields::Mode::ToDxf && v == 0) return;
    f.handle(kind, code, v);
}

/// A handle that stands as a value in the data, not among the references.
void dataHandle(Fields& f, int code, Handle& v);

/// A list of references whose number stands in the binary format only.
inline void countedHandles(Fields& f, Width width, Ref kind, int code, std::vector<Handle>& v) {
    if (f.dxf())
        groupHandles(f, code, v);
    else
        f.handles(width, kind, 0, 0, v);
}

/// View mode as group 71 has it: 1 perspective, 2 and 4 clipping, 16 front clip not at the eye. In the binary format
/// four bits, the last one inverted.
void viewModeBits(Fields& f, int& mode);

/// A whole number between two others, for values whose width in the file is smaller.
template <class Int>
Int limited(Int v, Int low, Int high) {
    return v < low ? low : v > high ? high : v;
}

}  // namespace kdraw
