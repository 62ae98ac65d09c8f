#include "kdraw/objects/mline_style.hpp"

#include "kdraw/objects/control.hpp"
#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

namespace {

/// Some pairs of bits stand the other way round in the binary format; the exchange is its own inverse.
int exchanged(int flags) {
    constexpr int pairs[][2] = {{1, 2}, {32, 64}, {512, 1024}};
    int result = flags & ~(1 | 2 | 32 | 64 | 512 | 1024);
    for (const auto& pair : pairs) {
        if ((flags & pair[0]) != 0) result |= pair[1];
        if ((flags & pair[1]) != 0) result |= pair[0];
    }
    return result;
}

}  // namespace

void MLineStyle::describe(Fields& f) {
    if (f.dxf()) {
        describeGroups(f);
        return;
    }
    f.text(0, name);
    f.text(0, description);
    int stored = exchanged(flags);
    f.bs(0, stored);
    flags = exchanged(stored);
    f.color(0, 0, fill);
    f.bd(0, startAngle);
    f.bd(0, endAngle);
    // One byte counts the lines.
    if (!f.reading() && lines.size() > 255) lines.resize(255);
    f.list(Width::RC, 0, lines, 4, [&](Line& line) {
        f.bd(0, line.offset);
        f.color(0, 0, line.color);
        if (f.since(Version::R2018))
            f.record(Table::Linetype, 0, line.linetype);
        else
            f.bs(0, line.linetypeIndex);
    });
}

void MLineStyle::describeGroups(Fields& f) {
    f.subclass("AcDbMlineStyle");
    f.text(2, name);
    f.bs(70, flags);
    f.text(3, description);
    DxfInput* in = f.input();
    if (in == nullptr) {
        f.color(62, 420, fill);
    } else if (in->find(62)) {
        fill = Color::fromIndex(limited(static_cast<int>(in->integer()), 0, 256));
        in->skip();
        // The lines' colours have the same groups.
        if (in->peek() == 420) fill.raw = Color::kTrue | (static_cast<std::uint32_t>(in->integer()) & 0xFFFFFF);
    }
    f.angle(51, startAngle);
    f.angle(52, endAngle);
    if (in == nullptr) {
        f.output()->integer(71, static_cast<std::int64_t>(lines.size()));
        for (Line& line : lines) {
            f.bd(49, line.offset);
            f.color(62, 420, line.color);
            f.record(Table::Linetype, 6, line.linetype);
        }
        return;
    }
    lines.clear();
    for (bool more = in->find(49); more && !in->atEnd(); in->skip()) {
        if (in->peek() == 49) {
            lines.emplace_back().offset = in->real();
            continue;
        }
        Line& line = lines.back();
        if (in->peek() == 62)
            line.color = Color::fromIndex(limited(static_cast<int>(in->integer()), 0, 256));
        else if (in->peek() == 420)
            line.color.raw = Color::kTrue | (static_cast<std::uint32_t>(in->integer()) & 0xFFFFFF);
        else if (in->peek() == 6)
            line.linetype = in->record(Table::Linetype, in->decoded());
    }
}

void MLineStyle::resolveLinetypes(const LinetypeControl& table) {
    for (Line& line : lines) {
        if (line.linetype != 0) continue;
        const auto index = static_cast<std::size_t>(line.linetypeIndex < 0 ? Line::kByLayer : line.linetypeIndex);
        if (index == static_cast<std::size_t>(Line::kByBlock))
            line.linetype = table.byBlock;
        else
            line.linetype = index < table.records.size() ? table.records[index] : table.byLayer;
    }
}

void MLineStyle::indexLinetypes(const LinetypeControl& table) {
    for (Line& line : lines) {
        line.linetypeIndex = line.linetype != 0 && line.linetype == table.byBlock ? Line::kByBlock : Line::kByLayer;
        if (line.linetype == 0) line.linetype = table.byLayer;
        for (std::size_t i = 0; i < table.records.size() && i < Line::kByBlock; ++i)
            if (line.linetype != 0 && table.records[i] == line.linetype) line.linetypeIndex = static_cast<int>(i);
    }
}

}  // namespace kdraw
