#pragma once

#include <array>
#include <utility>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A multileader: leaders that run from arrows to one text or block.
class MultiLeaderEntity : public Entity {
public:
    void describe(Fields& f) override;

    using Break = std::pair<Vector3, Vector3>;
    struct Line {
        std::vector<Vector3> points;  ///< from the arrow towards the landing, which is not among them
        std::int32_t breakInfos = 0;  ///< 0: none of the next two are stored
        std::int32_t segment = 0;
        std::vector<Break> breaks;
        std::int32_t index = 0;
        // R2010 and later
        std::uint16_t kind = 1;
        Color color{Color::kByBlock, {}, {}};
        Handle linetype = 0;
        std::int32_t lineweight = -2;
        double arrowSize = 0.0;
        Handle arrow = 0;
        std::uint32_t overrides = 0;  ///< 1 kind, 2 colour, 4 linetype, 8 lineweight, 16 arrow size, 32 arrow
    };
    struct Root {
        bool valid = true;
        bool hasDogleg = true;
        Vector3 connection;
        Vector3 direction{1.0, 0.0, 0.0};
        std::vector<Break> breaks;
        std::int32_t index = 0;
        double landing = 0.0;
        std::vector<Line> lines;
        std::uint16_t attachmentDirection = 0;  ///< R2010 and later
    };
    struct Text {
        std::string text;
        Vector3 normal{0.0, 0.0, 1.0};
        Handle style = 0;
        Vector3 location, direction{1.0, 0.0, 0.0};
        double rotation = 0.0;  ///< radians, in groups too
        double width = 0.0, height = 0.0;
        double spacing = 1.0;
        std::uint16_t spacingStyle = 1;
        Color color;
        std::uint16_t alignment = 1;  ///< 1 left, 2 centre, 3 right
        std::uint16_t flow = 1;
        Color backgroundColor;
        double backgroundScale = 1.5;
        std::int32_t backgroundTransparency = 0;
        bool backgroundFill = false, maskFill = false;
        std::uint16_t columnKind = 0;
        bool automaticHeight = false;
        double columnWidth = 0.0, gutter = 0.0;
        bool reversed = false;
        std::vector<double> columnSizes;
        bool wordBreak = false;
    };
    struct BlockContent {
        Handle block = 0;
        Vector3 normal{0.0, 0.0, 1.0}, location, scale{1.0, 1.0, 1.0};
        double rotation = 0.0;
        Color color;
        std::array<double, 16> matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};  ///< row by row
    };
    /// What is drawn.
    struct Context {
        std::vector<Root> roots;
        double scale = 1.0;
        Vector3 base;
        double textHeight = 1.0, arrowSize = 1.0, landingGap = 0.0;
        std::uint16_t leftAttachment = 1, rightAttachment = 1;
        std::uint16_t textAlignment = 0;
        std::uint16_t attachmentKind = 0;
        bool hasText = false;
        Text text;
        bool hasBlock = false;  ///< not together with a text
        BlockContent block;
        Vector3 origin, direction{1.0, 0.0, 0.0}, vertical{0.0, 1.0, 0.0};
        bool reversed = false;
        std::uint16_t topAttachment = 9, bottomAttachment = 9;  ///< R2010 and later
    };
    struct Arrow {
        bool usual = false;
        Handle block = 0;
    };
    struct Label {
        Handle definition = 0;  ///< ATTDEF
        std::string text;
        std::uint16_t index = 0;
        double width = 0.0;
    };

    std::uint16_t version = 2;
    Context context;
    Handle style = 0;  ///< MLEADERSTYLE
    std::uint32_t overrides = 0;
    std::uint16_t leaderKind = 1;  ///< 0 invisible, 1 straight, 2 spline
    Color leaderColor;
    Handle leaderLinetype = 0;
    std::int32_t leaderLineweight = -2;
    bool landing = true, dogleg = true;
    double landingDistance = 0.0;
    Handle arrow = 0;
    double arrowSize = 1.0;
    std::uint16_t content = 2;  ///< 0 none, 1 block, 2 text, 3 tolerance
    Handle textStyle = 0;
    std::uint16_t leftAttachment = 1, rightAttachment = 1;
    std::uint16_t angleKind = 1, textAlignment = 0;
    Color textColor;
    bool textFrame = false;
    Handle block = 0;
    Color blockColor;
    Vector3 blockScale{1.0, 1.0, 1.0};
    double blockRotation = 0.0;
    std::uint16_t blockConnection = 0;
    bool annotative = false;
    std::vector<Arrow> arrows;  ///< R2007 and earlier
    std::vector<Label> labels;
    bool directionNegative = false;
    std::uint16_t ipeAlignment = 0;
    std::uint16_t attachmentPoint = 1;
    double scale = 1.0;
    std::uint16_t attachmentDirection = 0, bottomAttachment = 9, topAttachment = 9;  ///< R2010 and later
    bool extended = false;                                                           ///< R2013 and later

private:
    void describeContext(Fields& f);
    void describeText(Fields& f, Text& text);
    void describeBlock(Fields& f, BlockContent& content);
    void describeRoots(Fields& f);
    void describeRoot(Fields& f, Root& root);
    void describeLine(Fields& f, Line& line);
    void describeLabels(Fields& f);
};

}  // namespace kdraw
