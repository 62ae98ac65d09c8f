#pragma once

#include <array>
#include <cstdint>

namespace kova::engine {

/// Lines that stand round or beside an object and are no part of its shape; variables decide whether they are seen.
enum class FrameKind : std::uint8_t {
    Image,    ///< IMAGEFRAME
    Wipeout,  ///< WIPEOUTFRAME
    Clip,     ///< XCLIPFRAME: the boundary of a clipped reference
    Control   ///< SPLFRAME: control polygons of splines, hidden edges of faces
};

/// Which of these lines entities emit on this thread while it lives; scopes may stand within each other. Outside of any
/// scope, and within one made by default, the frames of images and wipeouts are emitted and nothing else: what an
/// object's shape is does not depend on how it is shown.
class FrameLines {
public:
    using Shown = std::array<bool, 4>;  ///< by FrameKind

    explicit FrameLines(const Shown& shown = {true, true, false, false});
    ~FrameLines();
    FrameLines(const FrameLines&) = delete;
    FrameLines& operator=(const FrameLines&) = delete;

    static bool emitted(FrameKind kind);

private:
    Shown before_;
};

}  // namespace kova::engine
