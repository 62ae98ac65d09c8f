#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cmd/dialogue.hpp"
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

/// Asks for the value of an attribute; Enter: nothing. One of several lines asks for lines until an empty one, and they
/// become content of multiline text.
Task<std::optional<std::string>> askAttributeValue(Ask& ask, std::string prompt, bool multiline);
/// A value of one kind of attribute as the other kind holds it.
std::string convertedValue(const std::string& value, bool fromMultiline, bool toMultiline);

/// The attributes that the block's definitions ask for. Values that the reference holds under the same tag stay.
std::vector<engine::BlockAttribute> matchedAttributes(const engine::BlockReferenceEntity& reference,
                                                      const engine::Block& block, const engine::Drawing& drawing);

/// True when a block defines attributes whose values references hold.
bool definesAttributes(const engine::Block* block);
/// All references of these blocks, in spaces and in other blocks.
std::vector<engine::BlockReferenceEntity*> referencesOf(engine::Drawing& drawing,
                                                        const std::vector<engine::Name>& blocks);
/// Gives all references of these blocks the attributes that the blocks now define, as part of the open group. Gives the
/// number of references.
std::size_t synchronizeAttributes(doc::Document& document, const std::vector<engine::Name>& blocks);

}  // namespace kova::cmd
