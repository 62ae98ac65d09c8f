#include "engine/model/frame_lines.hpp"

#include <cstddef>
#include <utility>

namespace kova::engine {

namespace {

thread_local FrameLines::Shown current{true, true, false, false};

}  // namespace

FrameLines::FrameLines(const Shown& shown) : before_(std::exchange(current, shown)) {}
FrameLines::~FrameLines() { current = before_; }

bool FrameLines::emitted(FrameKind kind) { return current[static_cast<std::size_t>(kind)]; }

}  // namespace kova::engine
