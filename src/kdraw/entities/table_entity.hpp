#pragma once

#include <array>

#include "kdraw/entities/inserts.hpp"

namespace kdraw {

/// A table: a reference to the anonymous block of its picture, and the cells behind that. Records up to R2007 have
/// another form, which is read into the same members.
class TableEntity : public BlockReference {
public:
    TableEntity();
    void describe(Fields& f) override;

    /// What a format says itself instead of leaving it to the style.
    static constexpr std::uint32_t kAlignment = 0x10, kTextStyle = 0x40, kTextHeight = 0x80;

    struct Value {
        static constexpr std::uint32_t kNoData = 1;
        static constexpr std::int32_t kUnknown = 0, kLong = 1, kReal = 2, kText = 4, kDate = 8, kPoint2 = 16,
                                      kPoint3 = 32, kHandle = 64, kGeneral = 512;
        std::uint32_t flags = 0;
        std::int32_t kind = kText;
        std::int32_t integer = 0;
        double real = 0.0;
        std::string text;  ///< or the bytes of a date
        Vector3 point;
        Handle handle = 0;
        std::int32_t unit = 0;
        std::string format;
        std::string shown;  ///< as it is displayed
    };
    struct Item {
        std::string name;
        Value value;
    };
    struct Format {
        std::uint32_t overrides = 0;
        std::uint32_t properties = 0;
        std::int32_t valueKind = 0, valueUnit = 0;
        std::string format;
        double rotation = 0.0;  ///< radians
        double blockScale = 1.0;
        std::int32_t alignment = 0;  ///< 1 to 9
        Color color;
        Handle textStyle = 0;
        double textHeight = 0.0;
    };
    struct Border {
        std::uint32_t edges = 0;  ///< 0: none of the rest
        std::uint32_t overrides = 0;
        std::int32_t kind = 1;
        Color color;
        std::int32_t lineweight = -2;
        Handle linetype = 0;
        std::int32_t invisible = 0;
        double spacing = 0.0;
    };
    struct StyleData {
        std::uint32_t overrides = 0;
        std::uint32_t merge = 0;
        Color background{Color::kNone, {}, {}};
        std::int32_t layout = 0;
        Format format;
        std::uint16_t marginFlags = 0;  ///< bit 0: there are margins
        std::array<double, 6> margins{};
        std::vector<Border> borders;
    };
    struct Style {
        std::int32_t kind = 1;        ///< 1 cell, 2 row, 3 column, 5 table
        std::vector<StyleData> data;  ///< one, or none
    };
    struct Attribute {
        Handle definition = 0;
        std::string text;
        std::int32_t index = 0;
    };
    struct Content {
        static constexpr std::int32_t kValue = 1, kField = 2, kBlock = 4;
        std::int32_t kind = kValue;
        Value value;
        Handle reference = 0;  ///< field or block record
        std::vector<Attribute> attributes;
        std::vector<Format> format;  ///< one, or none
    };
    struct Place {
        Vector3 topLeft, center;
        std::array<double, 4> sizes{};  ///< content width, height, width, height
        std::int32_t flags = 0;
    };
    struct Geometry {
        std::int32_t flags = 0;
        double width = 0.0, height = 0.0;
        Handle object = 0;
        std::vector<Place> places;
    };
    struct Link {
        Handle object = 0;
        std::int32_t rows = 0, columns = 0, unknown = 0;
    };
    struct Cell {
        std::uint32_t state = 0;
        std::string tooltip;
        std::int32_t customData = 0;
        std::vector<Item> items;
        std::vector<Link> link;  ///< one, or none
        std::vector<Content> contents;
        Style style;
        std::int32_t styleId = 0;
        std::vector<Geometry> geometry;  ///< one, or none

        /// The format that says a thing itself; null: the table's style says it.
        const Format* formatWith(std::uint32_t override) const;
        std::string text() const;
    };
    struct Column {
        std::string name;
        std::int32_t customData = 0;
        std::vector<Item> items;
        Style style{3, {}};
        std::int32_t styleId = 0;
        double width = 0.0;
    };
    struct Row {
        std::vector<Cell> cells;
        std::int32_t customData = 0;
        std::vector<Item> items;
        Style style{2, {}};
        std::int32_t styleId = 0;
        double height = 0.0;
    };
    struct Merge {
        std::int32_t top = 0, left = 0, bottom = 0, right = 0;
    };
    struct BreakHeight {
        Vector3 position;
        double height = 0.0;
        std::int32_t flags = 0;
    };
    struct Breaks {
        std::int32_t options = 0, flow = 0;
        double spacing = 0.0;
        std::int32_t unknown1 = 0, unknown2 = 0;
        std::vector<BreakHeight> heights;
    };
    struct Range {
        Vector3 position;
        std::int32_t first = 0, last = 0;
    };

    Vector3 direction{1.0, 0.0, 0.0};
    std::string name, description;
    std::vector<Column> columns;
    std::vector<Row> rows;
    std::vector<Handle> fields;
    Style tableOverride{5, {}};
    std::vector<Merge> merges;
    Handle tableStyle = 0;
    std::vector<Breaks> breaks;  ///< one, or none
    std::vector<Range> ranges;   ///< of rows; one at least is written

private:
    void describeContent(Fields& f);
    void describeItems(Fields& f, std::int32_t& customData, std::vector<Item>& items);
    void describeValue(Fields& f, Value& value);
    void describeStyle(Fields& f, Style& style);
    void describeFormat(Fields& f, Format& format);
    void describeCell(Fields& f, Cell& cell);
    void describeCellContent(Fields& f, Content& content);
    void decodeOldForm(Fields& f);
    void decodeOldCell(Fields& f, Cell& cell, Merge& merge);
    void readGroups(DxfInput& in);
    void writeGroups(Fields& f, DxfOutput& out);
};

}  // namespace kdraw
