#include "kdraw/objects/visual_style.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

namespace {

/// Kinds of the properties in the order of the format: b flag, l number, d real, c colour, t text. The first 28 exist
/// from R2010 on, the others from R2013.
constexpr char kKinds[] =
    "lllldd"
    "c"
    "llcc"
    "lld"
    "lcdlllc"
    "lllbldl"
    "bbbbbbbbblddlcllcblllblcdltbdd";
static_assert(sizeof kKinds - 1 == VisualStyle::kProperties);

}  // namespace

void VisualStyle::describe(Fields& f) {
    f.subclass("AcDbVisualStyle");
    f.text(2, description);
    f.bl(70, type);
    if (f.dxf()) return;
    if (f.before(Version::R2010)) {
        describeOld(f);
        return;
    }
    f.bs(0, unknown);
    f.b(0, internal);
    const std::size_t n = f.since(Version::R2013) ? kProperties : kProperties2010;
    for (std::size_t i = 0; i < n; ++i) {
        Property& p = properties[i];
        switch (kKinds[i]) {
            case 'b': {
                bool v = p.number != 0;
                f.b(0, v);
                p.number = v ? 1 : 0;
                break;
            }
            case 'l':
                f.bl(0, p.number);
                break;
            case 'd':
                f.bd(0, p.real);
                break;
            case 'c':
                f.color(0, 0, p.color);
                break;
            default:
                f.text(0, p.text);
                break;
        }
        f.bs(0, p.set);
    }
}

void VisualStyle::describeOld(Fields& f) {
    // Places of the same properties in the newer form, in the older order.
    const auto number = [&](std::size_t i) { f.bl(0, properties[i].number); };
    const auto narrow = [&](std::size_t i) { f.bs(0, properties[i].number); };
    const auto real = [&](std::size_t i) { f.bd(0, properties[i].real); };
    const auto color = [&](std::size_t i) { f.color(0, 0, properties[i].color); };
    number(0), number(1), number(2);              // 71 72 73
    real(4), real(5), color(6), number(3);        // 40 41 63 90
    number(7), number(8), color(9), color(10);    // 74 91 64 65
    number(11), real(13), number(14);             // 75 42 92
    color(15), real(16), narrow(17), narrow(18);  // 66 43 76 77
    number(19), color(20), narrow(21);            // 78 67 79
    std::uint8_t halo = static_cast<std::uint8_t>(properties[22].number);
    f.rc(0, halo);  // 170
    properties[22].number = halo;
    narrow(23);  // 171
    bool hide = properties[24].number != 0;
    f.b(0, hide);  // 290
    properties[24].number = hide ? 1 : 0;
    narrow(12);  // 174: replaced by 175
    narrow(12);  // 175
    number(25);  // 93
    std::int32_t brightness = 0;
    f.bl(0, brightness);  // 44
    properties[26].real = brightness;
    number(27);  // 173
    if (f.since(Version::R2007)) {
        double unknown45 = 0.0;
        f.bd(0, unknown45);
    }
    f.b(0, internal);
}

}  // namespace kdraw
