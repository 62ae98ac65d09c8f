#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "io/json/json_tree.hpp"

namespace kova::io::native {

/// Gets the records of a drawing file one by one while the text is parsed.
class RecordSink {
public:
    virtual ~RecordSink() = default;
    /// True for the members of the top-level object that are wanted; the others are parsed but not kept.
    virtual bool wants(std::string_view topLevelKey) = 0;
    /// The array of entities, blocks or layouts begins.
    virtual void beginBlocks() = 0;
    virtual void beginLayouts() = 0;
    /// An element of the array of blocks or layouts begins and ends. At its end the record is complete except for
    /// its entities, whose array is empty.
    virtual void beginBlock() = 0;
    virtual void endBlock(JsonTree::Index record) = 0;
    virtual void beginLayout() = 0;
    virtual void endLayout(JsonTree::Index record) = 0;
    /// An element of an array of entities: of the block or layout begun last, else of model space.
    virtual void entity(JsonTree::Index record) = 0;
};

/// What came of a text.
struct ParseOutcome {
    std::string syntaxError;                 ///< the library's message; the text is no JSON
    std::string otherError;                  ///< a number too large for a double, or no memory
    JsonTree::Index root = JsonTree::kNone;  ///< the top-level object; kNone when the text is no object
    // The first failure of the sink or the tree in each part of the file.
    std::exception_ptr blocksError;
    std::exception_ptr entitiesError;
    std::exception_ptr layoutsError;
    std::exception_ptr otherSectionError;
};

/// Parses a drawing file's text. Entities, blocks and layouts go to the sink as they close and leave no trace in the
/// tree; everything else that is wanted stands in the tree afterwards.
ParseOutcome parseDrawingText(std::string_view text, JsonTree& tree, RecordSink& sink);

}  // namespace kova::io::native
