// Texts as groups.

#include <cmath>

#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/shape.hpp"
#include "engine/entities/text.hpp"
#include "engine/text/text_line.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "script/lisp/entities/entity_codes.hpp"
#include "strings/utf8.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

/// TEXT and what shares its groups. The alignment point of justified text is group 11, else group 10.
template <class E>
void textGroups(const GroupIo& io, E& e, Vector2& position, double& height, std::string& content, int vertical,
                const TextLine& line) {
    const auto justified = [&] { return e.hAlign != 0 || e.vAlign != 0; };
    if (io.reading()) {
        const bool before = justified();
        io.integer(72, e.hAlign);
        io.integer(vertical, e.vAlign);
        if (e.hAlign < 0 || e.hAlign > 5) e.hAlign = 0;
        if (e.vAlign < 0 || e.vAlign > 3) e.vAlign = 0;
        const GroupList& in = io.in();
        const bool two = e.hAlign == kHAlignAligned || e.hAlign == kHAlignFit;
        e.fit = two;
        const int own = justified() && !two && (in.has(11) || before) ? 11 : 10;
        if (in.has(own)) io.point(own, position, e.elevation);
        if (two) io.flat(11, e.fitEnd);
    } else {
        GroupWriter& out = io.out();
        const bool two = e.hasSecondPoint();
        const Vector2 start = justified() && !two ? textLineBaselineStart(line, e.drawing()) : position;
        out.point(10, Vector3(start, e.elevation));
        out.point(11, two ? Vector3(e.fitEnd, e.elevation) : justified() ? Vector3(position, e.elevation) : Vector3());
    }
    io.real(40, height);
    io.text(1, content);
    io.real(50, e.rotation);
    io.real(41, e.widthFactor);
    io.real(51, e.oblique);
    io.name(7, e.textStyle);
    io.integer(71, e.generation);
    if (!io.reading()) {
        io.integer(72, e.hAlign);
        normalGroup(io, e);
    }
}

}  // namespace

void plainTextGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<TextEntity&>(entity);
    io.marker("AcDbText");
    textGroups(io, e, e.position, e.height, e.content, 73, e.line());
    io.marker("AcDbText");
    if (!io.reading()) io.integer(73, e.vAlign);
}

void attdefGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<AttributeDefinitionEntity&>(entity);
    io.marker("AcDbText");
    textGroups(io, e, e.insertion, e.textHeight, e.defaultValue, 74, e.line());
    io.marker("AcDbAttributeDefinition");
    io.text(3, e.prompt);
    io.text(2, e.tag);
    std::int32_t flags = (e.invisible ? 1 : 0) | (e.constant ? 2 : 0) | (e.verify ? 4 : 0) | (e.preset ? 8 : 0);
    io.integer(70, flags);
    e.invisible = (flags & 1) != 0;
    e.constant = (flags & 2) != 0;
    e.verify = (flags & 4) != 0;
    e.preset = (flags & 8) != 0;
    if (!io.reading()) io.integer(74, e.vAlign);
}

void mtextGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<MTextEntity&>(entity);
    io.marker("AcDbMText");
    io.point(10, e.position, e.elevation);
    io.real(40, e.height);
    io.real(41, e.width);
    io.integer(71, e.attachment);
    if (io.reading()) {
        const GroupList& in = io.in();
        if (in.has(1) || in.has(3)) {
            e.content.clear();
            for (const GroupList::Group& g : in.groups())
                if (g.code == 3) e.content += GroupList::textOf(3, *g.value);
            e.content += in.text(1);
        }
        e.rotation = in.real(50, e.rotation);
        if (in.has(11)) e.rotation = in.point(11).xy().angle();
        e.lineSpacingExact = in.integer(73, e.lineSpacingExact ? 2 : 1) == 2;
    } else {
        // Texts come in pieces of 250 bytes, none of them cut within a character.
        std::string_view rest = e.content;
        while (rest.size() > 250) {
            const std::size_t cut = strings::wholeCharacters(rest, 250);
            io.out().text(3, rest.substr(0, cut));
            rest.remove_prefix(cut);
        }
        io.out().text(1, rest);
    }
    io.name(7, e.textStyle);
    if (!io.reading()) {
        normalGroup(io, e);
        io.out().point(11, Vector3(Vector2::from_angle(e.rotation)));
        io.real(50, e.rotation);
        io.out().integer(73, e.lineSpacingExact ? 2 : 1);
    }
    io.real(44, e.lineSpacingFactor);
}

void shapeGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<ShapeEntity&>(entity);
    io.marker("AcDbShape");
    io.point(10, e.position, e.elevation);
    io.real(40, e.size);
    io.text(2, e.name);
    io.real(50, e.rotation);
    io.real(41, e.widthFactor);
    io.real(51, e.oblique);
    normalGroup(io, e);
}

}  // namespace kova::script::lisp
