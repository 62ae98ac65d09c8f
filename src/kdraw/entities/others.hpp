#pragma once

#include "kdraw/fields/object.hpp"

// Objects of other programs.

namespace kdraw {

/// OLEFRAME and OLE2FRAME: what is inside stays as it is.
class OleFrameEntity : public Entity {
public:
    void describe(Fields& f) override { describeFrame(f, "AcDbOleFrame"); }

    std::uint16_t kind = 2;   ///< 1 link, 2 embedded, 3 static
    std::uint16_t space = 0;  ///< 0 model, 1 paper
    std::string data;

protected:
    void describeFrame(Fields& f, std::string_view marker);
};

class Ole2FrameEntity : public OleFrameEntity {
public:
    void describe(Fields& f) override;

    std::uint8_t lockAspect = 3;
};

}  // namespace kdraw
