#pragma once

#include "kdraw/objects/table_record.hpp"

namespace kdraw {

/// A block definition's record. Its base point, path and description stand in groups with the BLOCK entity.
class BlockHeader : public TableRecord {
public:
    bool anonymous = false;
    bool hasAttributes = false;  ///< has attribute definitions
    bool isXref = false;
    bool isOverlay = false;
    bool xrefUnloaded = false;
    Vector3 base;
    std::string xrefPath;
    std::string description;
    std::string preview;  ///< device-independent bitmap
    std::int16_t units = 0;
    bool explodable = true;
    std::uint8_t scaling = 0;  ///< 0 any, 1 uniform only
    Handle block = 0;          ///< BLOCK entity
    Handle endBlock = 0;       ///< ENDBLK entity
    /// R2000 only: ends of the chain of entities.
    Handle firstEntity = 0, lastEntity = 0;
    std::vector<Handle> owned;    ///< entities, from R2004 on
    std::vector<Handle> inserts;  ///< references of the block
    Handle layout = 0;

    void describe(Fields& f) override;
    /// True for the block of model space or of a paper space.
    bool isSpace() const;
    /// The name as the record has it: anonymous blocks and paper spaces without their number.
    std::string storedName() const;
};

}  // namespace kdraw
