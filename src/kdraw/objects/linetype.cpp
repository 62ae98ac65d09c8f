#include "kdraw/objects/linetype.hpp"

#include "kdraw/groups/describing_objects.hpp"
#include "kdraw/fields/text_codec.hpp"

namespace kdraw {

namespace {

constexpr std::size_t kNarrowArea = 256, kWideArea = 512;

}  // namespace

void LinetypeRecord::describe(Fields& f) {
    if (f.dxf()) {
        describeGroups(f);
        return;
    }
    describeHead(f, {});
    f.text(0, description);
    f.bd(0, length);
    f.rc(0, alignment);
    // One byte counts the dashes.
    if (!f.reading() && dashes.size() > 255) dashes.resize(255);
    std::string area;
    if (!f.reading()) {
        // Texts follow one another in the order of the dashes; each dash knows where its own begins.
        for (Dash& dash : dashes) {
            if ((dash.flags & Dash::kText) == 0) continue;
            const std::u16string units = utf16OfUtf8(dash.text);
            const std::size_t room = (kWideArea - area.size()) / 2;
            if (units.size() + 1 > room) {
                dash.flags &= static_cast<std::int16_t>(~Dash::kText);
                continue;
            }
            dash.shape = static_cast<std::int16_t>(area.size() / 2);
            for (const char16_t unit : units) {
                area += static_cast<char>(unit & 0xFF);
                area += static_cast<char>(unit >> 8);
            }
            area.append(2, '\0');
        }
    }
    f.list(Width::RC, 0, dashes, 150, [&](Dash& dash) {
        f.bd(0, dash.length);
        f.bs(0, dash.shape);
        f.rd(0, dash.x);
        f.rd(0, dash.y);
        f.bd(0, dash.scale);
        f.bd(0, dash.rotation);
        f.bs(0, dash.flags);
    });
    bool anyText = false;
    for (const Dash& dash : dashes) anyText = anyText || (dash.flags & Dash::kText) != 0;
    const bool wide = f.since(Version::R2007);
    if (!wide || anyText) {
        const std::size_t size = wide ? kWideArea : kNarrowArea;
        if (!f.reading()) area.resize(size, '\0');
        f.bytes(0, area, size);
        if (f.reading()) {
            const std::size_t unit = wide ? 2 : 1;
            std::size_t at = 0;
            for (Dash& dash : dashes) {
                if ((dash.flags & Dash::kText) == 0) continue;
                std::size_t end = at;
                while (end + unit <= area.size() && (area[end] != 0 || (wide && area[end + 1] != 0))) end += unit;
                if (at >= area.size()) break;
                const std::string_view piece = std::string_view(area).substr(at, end - at);
                dash.text = wide ? utf8OfUtf16(piece) : f.fromCodePage(piece);
                at = end + unit;
            }
        }
    }
    for (Dash& dash : dashes) f.handle(Ref::HardPointer, 0, dash.style);
}

void LinetypeRecord::describeGroups(Fields& f) {
    describeHead(f, "AcDbLinetypeTableRecord");
    f.text(3, description);
    f.rc(72, alignment);
    if (DxfOutput* out = f.output()) {
        out->integer(73, static_cast<std::int64_t>(dashes.size()));
        out->real(40, length);
        for (Dash& dash : dashes) {
            out->real(49, dash.length);
            out->integer(74, dash.flags);
            if ((dash.flags & (Dash::kText | Dash::kShape)) == 0) continue;
            out->integer(75, (dash.flags & Dash::kText) != 0 ? 0 : dash.shape);
            out->handle(340, dash.style);
            out->real(46, dash.scale);
            f.angle(50, dash.rotation);
            out->real(44, dash.x);
            out->real(45, dash.y);
            if ((dash.flags & Dash::kText) != 0) out->text(9, dash.text);
        }
        return;
    }
    f.bd(40, length);
    DxfInput& in = *f.input();
    dashes.clear();
    for (bool more = in.find(49); more && !in.atEnd();) {
        Dash& dash = dashes.emplace_back();
        dash.length = in.real();
        in.skip();
        while (!in.atEnd() && in.peek() != 49) {
            switch (in.peek()) {
                case 74:
                    dash.flags = static_cast<std::int16_t>(in.integer());
                    break;
                case 75:
                    dash.shape = static_cast<std::int16_t>(in.integer());
                    break;
                case 340:
                    dash.style = in.handle();
                    break;
                case 46:
                    dash.scale = in.real();
                    break;
                case 50:
                    f.angle(50, dash.rotation);
                    if (in.peek() == 50) in.skip();
                    continue;
                case 44:
                    dash.x = in.real();
                    break;
                case 45:
                    dash.y = in.real();
                    break;
                case 9:
                    dash.text = in.decoded();
                    break;
                default:
                    break;
            }
            in.skip();
        }
    }
}

}  // namespace kdraw
