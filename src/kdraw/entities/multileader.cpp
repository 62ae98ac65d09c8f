#include "kdraw/entities/multileader.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

namespace {

/// Groups between an opening and a closing one.
struct Span {
    std::size_t begin = 0, end = 0;
    bool found = false;
};

Span spanOf(const DxfInput& in, std::size_t from, std::size_t to, int open, std::string_view name, int close) {
    const auto& groups = in.groups();
    Span span;
    for (std::size_t i = from; i < to; ++i) {
        if (!span.found) {
            if (groups[i].code != open || !groups[i].value.starts_with(name)) continue;
            span = {i + 1, to, true};
        } else if (groups[i].code == close) {
            span.end = i;
            break;
        }
    }
    return span;
}

/// Parts inside the present one. In records they are counted; in groups each stands between marks. `describe` gets the
/// present part narrowed to one; the part is what follows the last one afterwards.
template <class T, class F>
void nested(Fields& f, std::vector<T>& items, unsigned bits, int open, std::string_view name, int close, F describe) {
    if (DxfInput* in = f.input()) {
        std::size_t at = in->partBegin();
        const std::size_t end = in->partEnd();
        for (Span span = spanOf(*in, at, end, open, name, close); span.found;
             span = spanOf(*in, at, end, open, name, close)) {
            in->setPart(span.begin, span.end);
            items.emplace_back();
            describe(items.back());
            at = span.end;
        }
        in->setPart(at, end);
    } else if (DxfOutput* out = f.output()) {
        for (T& item : items) {
            out->word(open, std::string(name) + "{");
            describe(item);
            out->word(close, "}");
        }
    } else {
        f.list(Width::BL, 0, items, bits, describe);
    }
}

/// Points or numbers whose groups have no count.
template <class T, class F>
void uncounted(Fields& f, int code, std::vector<T>& items, unsigned bits, F describe) {
    if (DxfInput* in = f.input()) {
        items.clear();
        for (bool found = in->find(code); found; found = in->seek(code)) {
            items.emplace_back();
            describe(items.back());
        }
    } else {
        f.list(Width::BL, 0, items, bits, describe);
    }
}

void describeBreaks(Fields& f, int code, std::vector<MultiLeaderEntity::Break>& breaks) {
    uncounted(f, code, breaks, 2 * kBitsOfPoint, [&](MultiLeaderEntity::Break& one) {
        f.bd3(code, one.first);
        f.bd3(code + 1, one.second);
    });
}

}  // namespace

void MultiLeaderEntity::describe(Fields& f) {
    f.subclass("AcDbMLeader");
    if (f.since(Version::R2010)) f.bs(270, version);
    constexpr std::string_view kContext = "CONTEXT_DATA";
    if (DxfInput* in = f.input()) {
        const std::size_t end = in->partEnd();
        if (const Span span = spanOf(*in, in->partBegin(), end, 300, kContext, 301); span.found) {
            in->setPart(span.begin, span.end);
            describeContext(f);
            in->setPart(span.end, end);
        }
    } else {
        if (DxfOutput* out = f.output()) out->word(300, "CONTEXT_DATA{");
        describeContext(f);
        if (DxfOutput* out = f.output()) out->word(301, "}");
    }
    f.handle(Ref::HardPointer, 340, style);
    f.bl(90, overrides);
    f.bs(170, leaderKind);
    f.rawColor(91, leaderColor);
    f.handle(Ref::HardPointer, 341, leaderLinetype);
    f.bl(171, leaderLineweight);
    f.b(290, landing);
    f.b(291, dogleg);
    f.bd(41, landingDistance);
    f.handle(Ref::HardPointer, 342, arrow);
    f.bd(42, arrowSize);
    f.bs(172, content);
    f.handle(Ref::HardPointer, 343, textStyle);
    f.bs(173, leftAttachment);
    f.bs(95, rightAttachment);
    f.bs(174, angleKind);
    f.bs(175, textAlignment);
    f.rawColor(92, textColor);
    f.b(292, textFrame);
    f.handle(Ref::HardPointer, 344, block);
    f.rawColor(93, blockColor);
    f.bd3(10, blockScale);
    f.bd(43, blockRotation);
    f.bs(176, blockConnection);
    f.b(293, annotative);
    if (f.before(Version::R2010)) {
        f.list(Width::BL, 0, arrows, 1, [&](Arrow& one) {
            f.b(94, one.usual);
            f.handle(Ref::HardPointer, 345, one.block);
        });
    }
    describeLabels(f);
    f.b(294, directionNegative);
    f.bs(178, ipeAlignment);
    f.bs(179, attachmentPoint);
    f.bd(45, scale);
    if (f.since(Version::R2010)) {
        f.bs(271, attachmentDirection);
        f.bs(272, bottomAttachment);
        f.bs(273, topAttachment);
    }
    if (f.since(Version::R2013) && wanted(f, extended)) f.b(295, extended);
}

void MultiLeaderEntity::describeLabels(Fields& f) {
    uncounted(f, 330, labels, 6, [&](Label& label) {
        f.handle(Ref::SoftPointer, 330, label.definition);
        if (f.dxf()) {
            f.bs(177, label.index);
            f.bd(44, label.width);
            f.text(302, label.text);
            return;
        }
        f.text(302, label.text);
        f.bs(177, label.index);
        f.bd(44, label.width);
    });
}

void MultiLeaderEntity::describeContext(Fields& f) {
    Context& c = context;
    if (!f.dxf()) describeRoots(f);
    // The leaders' groups have the same codes as those of the context.
    std::size_t begin = 0, end = 0;
    DxfInput* in = f.input();
    if (in != nullptr) {
        begin = in->partBegin();
        end = in->partEnd();
        const Span first = spanOf(*in, begin, end, 302, "LEADER", 303);
        if (first.found) in->setPart(begin, first.begin - 1);
    }
    f.bd(40, c.scale);
    f.bd3(10, c.base);
    f.bd(41, c.textHeight);
    f.bd(140, c.arrowSize);
    f.bd(145, c.landingGap);
    f.bs(174, c.leftAttachment);
    f.bs(175, c.rightAttachment);
    f.bs(176, c.textAlignment);
    f.bs(177, c.attachmentKind);
    f.b(290, c.hasText);
    if (c.hasText) describeText(f, c.text);
    if (!c.hasText || f.dxf()) {
        if (c.hasText) c.hasBlock = false;
        f.b(296, c.hasBlock);
        if (c.hasBlock) describeBlock(f, c.block);
    }
    f.bd3(110, c.origin);
    f.bd3(111, c.direction);
    f.bd3(112, c.vertical);
    f.b(297, c.reversed);
    if (in != nullptr) in->setPart(begin, end);
    if (f.dxf()) describeRoots(f);
    if (f.before(Version::R2010)) return;
    f.bs(273, c.topAttachment);
    f.bs(272, c.bottomAttachment);
}

void MultiLeaderEntity::describeText(Fields& f, Text& t) {
    f.text(304, t.text);
    f.bd3(11, t.normal);
    f.handle(Ref::HardPointer, 340, t.style);
    f.bd3(12, t.location);
    f.bd3(13, t.direction);
    f.bd(42, t.rotation);
    f.bd(43, t.width);
    f.bd(44, t.height);
    f.bd(45, t.spacing);
    f.bs(170, t.spacingStyle);
    f.rawColor(90, t.color);
    f.bs(171, t.alignment);
    f.bs(172, t.flow);
    f.rawColor(91, t.backgroundColor);
    f.bd(141, t.backgroundScale);
    f.bl(92, t.backgroundTransparency);
    f.b(291, t.backgroundFill);
    f.b(292, t.maskFill);
    f.bs(173, t.columnKind);
    f.b(293, t.automaticHeight);
    f.bd(142, t.columnWidth);
    f.bd(143, t.gutter);
    f.b(294, t.reversed);
    uncounted(f, 144, t.columnSizes, kBitsOfReal, [&](double& size) { f.bd(144, size); });
    f.b(295, t.wordBreak);
    bool unknown = false;
    f.b(0, unknown);
}

void MultiLeaderEntity::describeBlock(Fields& f, BlockContent& b) {
    f.handle(Ref::SoftPointer, 341, b.block);
    f.bd3(14, b.normal);
    f.bd3(15, b.location);
    f.bd3(16, b.scale);
    f.bd(46, b.rotation);
    f.rawColor(93, b.color);
    for (double& v : b.matrix) f.bd(47, v);
}

void MultiLeaderEntity::describeRoots(Fields& f) {
    nested(f, context.roots, 22, 302, "LEADER", 303, [&](Root& root) { describeRoot(f, root); });
}

void MultiLeaderEntity::describeRoot(Fields& f, Root& root) {
    // The lines' groups have the same codes as the leader's own.
    std::size_t end = 0;
    DxfInput* in = f.input();
    if (in != nullptr) {
        end = in->partEnd();
        const std::size_t begin = in->partBegin();
        nested(f, root.lines, 6, 304, "LEADER_LINE", 305, [&](Line& line) { describeLine(f, line); });
        f.bs(271, root.attachmentDirection);
        const Span first = spanOf(*in, begin, end, 304, "LEADER_LINE", 305);
        in->setPart(begin, first.found ? first.begin - 1 : end);
    }
    f.b(290, root.valid);
    f.b(291, root.hasDogleg);
    f.bd3(10, root.connection);
    f.bd3(11, root.direction);
    describeBreaks(f, 12, root.breaks);
    f.bl(90, root.index);
    f.bd(40, root.landing);
    if (in != nullptr) return;
    nested(f, root.lines, 6, 304, "LEADER_LINE", 305, [&](Line& line) { describeLine(f, line); });
    if (f.since(Version::R2010)) f.bs(271, root.attachmentDirection);
}

void MultiLeaderEntity::describeLine(Fields& f, Line& line) {
    uncounted(f, 10, line.points, kBitsOfPoint, [&](Vector3& p) { f.bd3(10, p); });
    if (f.dxf()) {
        if (f.input() != nullptr || !line.breaks.empty()) {
            f.bl(90, line.segment);
            describeBreaks(f, 11, line.breaks);
        }
        if (f.reading()) line.breakInfos = line.breaks.empty() ? 0 : 1;
    } else {
        f.bl(0, line.breakInfos);
        if (line.breakInfos > 0) {
            f.bl(0, line.segment);
            describeBreaks(f, 0, line.breaks);
        }
    }
    f.bl(91, line.index);
    if (f.before(Version::R2010)) return;
    f.bs(170, line.kind);
    f.rawColor(92, line.color);
    f.handle(Ref::HardPointer, 340, line.linetype);
    f.bl(171, line.lineweight);
    f.bd(40, line.arrowSize);
    f.handle(Ref::HardPointer, 341, line.arrow);
    f.bl(93, line.overrides);
}

}  // namespace kdraw
