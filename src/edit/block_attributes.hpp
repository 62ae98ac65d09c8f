#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cmd/dialogue.hpp"
#include "engine/model/drawing.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::cmd {

using engine::attributeDefinitions;
using engine::makeAttribute;

/// Carries block coordinates into the object plane of a reference, where its attributes lie.
math::Matrix4 attributePlacement(const engine::BlockReferenceEntity& reference, const engine::Block& block);

/// An attribute of a reference to `block` as its definition wants it, with a value.
engine::BlockAttribute makeAttribute(const engine::AttributeDefinitionEntity& definition,
                                     const engine::BlockReferenceEntity& reference, const engine::Block& block,
                                     std::string value, const engine::Drawing& drawing);

/// Asks for the value of an attribute; Enter: nothing. One of several lines asks for lines until an empty one, and they
/// become content of multiline text.
Task<std::optional<std::string>> askAttributeValue(Ask& ask, std::string prompt, bool multiline);
/// Asks for the values of a block's attributes as INSERT does, as far as ATTREQ wants it; what is not asked for has its
/// default. `definitions` is called anew for each, as a transparent command may change the block meanwhile.
Task<std::vector<std::string>> askAttributeValues(
    Ask& ask, const engine::Drawing& drawing,
    std::function<std::vector<const engine::AttributeDefinitionEntity*>()> definitions);
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
