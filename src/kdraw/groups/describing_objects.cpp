#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void dataHandle(Fields& f, int code, Handle& v) {
    if (DxfOutput* out = f.output()) {
        out->handle(code, v);
        return;
    }
    if (f.dxf()) {
        f.handle(Ref::SoftPointer, code, v);
        return;
    }
    unsigned head = 0;
    for (Handle rest = v; rest != 0; rest >>= 8) ++head;
    f.rc(0, head);
    const unsigned n = head & 15;
    if (n > 8) {
        f.fail();
        v = 0;
        return;
    }
    Handle value = f.reading() ? 0 : v;
    for (unsigned i = 0; i < n; ++i) {
        unsigned byte = static_cast<unsigned>(value >> (8 * (n - 1 - i)) & 0xFF);
        f.rc(0, byte);
        if (f.reading()) value = value << 8 | (byte & 0xFF);
    }
    if (f.reading()) v = value;
}

void viewModeBits(Fields& f, int& mode) {
    bool perspective = (mode & 1) != 0, front = (mode & 2) != 0, back = (mode & 4) != 0, atEye = (mode & 16) == 0;
    f.b(0, perspective);
    f.b(0, front);
    f.b(0, back);
    f.b(0, atEye);
    if (f.reading()) mode = (perspective ? 1 : 0) | (front ? 2 : 0) | (back ? 4 : 0) | (atEye ? 0 : 16);
}

}  // namespace kdraw
