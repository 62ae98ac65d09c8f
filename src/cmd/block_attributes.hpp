#pragma once

#include <string>
#include <vector>

#include "engine/drawing.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::cmd {

/// The definitions in a block whose values its references hold: all but the constant ones, in drawing order.
std::vector<const engine::AttributeDefinitionEntity*> attributeDefinitions(const engine::EntityList& contents);

/// Carries block coordinates into the object plane of a reference, where its attributes lie.
math::Matrix4 attributePlacement(const engine::BlockReferenceEntity& reference, const engine::Block& block);

/// An attribute as its definition wants it, with a value. Text between two points becomes left-aligned text that
/// fills the same space.
engine::BlockAttribute makeAttribute(const engine::AttributeDefinitionEntity& definition,
                                     const math::Matrix4& placement, std::string value, const engine::Drawing& drawing);

/// The attributes that the block's definitions ask for. Values that the reference holds under the same tag stay.
std::vector<engine::BlockAttribute> matchedAttributes(const engine::BlockReferenceEntity& reference,
                                                      const engine::Block& block, const engine::Drawing& drawing);

}  // namespace kova::cmd
