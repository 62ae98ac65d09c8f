// The form of R2010 and later.
#include "kdraw/entities/table_entity.hpp"

#include "kdraw/groups/describing.hpp"
#include "kdraw/fields/text_codec.hpp"

namespace kdraw {

namespace {

/// Something that is there when a stored number is not 0.
template <class T, class F>
void optional(Fields& f, Width width, std::vector<T>& one, F describe) {
    std::int64_t present = one.empty() ? 0 : 1;
    f.whole(width, 0, present);
    if (f.reading()) one.resize(present != 0 && !f.failed() ? 1 : 0);
    if (!one.empty()) describe(one.front());
}

}  // namespace

TableEntity::TableEntity() = default;

const TableEntity::Format* TableEntity::Cell::formatWith(std::uint32_t override) const {
    for (const Content& content : contents)
        if (!content.format.empty() && (content.format.front().overrides & override) != 0)
            return &content.format.front();
    if (!style.data.empty() && (style.data.front().format.overrides & override) != 0) return &style.data.front().format;
    return nullptr;
}

std::string TableEntity::Cell::text() const {
    std::string all;
    for (const Content& content : contents) {
        const bool isText = content.value.kind == Value::kText || content.value.kind == Value::kGeneral;
        all += isText && !content.value.text.empty() ? content.value.text : content.value.shown;
    }
    return all;
}

void TableEntity::describe(Fields& f) {
    f.subclass("AcDbBlockReference");
    describeReference(f, nullptr);
    f.subclass("AcDbTable");
    if (DxfInput* in = f.input()) {
        readGroups(*in);
        return;
    }
    if (DxfOutput* out = f.output()) {
        writeGroups(f, *out);
        return;
    }
    if (f.before(Version::R2010)) {
        decodeOldForm(f);
        return;
    }
    std::uint8_t unknownByte = 0;
    Handle unknownHandle = 0;
    std::int32_t unknown = 0;
    bool unknownBit = true;
    f.rc(0, unknownByte);
    f.handle(Ref::SoftPointer, 0, unknownHandle);
    f.bl(0, unknown);
    if (f.since(Version::R2013))
        f.bl(0, unknown);
    else
        f.b(0, unknownBit);
    describeContent(f);
    std::uint16_t marker = 38;
    f.bs(0, marker);
    f.bd3(0, direction);
    optional(f, Width::BL, breaks, [&](Breaks& b) {
        f.bl(0, b.options);
        f.bl(0, b.flow);
        f.bd(0, b.spacing);
        f.bl(0, b.unknown1);
        f.bl(0, b.unknown2);
        f.list(Width::BL, 0, b.heights, 10, [&](BreakHeight& h) {
            f.bd3(0, h.position);
            f.bd(0, h.height);
            f.bl(0, h.flags);
        });
    });
    if (!f.reading() && ranges.empty() && !rows.empty())
        ranges.push_back({Vector3{}, 0, static_cast<std::int32_t>(rows.size()) - 1});
    f.list(Width::BL, 0, ranges, 10, [&](Range& range) {
        f.bd3(0, range.position);
        f.bl(0, range.first);
        f.bl(0, range.last);
    });
}

void TableEntity::describeContent(Fields& f) {
    f.text(0, name);
    f.text(0, description);
    f.list(Width::BL, 0, columns, 14, [&](Column& column) {
        f.text(0, column.name);
        describeItems(f, column.customData, column.items);
        describeStyle(f, column.style);
        f.bl(0, column.styleId);
        f.bd(0, column.width);
    });
    f.list(Width::BL, 0, rows, 14, [&](Row& row) {
        f.list(Width::BL, 0, row.cells, 16, [&](Cell& cell) { describeCell(f, cell); });
        describeItems(f, row.customData, row.items);
        describeStyle(f, row.style);
        f.bl(0, row.styleId);
        f.bd(0, row.height);
    });
    f.handles(Width::BL, Ref::HardOwner, 0, 0, fields);
    describeStyle(f, tableOverride);
    f.list(Width::BL, 0, merges, 8, [&](Merge& merge) {
        f.bl(0, merge.top);
        f.bl(0, merge.left);
        f.bl(0, merge.bottom);
        f.bl(0, merge.right);
    });
    f.handle(Ref::HardPointer, 0, tableStyle);
}

void TableEntity::describeItems(Fields& f, std::int32_t& customData, std::vector<Item>& items) {
    f.bl(0, customData);
    f.list(Width::BL, 0, items, 8, [&](Item& item) {
        f.text(0, item.name);
        describeValue(f, item.value);
    });
}

void TableEntity::describeValue(Fields& f, Value& v) {
    if (f.since(Version::R2007)) f.bl(0, v.flags);
    f.bl(0, v.kind);
    if ((v.flags & Value::kNoData) == 0 || f.before(Version::R2007)) {
        std::int32_t size = v.kind == Value::kPoint2 ? 16 : 24;
        switch (v.kind) {
            case Value::kUnknown:
            case Value::kLong:
                f.bl(0, v.integer);
                break;
            case Value::kReal:
                f.bd(0, v.real);
                break;
            case Value::kText:
            case Value::kGeneral: {
                // UTF-16 with an end mark, in the data and not among the texts.
                std::string raw;
                if (!f.reading()) {
                    for (const char16_t unit : utf16OfUtf8(v.text)) {
                        raw += static_cast<char>(unit & 0xFF);
                        raw += static_cast<char>(unit >> 8);
                    }
                    raw.append(2, '\0');
                }
                const std::size_t bytes = f.count(Width::BL, 0, raw.size(), 8);
                f.bytes(0, raw, bytes);
                if (!f.reading()) break;
                while (raw.size() >= 2 && raw[raw.size() - 1] == '\0' && raw[raw.size() - 2] == '\0')
                    raw.resize(raw.size() - 2);
                v.text = utf8OfUtf16(raw);
                break;
            }
            case Value::kDate: {
                const std::size_t bytes = f.count(Width::BL, 0, v.text.size(), 8);
                f.bytes(0, v.text, bytes);
                break;
            }
            case Value::kPoint2:
            case Value::kPoint3:
                f.bl(0, size);
                f.rd(0, v.point.x);
                f.rd(0, v.point.y);
                if (v.kind == Value::kPoint3) f.rd(0, v.point.z);
                break;
            case Value::kHandle:
                f.handle(Ref::SoftPointer, 0, v.handle);
                break;
            default:
                f.fail();
                return;
        }
    }
    if (f.before(Version::R2007)) return;
    f.bl(0, v.unit);
    f.text(0, v.format);
    f.text(0, v.shown);
}

void TableEntity::describeStyle(Fields& f, Style& style) {
    f.bl(0, style.kind);
    optional(f, Width::BS, style.data, [&](StyleData& d) {
        f.bl(0, d.overrides);
        f.bl(0, d.merge);
        f.longColor(0, d.background);
        f.bl(0, d.layout);
        describeFormat(f, d.format);
        f.bs(0, d.marginFlags);
        if ((d.marginFlags & 1) != 0)
            for (double& margin : d.margins) f.bd(0, margin);
        f.list(Width::BL, 0, d.borders, 2, [&](Border& border) {
            f.bl(0, border.edges);
            if (border.edges == 0) return;
            f.bl(0, border.overrides);
            f.bl(0, border.kind);
            f.longColor(0, border.color);
            f.bl(0, border.lineweight);
            f.handle(Ref::HardPointer, 0, border.linetype);
            f.bl(0, border.invisible);
            f.bd(0, border.spacing);
        });
        if (d.borders.size() > 6) f.fail();
    });
}

void TableEntity::describeFormat(Fields& f, Format& format) {
    f.bl(0, format.overrides);
    f.bl(0, format.properties);
    f.bl(0, format.valueKind);
    f.bl(0, format.valueUnit);
    f.text(0, format.format);
    f.bd(0, format.rotation);
    f.bd(0, format.blockScale);
    f.bl(0, format.alignment);
    f.longColor(0, format.color);
    f.record(Table::Style, 0, format.textStyle);
    f.bd(0, format.textHeight);
}

void TableEntity::describeCell(Fields& f, Cell& cell) {
    f.bl(0, cell.state);
    f.text(0, cell.tooltip);
    describeItems(f, cell.customData, cell.items);
    optional(f, Width::BL, cell.link, [&](Link& link) {
        f.handle(Ref::HardPointer, 0, link.object);
        f.bl(0, link.rows);
        f.bl(0, link.columns);
        f.bl(0, link.unknown);
    });
    f.list(Width::BL, 0, cell.contents, 6, [&](Content& content) { describeCellContent(f, content); });
    describeStyle(f, cell.style);
    f.bl(0, cell.styleId);
    optional(f, Width::BL, cell.geometry, [&](Geometry& geometry) {
        f.bl(0, geometry.flags);
        f.bd(0, geometry.width);
        f.bd(0, geometry.height);
        const std::size_t count = f.count(Width::BL, 0, geometry.places.size(), 22);
        f.handle(Ref::SoftPointer, 0, geometry.object);
        f.rest(geometry.places, count, [&](Place& place) {
            f.bd3(0, place.topLeft);
            f.bd3(0, place.center);
            for (double& size : place.sizes) f.bd(0, size);
            f.bl(0, place.flags);
        });
    });
}

void TableEntity::describeCellContent(Fields& f, Content& content) {
    f.bl(0, content.kind);
    if (content.kind == Content::kValue)
        describeValue(f, content.value);
    else if (content.kind == Content::kField || content.kind == Content::kBlock)
        f.handle(Ref::HardPointer, 0, content.reference);
    f.list(Width::BL, 0, content.attributes, 4, [&](Attribute& attribute) {
        f.handle(Ref::SoftPointer, 0, attribute.definition);
        f.text(0, attribute.text);
        f.bl(0, attribute.index);
    });
    optional(f, Width::BS, content.format, [&](Format& format) { describeFormat(f, format); });
}

}  // namespace kdraw
