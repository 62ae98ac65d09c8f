#pragma once

#include <memory>

#include "kdraw/fields/object.hpp"

// Single-line texts, attributes and their definitions, multi-line texts.

namespace kdraw {

/// What texts, attributes and attribute definitions have in common.
class TextLine : public Entity {
public:
    double elevation = 0.0;
    Vector2 position;
    Vector2 alignment;  ///< counts when one of the alignments is not 0
    Vector3 normal{0.0, 0.0, 1.0};
    double thickness = 0.0;
    double oblique = 0.0, rotation = 0.0;  ///< radians
    double height = 1.0;
    double widthFactor = 1.0;
    std::string text;
    std::uint16_t generation = 0;  ///< 2 backwards, 4 upside down
    std::uint16_t horizontal = 0;  ///< 0 left, 1 centre, 2 right, 3 aligned, 4 middle, 5 fit
    std::uint16_t vertical = 0;    ///< 0 baseline, 1 bottom, 2 middle, 3 top
    Handle style = 0;

protected:
    /// All but the vertical alignment's group. `shown` is the text to write.
    void describeLine(Fields& f, std::string& shown);
};

class TextEntity : public TextLine {
public:
    void describe(Fields& f) override;
};

class MTextEntity : public Entity {
public:
    void describe(Fields& f) override;
    /// The text without inline codes, lines parted by line feeds.
    std::string plainText() const;

    static constexpr std::uint32_t kFill = 1, kWindowColor = 2, kFrame = 0x10;
    /// Columns, as extended data and releases from 2018 on have them.
    struct Columns {
        std::uint16_t type = 0;  ///< 0 none, 1 static, 2 dynamic
        std::int32_t count = 0;
        double width = 0.0, gutter = 0.0;
        bool autoHeight = false;
        bool reversed = false;
        std::vector<double> heights;
    };

    Vector3 position;
    Vector3 normal{0.0, 0.0, 1.0};
    Vector3 direction{1.0, 0.0, 0.0};
    double width = 0.0;          ///< 0: no wrapping
    double definedHeight = 0.0;  ///< R2007 and later
    double height = 1.0;         ///< of the letters
    std::uint16_t attachment = 1;
    std::uint16_t flow = 1;  ///< 1 left to right, 3 top to bottom, 5 by style
    double extentsHeight = 0.0, extentsWidth = 0.0;
    std::string text;
    Handle style = 0;
    std::uint16_t spacingStyle = 1;  ///< 1 at least, 2 exactly
    double spacingFactor = 1.0;
    std::uint32_t background = 0;  ///< kFill, kWindowColor, kFrame; R2004 and later
    double backgroundScale = 1.5;
    Color backgroundColor;
    std::uint32_t backgroundTransparency = 0;
    Columns columns;         ///< R2018 and later
    Handle application = 0;  ///< of its annotative data

private:
    friend class AttributeLine;
    void describeColumns(Fields& f);
    void describeGroups(Fields& f);
    void describeColumnGroups(Fields& f);
    void readColumnData(DxfInput& in);
};

/// What attributes and their definitions add to a text.
class AttributeLine : public TextLine {
public:
    static constexpr std::uint8_t kSingleLine = 1, kMultiLine = 2, kConstantMultiLine = 4;

    std::uint8_t kind = kSingleLine;  ///< R2018 and later
    /// The text of one that has several lines; R2018 and later.
    std::unique_ptr<MTextEntity> lines;
    std::string annotativeData;
    Handle annotativeApplication = 0;
    std::string tag;
    std::uint16_t fieldLength = 0;
    std::uint8_t flags = 0;  ///< 1 invisible, 2 constant, 4 verify, 8 preset
    bool lockPosition = false;

protected:
    void describeAttribute(Fields& f, std::string_view marker, std::string* prompt);

private:
    void describeLines(Fields& f);
    void describeParagraphs(Fields& f);
    void readParagraphs(Fields& f, DxfInput& in);
};

class AttributeEntity : public AttributeLine {
public:
    void describe(Fields& f) override { describeAttribute(f, "AcDbAttribute", nullptr); }
};

class AttributeDefinitionEntity : public AttributeLine {
public:
    void describe(Fields& f) override { describeAttribute(f, "AcDbAttributeDefinition", &prompt); }

    std::string prompt;
};

}  // namespace kdraw
