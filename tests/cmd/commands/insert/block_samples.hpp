#pragma once

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"

namespace kova::cmd {

/// "Part": a line along x and a circle; "Outer": a "Part" at 100,0 and a line.
inline void addPartAndOuter(engine::Drawing& drawing) {
    using namespace engine;
    using math::Vector2;
    Block& part = *drawing.addBlock("Part");
    part.entities.append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{10, 0}));
    part.entities.append(std::make_unique<CircleEntity>(Vector2{0, 20}, 2.0));
    Block& outer = *drawing.addBlock("Outer");
    outer.entities.append(std::make_unique<BlockReferenceEntity>("Part", Vector2{100, 0}));
    outer.entities.append(std::make_unique<LineEntity>(Vector2{0, 50}, Vector2{10, 50}));
}

}  // namespace kova::cmd
