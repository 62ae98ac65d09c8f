// Leaders, multileaders and tables as groups.

#include <cmath>
#include <functional>

#include "engine/entities/dimensions/leader.hpp"
#include "engine/entities/dimensions/mleader.hpp"
#include "engine/entities/table_entity.hpp"
#include "script/lisp/entities/entity_codes.hpp"
#include "script/lisp/entities/entity_names.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

void leaderGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<LeaderEntity&>(entity);
    io.marker("AcDbLeader");
    io.name(3, e.dimStyleName);
    io.boolean(71, e.hasArrow);
    io.boolean(72, e.splined);
    if (!io.reading()) {
        io.out().integer(73, e.annotationHandle != 0 ? 0 : 3);
        io.out().integer(76, static_cast<std::int64_t>(e.vertices.size()));
        for (const Vector2& p : e.vertices) io.out().point(10, Vector3(p, e.elevation));
        if (e.annotationHandle != 0) io.out().entity(340, e.annotationHandle);
    } else {
        if (io.in().has(10)) {
            e.vertices.clear();
            for (const Vector3& p : io.in().points(10)) e.vertices.push_back(p.xy());
            e.elevation = io.in().point(10).z;
        }
        if (io.in().has(340)) e.annotationHandle = io.in().handle(340);
    }
    io.integer(74, e.hookDir);
    io.boolean(75, e.hookLine);
    io.real(40, e.textHeight);
    io.real(41, e.annotationWidth);
}

// Multileaders ------------------------------------------------------------------------------------------------------

namespace {

/// Its list has the layout of interchange files: the content and the leaders stand within marks, so that the same code
/// means several things.
void writeMLeader(GroupWriter& out, const MLeaderEntity& e) {
    const auto at = [&](const Vector2& p) { return Vector3(p, e.elevation); };
    const bool text = e.contentType == MLeaderContent::MText;
    const Block* block = e.contentType == MLeaderContent::Block ? e.contentBlock() : nullptr;
    const std::uint64_t blockName = block != nullptr ? recordName(RecordKind::Block, block->name) : 0;
    out.integer(270, 2);
    out.text(300, "CONTEXT_DATA{");
    out.real(40, e.scale());
    out.point(10, at(e.contentPos));
    out.real(41, e.effectiveTextHeight());
    out.real(140, e.effectiveArrowSize());
    out.real(145, e.effectiveLandingGap());
    out.integer(290, text ? 1 : 0);
    if (text) {
        const MTextBlock shown = e.textBlock();
        out.text(304, e.textContent);
        out.point(11, e.normal());
        out.point(12, at(shown.position));
        out.point(13, Vector3(Vector2::from_angle(shown.rotation)));
        out.real(42, shown.rotation);
        out.real(43, shown.width);
        out.integer(171, (shown.attachment - 1) % 3 + 1);
    }
    out.integer(296, block != nullptr ? 1 : 0);
    if (block != nullptr) {
        out.entity(341, blockName);
        out.point(15, at(e.contentPos));
    }
    for (const MLeaderHead& head : e.heads) {
        if (head.vertices.empty()) continue;
        out.text(302, "LEADER{");
        out.point(10, at(e.landingPoint(head)));
        out.point(11, Vector3(e.side(), 0.0, 0.0));
        out.real(40, e.effectiveLandingDistance());
        out.text(304, "LEADER_LINE{");
        for (std::size_t i = 0; i + 1 < head.vertices.size(); ++i) out.point(10, at(head.vertices[i]));
        out.text(305, "}");
        out.text(303, "}");
    }
    out.text(301, "}");
    out.entity(340, recordName(RecordKind::MLeaderStyle, e.styleName));
    out.integer(290, e.hasLanding ? 1 : 0);
    out.integer(291, e.hasDogleg ? 1 : 0);
    out.real(41, e.effectiveLandingDistance());
    out.real(42, e.effectiveArrowSize());
    out.integer(172, static_cast<std::int64_t>(e.contentType));
    if (block != nullptr) out.entity(344, blockName);
}

/// Reads such a list, or a part of one as ENTMOD may give it.
class MLeaderReader {
public:
    MLeaderReader(const GroupIo& io, MLeaderEntity& e)
        : in_(io.in()), e_(e), standing_(dynamic_cast<const MLeaderEntity*>(io.standing())) {}

    void read() {
        for (const GroupList::Group& g : in_.groups()) group(g);
        if (leaders_) e_.heads = std::move(heads_);
        if (content_ < 0) content_ = text_ ? 2 : block_ ? 1 : static_cast<std::int64_t>(e_.contentType);
        if (content_ > 2) throw LispError("group 172: expected a kind of content from 0 to 2");
        e_.contentType = static_cast<MLeaderContent>(content_);
    }

private:
    enum class Part { Outside, Context, Leader, Line };

    bool opens(const GroupList::Group& g, int code, std::string_view mark) const {
        return g.code == code && g.value->isString() && std::string_view(g.value->text()).starts_with(mark);
    }
    Vector2 point(const GroupList::Group& g) const { return GroupList::pointOf(g.code, *g.value).xy(); }
    bool flag(const GroupList::Group& g) const { return GroupList::integerOf(g.code, *g.value) != 0; }
    /// Sizes are listed as they are drawn; given back unchanged they leave the style's in force.
    void size(const GroupList::Group& g, double& own, double (MLeaderEntity::*drawn)() const) const {
        const double v = GroupList::realOf(g.code, *g.value);
        if (standing_ != nullptr && v == (standing_->*drawn)()) return;
        const double scale = standing_ != nullptr ? standing_->scale() : scale_;
        own = scale > 0.0 ? v / scale : v;
    }
    void block(const GroupList::Group& g) { readReference(g.code, *g.value, RecordKind::Block, e_.blockName); }

    void group(const GroupList::Group& g) {
        if (part_ == Part::Outside && opens(g, 300, "CONTEXT_DATA"))
            part_ = Part::Context;
        else if (part_ == Part::Context && opens(g, 302, "LEADER"))
            beginLeader();
        else if (part_ == Part::Leader && opens(g, 304, "LEADER_LINE"))
            part_ = Part::Line, heads_.emplace_back();
        else if (part_ == Part::Line)
            line(g);
        else if (part_ == Part::Leader)
            leader(g);
        else if (part_ == Part::Context)
            context(g);
        else
            outside(g);
    }
    void beginLeader() {
        part_ = Part::Leader;
        leaders_ = true;
        firstLine_ = heads_.size();
        landing_.reset();
    }
    void line(const GroupList::Group& g) {
        if (g.code == 305) part_ = Part::Leader;
        if (g.code == 10) heads_.back().vertices.push_back(point(g));
    }
    void leader(const GroupList::Group& g) {
        if (g.code == 10) landing_ = point(g);
        if (g.code == 40) size(g, e_.landingDistance, &MLeaderEntity::effectiveLandingDistance);
        if (g.code != 303) return;
        part_ = Part::Context;
        // The lines meet at the landing.
        if (firstLine_ == heads_.size()) heads_.emplace_back();
        if (landing_)
            for (std::size_t i = firstLine_; i < heads_.size(); ++i) heads_[i].vertices.push_back(*landing_);
    }
    void context(const GroupList::Group& g) {
        switch (g.code) {
            case 10:
                e_.contentPos = point(g);
                e_.elevation = GroupList::pointOf(10, *g.value).z;
                break;
            case 40:
                scale_ = GroupList::realOf(40, *g.value);
                break;
            case 41:
                size(g, e_.textHeight, &MLeaderEntity::effectiveTextHeight);
                break;
            case 140:
                size(g, e_.arrowSize, &MLeaderEntity::effectiveArrowSize);
                break;
            case 145:
                size(g, e_.landingGap, &MLeaderEntity::effectiveLandingGap);
                break;
            case 290:
                text_ = flag(g);
                break;
            case 296:
                block_ = flag(g);
                break;
            case 301:
                part_ = Part::Outside;
                break;
            case 304:
                e_.textContent = GroupList::textOf(304, *g.value);
                break;
            case 341:
                block(g);
                break;
            default:
                break;
        }
    }
    void outside(const GroupList::Group& g) {
        switch (g.code) {
            case 41:
                size(g, e_.landingDistance, &MLeaderEntity::effectiveLandingDistance);
                break;
            case 42:
                size(g, e_.arrowSize, &MLeaderEntity::effectiveArrowSize);
                break;
            case 172:
                content_ = std::max<std::int64_t>(0, GroupList::integerOf(172, *g.value));
                break;
            case 290:
                e_.hasLanding = flag(g);
                break;
            case 291:
                e_.hasDogleg = flag(g);
                break;
            case 304:
                e_.textContent = GroupList::textOf(304, *g.value);
                break;
            case 340:
                readReference(340, *g.value, RecordKind::MLeaderStyle, e_.styleName);
                break;
            case 344:
                block(g);
                break;
            default:
                break;
        }
    }

    const GroupList& in_;
    MLeaderEntity& e_;
    const MLeaderEntity* standing_;
    Part part_ = Part::Outside;
    std::vector<MLeaderHead> heads_;
    std::size_t firstLine_ = 0;
    std::optional<Vector2> landing_;
    double scale_ = 1.0;
    std::int64_t content_ = -1;
    bool leaders_ = false;
    bool text_ = false;
    bool block_ = false;
};

}  // namespace

void mleaderGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<MLeaderEntity&>(entity);
    io.marker("AcDbMLeader");
    if (io.reading())
        MLeaderReader(io, e).read();
    else
        writeMLeader(io.out(), e);
}

// Tables ------------------------------------------------------------------------------------------------------------

namespace {

/// Heights or widths; those that are given back as they are drawn leave the style's in force.
void readSizes(const GroupList& in, int code, std::vector<double>& sizes, std::int32_t count,
               const std::function<double(std::int32_t)>& drawn) {
    if (!in.has(code)) return;
    std::vector<double> given = in.reals(code);
    for (const double size : given)
        if (size < 0.0) throw LispError("group " + std::to_string(code) + ": expected a size");
    given.resize(std::min(given.size(), static_cast<std::size_t>(count)));
    bool same = drawn && given.size() == static_cast<std::size_t>(count);
    for (std::size_t i = 0; i < given.size() && same; ++i) same = given[i] == drawn(static_cast<std::int32_t>(i));
    if (!same) sizes = std::move(given);
}

std::int32_t boundedCount(const GroupList& in, int code, std::int32_t fallback, std::int32_t most) {
    const std::int64_t count = in.integer(code, fallback);
    if (count < 1 || count > most)
        throw LispError("group " + std::to_string(code) + ": expected a number of 1 to " + std::to_string(most));
    return static_cast<std::int32_t>(count);
}

void readCells(const GroupList& in, TableEntity& e) {
    std::vector<TableCell> cells;
    const std::size_t most = static_cast<std::size_t>(e.rows) * static_cast<std::size_t>(e.cols);
    const auto span = [](const GroupList::Group& g) {
        const std::int64_t covered = GroupList::integerOf(g.code, *g.value);
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(covered - 1, 0, TableEntity::kMaxRows));
    };
    bool inside = false;
    for (const GroupList::Group& g : in.groups()) {
        if (g.code == 171) {
            inside = cells.size() < most;
            if (inside) cells.emplace_back();
        }
        if (!inside) continue;
        TableCell& cell = cells.back();
        switch (g.code) {
            case 173:
                cell.isMerged = GroupList::integerOf(173, *g.value) != 0;
                break;
            case 175:
                cell.mergeRight = span(g);
                break;
            case 176:
                cell.mergeDown = span(g);
                break;
            case 170:
                cell.alignment =
                    static_cast<std::int32_t>(std::clamp<std::int64_t>(GroupList::integerOf(170, *g.value), 0, 9));
                break;
            case 7:
                cell.textStyle = Name(GroupList::textOf(7, *g.value));
                break;
            case 1:
            case 2:
            case 3:
                // Long texts come in several groups.
                cell.content += GroupList::textOf(g.code, *g.value);
                break;
            default:
                break;
        }
    }
    if (!cells.empty()) e.cells = std::move(cells);
}

void writeTable(GroupWriter& out, const TableEntity& e) {
    out.entity(342, recordName(RecordKind::TableStyle, e.styleName));
    out.point(11, Vector3(Vector2::from_angle(e.rotation)));
    out.integer(91, e.rowCount());
    out.integer(92, e.colCount());
    if (e.textHeight != 0.0) out.real(140, e.textHeight);
    for (std::int32_t r = 0; r < e.rowCount(); ++r) out.real(141, e.rowHeight(r));
    for (std::int32_t c = 0; c < e.colCount(); ++c) out.real(142, e.colWidth(c));
    for (const TableCell& cell : e.cells) {
        out.integer(171, 1);
        out.integer(173, cell.isMerged ? 1 : 0);
        out.integer(175, cell.mergeRight + 1);
        out.integer(176, cell.mergeDown + 1);
        if (cell.alignment != 0) out.integer(170, cell.alignment);
        if (!cell.textStyle.empty()) out.text(7, cell.textStyle.view());
        out.text(1, cell.content);
    }
}

}  // namespace

void tableGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<TableEntity&>(entity);
    io.marker("AcDbBlockReference");
    io.point(10, e.insertion, e.elevation);
    io.marker("AcDbTable");
    if (!io.reading()) return writeTable(io.out(), e);
    const GroupList& in = io.in();
    if (const Value* style = in.find(342)) readReference(342, *style, RecordKind::TableStyle, e.styleName);
    if (in.has(11)) e.rotation = in.point(11).xy().angle();
    e.rows = boundedCount(in, 91, e.rows, TableEntity::kMaxRows);
    e.cols = boundedCount(in, 92, e.cols, TableEntity::kMaxCols);
    if (static_cast<std::int64_t>(e.rows) * e.cols > TableEntity::kMaxCells)
        throw LispError("the table has too many cells");
    // A 140 before the first cell is the whole table's.
    for (const GroupList::Group& g : in.groups()) {
        if (g.code == 171) break;
        if (g.code == 140) e.textHeight = std::max(0.0, GroupList::realOf(140, *g.value));
    }
    std::function<double(std::int32_t)> height;
    std::function<double(std::int32_t)> width;
    if (const auto* table = dynamic_cast<const TableEntity*>(io.standing())) {
        if (table->rowCount() == e.rows) height = [table](std::int32_t r) { return table->rowHeight(r); };
        if (table->colCount() == e.cols) width = [table](std::int32_t c) { return table->colWidth(c); };
    }
    readSizes(in, 141, e.rowHeights, e.rows, height);
    readSizes(in, 142, e.colWidths, e.cols, width);
    readCells(in, e);
    if (e.cells.size() > static_cast<std::size_t>(e.rows) * static_cast<std::size_t>(e.cols))
        e.cells.resize(static_cast<std::size_t>(e.rows) * static_cast<std::size_t>(e.cols));
}

}  // namespace kova::script::lisp
