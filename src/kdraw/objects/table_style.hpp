#pragma once

#include <array>
#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// How a cell of a table looks, in the form of R2010 and later.
struct CellStyle {
    struct Border {
        static constexpr int kTop = 1, kRight = 2, kBottom = 4, kLeft = 8, kInsideVertical = 16, kInsideHorizontal = 32;
        std::int32_t edge = 0;  ///< one of the constants; 0: nothing else is stored
        std::int32_t overrides = 0;
        std::int32_t type = 1;  ///< 1 single, 2 double
        Color color = Color::fromIndex(0);
        std::int32_t lineweight = -2;
        Handle linetype = 0;
        std::int32_t invisible = 0;
        double spacing = 0.045;
    };

    std::int32_t type = 5;
    bool hasData = true;
    std::int32_t overrides = 0, merge = 0;
    Color background{Color::kNone, {}, {}};
    std::int32_t contentLayout = 1;
    std::int32_t formatOverrides = 0, formatFlags = 0, dataType = 512, unitType = 0;
    std::string format;
    double rotation = 0.0, blockScale = 1.0;
    std::int32_t alignment = 5;
    Color color = Color::fromIndex(0);
    Handle textStyle = 0;
    double textHeight = 0.18;
    bool hasMargins = true;
    std::array<double, 6> margins{0.06, 0.06, 0.06,
                                  0.06, 0.18, 0.18};  ///< vertical, horizontal, bottom, right, spacings
    std::vector<Border> borders;

    void describe(Fields& f);
};

/// A cell style with its place in a list.
struct NamedCellStyle {
    CellStyle style;
    std::int32_t id = 0;  ///< 1 title, 2 header, 3 data, 4 the table itself
    std::int32_t styleClass = 1;
    std::string name;

    void describe(Fields& f);
};

/// How tables look. Its name is the key in the dictionary. Both forms are kept: rows as R2007 and groups have them,
/// cell styles as R2010 has them; reading one gives the other.
class TableStyle : public Object {
public:
    struct RowBorder {
        std::int16_t lineweight = -2;
        bool visible = true;
        Color color = Color::fromIndex(0);
    };
    struct Row {
        Handle textStyle = 0;
        double height = 0.18;
        std::int16_t alignment = 5;
        Color textColor = Color::fromIndex(0);
        Color fillColor = Color::fromIndex(7);
        bool fill = false;
        std::array<RowBorder, 6> borders;  ///< top, inside horizontal, bottom, left, inside vertical, right
        std::int32_t dataType = 512, unitType = 0;
        std::string format;
    };

    std::string description = "Standard";
    std::int16_t flow = 0;  ///< 0 down, 1 up
    std::int16_t flags = 0;
    double horizontalMargin = 1.5, verticalMargin = 1.5;
    bool noTitle = false, noHeader = false;
    std::array<Row, 3> rows;  ///< data, title, header

    std::uint8_t unknown1 = 0;
    std::int32_t unknown2 = 0, nextId = 101;
    Handle unknown3 = 0;
    NamedCellStyle table;
    std::vector<NamedCellStyle> styles;

    void describe(Fields& f) override;
    /// The cell styles of the rows.
    void makeCellStyles();

private:
    void describeRows(Fields& f);
    void describeGroups(Fields& f);
    void describeCellStyles(Fields& f);
    void takeRows();
};

/// Cell styles of a table style, kept beside it by files before R2010.
class CellStyleMap : public Object {
public:
    std::vector<NamedCellStyle> styles;

    void describe(Fields& f) override;
};

}  // namespace kdraw
