// Bodies of the solid modeller as groups: their data as interchange files hold them, text in pieces under 1 and 3,
// binary as hexadecimal digits under 310.

#include "engine/entities/solid3d.hpp"
#include "engine/solids/modeler_text.hpp"
#include "script/lisp/entities/entity_codes.hpp"

namespace kova::script::lisp {

using namespace engine;

namespace {

constexpr std::size_t kPiece = 254;

void writeBody(GroupWriter& out, const Solid3DEntity& e) {
    out.integer(70, e.modelerVersion);
    std::string_view rest = e.sat;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string line = codedModelerText(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        // A caret and its blank stay together.
        std::size_t from = 0;
        do {
            std::size_t size = std::min(kPiece, line.size() - from);
            if (from + size < line.size() && line[from + size - 1] == '^') --size;
            out.text(from == 0 ? 1 : 3, std::string_view(line).substr(from, size));
            from += size;
        } while (from < line.size());
    }
    for (std::size_t at = 0; at < e.sab.size(); at += kPiece / 2)
        out.text(310, hexDigits(std::string_view(e.sab).substr(at, kPiece / 2)));
}

void readBody(const GroupList& in, Solid3DEntity& e) {
    if (in.has(70)) e.modelerVersion = static_cast<std::int32_t>(std::clamp<std::int64_t>(in.integer(70), 0, 2));
    if (!in.has(1) && !in.has(310)) return;
    std::string sat;
    std::string sab;
    bool first = true;
    for (const GroupList::Group& g : in.groups()) {
        if (g.code == 1 && !std::exchange(first, false)) sat += '\n';
        if (g.code == 1 || g.code == 3) appendModelerText(sat, GroupList::textOf(g.code, *g.value));
        if (g.code == 310) appendHexBytes(sab, GroupList::textOf(310, *g.value));
    }
    if (!first) sat += '\n';
    e.sat = std::move(sat);
    e.sab = std::move(sab);
}

}  // namespace

void bodyGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<Solid3DEntity&>(entity);
    io.marker("AcDbModelerGeometry");
    if (io.reading()) return readBody(io.in(), e);
    writeBody(io.out(), e);
    if (e.kind == Solid3DEntity::BodyKind::Solid) io.marker("AcDb3dSolid");
}

}  // namespace kova::script::lisp
