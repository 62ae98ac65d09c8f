#include "kdraw/entities/texts.hpp"

#include "kdraw/groups/describing.hpp"
#include "kdraw/database/record_codec.hpp"

namespace kdraw {

void TextLine::describeLine(Fields& f, std::string& shown) {
    f.subclass("AcDbText");
    if (f.dxf()) {
        f.rd2(10, position);
        f.rd(30, elevation);
        f.thickness(39, thickness);
        f.rd(40, height);
        f.text(1, shown);
        sparseAngle(f, 50, rotation);
        sparseReal(f, 41, widthFactor, 1.0);
        sparseAngle(f, 51, oblique);
        f.record(Table::Style, 7, style);
        standardWhenMissing(f, Table::Style, style);
        if (wanted(f, generation != 0)) f.bs(71, generation);
        if (wanted(f, horizontal != 0)) f.bs(72, horizontal);
        if (wanted(f, horizontal != 0 || vertical != 0)) {
            if (f.reading()) alignment = position;
            f.rd2(11, alignment);
            if (f.output() != nullptr) f.rd(31, elevation);
        }
        f.extrusion(210, normal);
        return;
    }
    // Set bits name what is not stored.
    constexpr std::uint8_t kElevation = 0x1, kAlignment = 0x2, kOblique = 0x4, kRotation = 0x8, kWidth = 0x10,
                           kGeneration = 0x20, kHorizontal = 0x40, kVertical = 0x80;
    std::uint8_t absent = 0;
    const auto leaveOff = [&](std::uint8_t bit, bool plain) {
        if (plain) absent |= bit;
    };
    leaveOff(kElevation, elevation == 0.0);
    leaveOff(kAlignment, horizontal == 0 && vertical == 0 && alignment == Vector2{});
    leaveOff(kOblique, oblique == 0.0);
    leaveOff(kRotation, rotation == 0.0);
    leaveOff(kWidth, widthFactor == 1.0);
    leaveOff(kGeneration, generation == 0);
    leaveOff(kHorizontal, horizontal == 0);
    leaveOff(kVertical, vertical == 0);
    f.rc(0, absent);
    if ((absent & kElevation) == 0) f.rd(0, elevation);
    f.rd2(0, position);
    if ((absent & kAlignment) == 0) {
        f.dd(0, alignment.x, position.x);
        f.dd(0, alignment.y, position.y);
    }
    f.extrusion(0, normal);
    f.thickness(0, thickness);
    if ((absent & kOblique) == 0) f.rd(0, oblique);
    if ((absent & kRotation) == 0) f.rd(0, rotation);
    f.rd(0, height);
    if ((absent & kWidth) == 0) f.rd(0, widthFactor);
    f.text(0, shown);
    if ((absent & kGeneration) == 0) f.bs(0, generation);
    if ((absent & kHorizontal) == 0) f.bs(0, horizontal);
    if ((absent & kVertical) == 0) f.bs(0, vertical);
    f.record(Table::Style, 0, style);
}

void TextEntity::describe(Fields& f) {
    if (DxfInput* in = f.input(); in != nullptr && in->findAnywhere(73))
        vertical = static_cast<std::uint16_t>(in->integer());
    describeLine(f, text);
    // The second marker stands there even when nothing follows.
    if (DxfOutput* out = f.output()) {
        out->subclass("AcDbText");
        if (vertical != 0) out->integer(73, vertical);
    }
}

void AttributeLine::describeAttribute(Fields& f, std::string_view marker, std::string* prompt) {
    if (f.dxf()) {
        std::string shown = lines != nullptr && text.empty() ? lines->plainText() : text;
        if (DxfInput* in = f.input(); in != nullptr && in->enter(marker)) f.bs(74, vertical);
        describeLine(f, shown);
        if (f.reading()) text = std::move(shown);
        f.subclass(marker);
        if (DxfInput* in = f.input(); in != nullptr && in->find(101)) readParagraphs(f, *in);
        f.constant(280, 0);
        // The second group of this code is the lock.
        if (DxfInput* in = f.input(); in != nullptr && in->find(280)) in->skip();
        if (DxfOutput* out = f.output(); out != nullptr && lines != nullptr) out->integer(71, kind);
        if (prompt != nullptr) f.text(3, *prompt);
        f.text(2, tag);
        f.rc(70, flags);
        if (wanted(f, fieldLength != 0)) f.bs(73, fieldLength);
        if (f.output() != nullptr && vertical != 0) f.bs(74, vertical);
        if (DxfInput* in = f.input(); in != nullptr) {
            if (in->seek(280)) lockPosition = in->integer() != 0;
        } else {
            f.b(280, lockPosition);
            if (lines != nullptr) describeParagraphs(f);
        }
        return;
    }
    describeLine(f, text);
    std::uint8_t version = 0;
    if (f.since(Version::R2010)) f.rc(0, version);
    if (f.since(Version::R2018)) {
        if (!f.reading() && lines == nullptr) kind = kSingleLine;
        f.rc(0, kind);
        if (kind == kMultiLine || kind == kConstantMultiLine) describeLines(f);
    }
    f.text(0, tag);
    f.bs(0, fieldLength);
    f.rc(0, flags);
    if (f.since(Version::R2007)) f.b(0, lockPosition);
    if (prompt != nullptr) {
        if (f.since(Version::R2010)) f.rc(0, version);
        f.text(0, *prompt);
    }
}

/// The groups of the text with several lines, as an object inside this one. Columns have no place there.
void AttributeLine::describeParagraphs(Fields& f) {
    const MTextEntity::Columns columns = std::exchange(lines->columns, {});
    f.output()->word(101, "Embedded Object");
    lines->describeGroups(f);
    lines->columns = columns;
}

/// The same the other way; what stands before that object is the present part afterwards.
void AttributeLine::readParagraphs(Fields& f, DxfInput& in) {
    const std::size_t begin = in.partBegin(), embedded = in.cursor();
    if (in.find(71)) kind = static_cast<std::uint8_t>(in.integer());
    lines = std::make_unique<MTextEntity>();
    in.setPart(embedded + 1, in.partEnd());
    lines->describeGroups(f);
    in.setPart(begin, embedded);
}

/// A multi-line text with the common part of an entity, but without a record's head.
void AttributeLine::describeLines(Fields& f) {
    if (lines == nullptr) lines = std::make_unique<MTextEntity>();
    lines->handle = handle;
    describeEntityCommon(f, *lines);
    lines->describe(f);
    const std::size_t size = f.count(Width::BS, 0, annotativeData.size(), 8);
    if (size == 0) return;
    f.bytes(0, annotativeData, size);
    f.handle(Ref::HardPointer, 0, annotativeApplication);
    std::uint16_t unknown = 0;
    f.bs(0, unknown);
}

void MTextEntity::describe(Fields& f) {
    f.subclass("AcDbMText");
    if (f.dxf()) {
        describeGroups(f);
        return;
    }
    f.bd3(0, position);
    f.bd3(0, normal);
    f.bd3(0, direction);
    f.bd(0, width);
    if (f.since(Version::R2007)) f.bd(0, definedHeight);
    f.bd(0, height);
    f.bs(0, attachment);
    f.bs(0, flow);
    f.bd(0, extentsHeight);
    f.bd(0, extentsWidth);
    f.text(0, text);
    f.record(Table::Style, 0, style);
    f.bs(0, spacingStyle);
    f.bd(0, spacingFactor);
    bool unknown = false;
    f.b(0, unknown);
    if (f.since(Version::R2004)) {
        f.bl(0, background);
        if ((background & kFill) != 0 || (f.since(Version::R2018) && (background & kFrame) != 0)) {
            f.bd(0, backgroundScale);
            f.color(0, 0, backgroundColor);
            f.bl(0, backgroundTransparency);
        }
    }
    if (f.since(Version::R2018)) {
        bool notAnnotative = true;
        f.b(0, notAnnotative);
        if (notAnnotative) describeColumns(f);
    }
}

/// The second copy of the geometry, and the columns.
void MTextEntity::describeColumns(Fields& f) {
    std::uint16_t version = 4;
    bool plain = true;
    auto anchor = static_cast<std::int32_t>(attachment);
    Vector3 axis = direction, place = position;
    double wide = width, tall = definedHeight, extentX = extentsWidth, extentY = extentsHeight;
    f.bs(0, version);
    f.b(0, plain);
    f.handle(Ref::HardPointer, 0, application);
    f.bl(0, anchor);
    f.bd3(0, axis);
    f.bd3(0, place);
    f.bd(0, wide);
    f.bd(0, tall);
    f.bd(0, extentX);
    f.bd(0, extentY);
    f.bs(0, columns.type);
    if (columns.type == 0) return;
    const bool listed = columns.type == 2;
    std::size_t count = columns.count < 0 ? 0 : static_cast<std::size_t>(columns.count);
    if (listed && !columns.autoHeight) count = columns.heights.size();
    count = f.count(Width::BL, 0, count, 1);
    columns.count = static_cast<std::int32_t>(count);
    f.bd(0, columns.width);
    f.bd(0, columns.gutter);
    f.b(0, columns.autoHeight);
    f.b(0, columns.reversed);
    if (!listed || columns.autoHeight) return;
    f.rest(columns.heights, count, [&](double& one) { f.bd(0, one); });
}

void MTextEntity::describeGroups(Fields& f) {
    DxfInput* in = f.input();
    DxfOutput* out = f.output();
    if (in != nullptr && in->find(101)) {
        // What follows belongs to an object inside this one.
        const std::size_t begin = in->partBegin(), embedded = in->cursor();
        in->setPart(embedded, in->partEnd());
        describeColumnGroups(f);
        in->setPart(begin, embedded);
    }
    f.bd3(10, position);
    f.bd(40, height);
    f.bd(41, width);
    sparseReal(f, 46, definedHeight, 0.0);
    f.bs(71, attachment);
    f.bs(72, flow);
    longText(f, 3, 1, text);
    f.record(Table::Style, 7, style);
    standardWhenMissing(f, Table::Style, style);
    f.extrusion(210, normal);
    if (in != nullptr) {
        // Either form of the direction; of both the later one counts.
        const auto& groups = in->groups();
        bool byAngle = false;
        for (std::size_t i = 0; i < in->ownGroups(); ++i) {
            if (groups[i].code == 50) byAngle = true;
            if (groups[i].code == 11) byAngle = false;
        }
        double angle = 0.0;
        if (byAngle) {
            f.angle(50, angle);
            direction = {std::cos(angle), std::sin(angle), 0.0};
        } else {
            f.bd3(11, direction);
        }
    } else {
        f.bd3(11, direction);
    }
    sparseReal(f, 42, extentsWidth, 0.0);
    sparseReal(f, 43, extentsHeight, 0.0);
    f.bs(73, spacingStyle);
    f.bd(44, spacingFactor);
    if (wanted(f, background != 0)) {
        f.bl(90, background);
        f.color(63, 421, backgroundColor);
        f.bd(45, backgroundScale);
        f.bl(441, backgroundTransparency);
    }
    if (in != nullptr && columns.type == 0) readColumnData(*in);
    if (out == nullptr || columns.type == 0) return;
    out->word(101, "Embedded Object");
    out->integer(70, 1);
    out->point(10, direction);
    out->point(11, position);
    out->real(40, width);
    out->real(41, definedHeight);
    out->real(42, extentsWidth);
    out->real(43, extentsHeight);
    describeColumnGroups(f);
}

void MTextEntity::describeColumnGroups(Fields& f) {
    f.bs(71, columns.type);
    f.bl(72, columns.count);
    f.bd(44, columns.width);
    f.bd(45, columns.gutter);
    f.b(73, columns.autoHeight);
    f.b(74, columns.reversed);
    if (DxfOutput* out = f.output())
        for (const double one : columns.heights) out->real(46, one);
    if (DxfInput* in = f.input())
        for (bool found = in->find(46); found; in->skip(), found = in->seek(46)) columns.heights.push_back(in->real());
}

/// Columns and frame, which stand in the extended data: pairs of a code and a value between marks.
void MTextEntity::readColumnData(DxfInput& in) {
    const auto& groups = in.groups();
    const std::size_t cursor = in.cursor();
    const auto integerAt = [&](std::size_t i) {
        in.setCursorAnywhere(i);
        return in.integer();
    };
    const auto realAt = [&](std::size_t i) {
        in.setCursorAnywhere(i);
        return in.real();
    };
    for (std::size_t i = in.ownGroups(); i < groups.size(); ++i) {
        if (groups[i].code != 1000) continue;
        if (groups[i].value == "ACAD_MTEXT_TEXT_BORDERS_BEGIN") background |= kFrame;
        if (groups[i].value != "ACAD_MTEXT_COLUMN_INFO_BEGIN") continue;
        for (++i; i + 1 < groups.size() && groups[i].code == 1070; i += 2) {
            const std::size_t value = i + 1;
            switch (integerAt(i)) {
                case 75:
                    columns.type = static_cast<std::uint16_t>(integerAt(value));
                    break;
                case 76:
                    columns.count = static_cast<std::int32_t>(integerAt(value));
                    break;
                case 78:
                    columns.reversed = integerAt(value) != 0;
                    break;
                case 79:
                    columns.autoHeight = integerAt(value) != 0;
                    break;
                case 48:
                    columns.width = realAt(value);
                    break;
                case 49:
                    columns.gutter = realAt(value);
                    break;
                case 50:
                    for (i += 2; i < groups.size() && groups[i].code == 1040; ++i) columns.heights.push_back(realAt(i));
                    i -= 2;
                    break;
                default:
                    break;
            }
        }
    }
    if (columns.type > 2) columns.type = 0;
    in.setCursorAnywhere(cursor);
}

std::string MTextEntity::plainText() const {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '{' || c == '}') continue;
        if (c != '\\' || i + 1 == text.size()) {
            plain += c;
            continue;
        }
        const char code = text[++i];
        switch (code) {
            case 'P':
            case 'N':
                plain += '\n';
                break;
            case '~':
                plain += ' ';
                break;
            case '\\':
            case '{':
            case '}':
                plain += code;
                break;
            case 'L':
            case 'l':
            case 'O':
            case 'o':
            case 'K':
            case 'k':
                break;
            case 'S': {
                // A stack: its two parts behind one another.
                for (++i; i < text.size() && text[i] != ';'; ++i)
                    plain += text[i] == '^' || text[i] == '#' ? '/' : text[i];
                break;
            }
            case 'A':
            case 'C':
            case 'c':
            case 'F':
            case 'f':
            case 'H':
            case 'p':
            case 'Q':
            case 'T':
            case 'W':
                while (i < text.size() && text[i] != ';') ++i;
                break;
            default:
                plain += '\\', plain += code;
        }
    }
    return plain;
}

}  // namespace kdraw
