#pragma once

#include "kdraw/fields/object.hpp"

// Block references, and the marks that begin and end sequences.

namespace kdraw {

/// The mark at the beginning of a block. In groups it carries what the block's record holds: the caller fills it in
/// before writing, and takes it from here after reading.
class BlockBeginEntity : public Entity {
public:
    void describe(Fields& f) override;

    std::string name;
    // Groups only
    std::uint16_t flags = 0;
    Vector3 base;
    std::string path;  ///< of an external reference
    std::string description;
};

class BlockEndEntity : public Entity {
public:
    void describe(Fields& f) override;
};

class SequenceEndEntity : public Entity {
public:
    void describe(Fields&) override {}
};

/// A reference to a block: what inserts and tables have in common. Records before R2004 name only the first and the
/// last of the attributes.
class BlockReference : public Entity {
public:
    std::vector<Handle>* owned() override { return &attributes; }
    Handle* seqEnd() override { return &end; }

    Vector3 position;  ///< in the object plane
    Vector3 scale{1.0, 1.0, 1.0};
    double rotation = 0.0;  ///< radians
    Vector3 normal{0.0, 0.0, 1.0};
    Handle block = 0;  ///< block record
    std::vector<Handle> attributes;
    Handle end = 0;  ///< SEQEND; stored when there are attributes

protected:
    /// A grid of copies.
    struct Grid {
        std::uint16_t columns = 1, rows = 1;
        double columnSpacing = 0.0, rowSpacing = 0.0;
    };
    void describeReference(Fields& f, Grid* grid);

private:
    void describeScale(Fields& f);
};

class InsertEntity : public BlockReference {
public:
    void describe(Fields& f) override;
};

class MInsertEntity : public BlockReference {
public:
    void describe(Fields& f) override;

    Grid grid;
};

}  // namespace kdraw
