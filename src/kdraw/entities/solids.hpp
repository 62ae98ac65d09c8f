#pragma once

#include <array>

#include "kdraw/fields/object.hpp"

// Bodies of the solid modeller.

namespace kdraw {

/// What regions, solids and bodies have in common. From R2013 on the modeller's data stand in the data storage section
/// (hasBinaryData), and the entity's own are empty.
class ModelerEntity : public Entity {
public:
    /// Modeller text, decrypted, lines parted by line feeds: R2000, and wherever there is nothing better.
    std::string text;
    /// Binary modeller data: R2004 to R2010. Whoever writes R2010 puts the data storage's bytes here.
    std::string binary;
    std::string guid;    ///< R2013 and later: 16 bytes as stored, or empty
    Handle history = 0;  ///< solids of R2007 and later

    bool empty() const { return text.empty() && binary.empty(); }

protected:
    void describeBody(Fields& f, bool hasHistory);

private:
    void describeData(Fields& f);
    void readText(Fields& f);
    void readUncounted(Fields& f);
    void describeGroups(Fields& f);
    void describeGuid(Fields& f);
};

class RegionEntity : public ModelerEntity {
public:
    void describe(Fields& f) override { describeBody(f, false); }
};

class Solid3dEntity : public ModelerEntity {
public:
    void describe(Fields& f) override { describeBody(f, true); }
};

class BodyEntity : public ModelerEntity {
public:
    void describe(Fields& f) override { describeBody(f, false); }
};

}  // namespace kdraw
