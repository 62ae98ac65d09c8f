// The pictures of dimensions and tables: anonymous blocks made from what the entity emits.
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/model/outline.hpp"
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

constexpr double kSagitta = 1e-3;  ///< of the figure's size, where curves become chords

}  // namespace

/// Writes what it is given as entities of a block.
class PictureSink final : public OutlineSink {
public:
    PictureSink(Writer& writer, std::uint64_t record) : writer_(writer), out_(*writer.out_), record_(record) {}
    using OutlineSink::fill;
    using OutlineSink::stroke;

    void stroke(PathView path, const OutlineStyle& style, const StrokeOptions&) override {
        Vector2 at;
        Vector2 start;
        for (const PathElement& e : path) {
            switch (e.kind) {
                case PathElement::Kind::Move:
                    start = e.p;
                    break;
                case PathElement::Kind::Line:
                    line(at, e.p, style);
                    break;
                case PathElement::Kind::Close:
                    line(at, start, style);
                    break;
                case PathElement::Kind::Arc:
                    arc(e, style);
                    break;
                case PathElement::Kind::Cubic:
                    cubic(at, e, style);
                    break;
            }
            at = e.kind == PathElement::Kind::Close ? start : e.p;
        }
    }

    void fill(PathView rings, const OutlineStyle& style, const FillOptions& options) override {
        if (options.background) return;  // nothing lies below in a block of its own
        const math::Bounds2 box = pathBounds(rings);
        const double size = std::max(box.max.x - box.min.x, box.max.y - box.min.y);
        if (!(size > 0.0) || !std::isfinite(size)) return;
        for (std::vector<Vector2>& ring : flattenPath(rings, size * kSagitta)) {
            if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
            if (ring.size() < 3) continue;
            if (ring.size() <= 4)
                solid(ring, style);
            else
                hatch(ring, style);
        }
    }

    void text(const TextRun& run, const OutlineStyle& style) override {
        const double height = run.yAxis.length();
        const double width = run.xAxis.length();
        if (run.text.empty() || !(height > 0.0) || !(width > 0.0) || !finite(run.origin)) return;
        const double cross = run.xAxis.cross(run.yAxis);
        // The height is measured square to the baseline; what remains is slant.
        const double tall = std::abs(cross) / width;
        if (!(tall > 0.0)) return;
        const double slant = std::atan2(run.xAxis.dot(run.yAxis), std::abs(cross));
        head("TEXT", style);
        out_.subclass("AcDbText");
        out_.point(10, run.origin, 0.0);
        out_.real(40, tall);
        out_.text(1, run.text);
        out_.angle(50, std::atan2(run.xAxis.y, run.xAxis.x));
        out_.real(41, width / tall);
        if (std::abs(slant) > 1e-9) out_.angle(51, slant);
        writer_.textStyleName(7, styleOf(run.font));
        if (cross < 0.0) out_.integer(71, 4);
        out_.subclass("AcDbText");
    }

    void point(const Vector2& p, const OutlineStyle& style) override {
        if (!finite(p)) return;
        head("POINT", style);
        out_.subclass("AcDbPoint");
        out_.point(10, p, 0.0);
    }

    void line(const Vector2& a, const Vector2& b, const OutlineStyle& style) override {
        if (!finite(a) || !finite(b)) return;
        head("LINE", style);
        out_.subclass("AcDbLine");
        out_.point(10, a, 0.0);
        out_.point(11, b, 0.0);
    }

private:
    void head(std::string_view type, const OutlineStyle& style) {
        out_.record(type);
        out_.handle(5, writer_.newHandle());
        out_.handle(330, record_);
        out_.subclass("AcDbEntity");
        out_.text(8, writer_.symbol(style.layer));
        if (!(style.linetype == commonNames().byLayer)) writer_.linetypeName(6, style.linetype);
        if (style.color.method != ColorMethod::ByLayer) {
            out_.integer(62, style.color.bareIndex());
            if (style.color.method == ColorMethod::RGB)
                out_.integer(420, style.color.red << 16 | style.color.green << 8 | style.color.blue);
        }
        if (style.lineweight != -1) out_.integer(370, nearestLineweight(style.lineweight));
    }

    void arc(const PathElement& e, const OutlineStyle& style) {
        const double u = e.a.length();
        const double v = e.b.length();
        if (!(u > 0.0) || !finite(e.center) || !std::isfinite(e.t0) || !std::isfinite(e.t1)) return;
        const bool circular = std::abs(u - v) <= 1e-9 * u && std::abs(e.a.dot(e.b)) <= 1e-9 * u * u;
        if (!circular) {
            EllipseEntity ellipse;
            ellipse.center = e.center;
            ellipse.startParam = std::min(e.t0, e.t1);
            ellipse.endParam = std::max(e.t0, e.t1);
            ellipse.setConjugate(Vector3(e.a, 0.0), Vector3(e.b, 0.0), Vector3{0, 0, 1});
            if (!(ellipse.minorRatio >= 1e-6) || ellipse.major == Vector2{}) return;
            head("ELLIPSE", style);
            out_.subclass("AcDbEllipse");
            out_.point(10, ellipse.center, 0.0);
            out_.point(11, ellipse.major, 0.0);
            out_.point(210, Vector3{0, 0, ellipse.normal().z < 0.0 ? -1.0 : 1.0});
            out_.real(40, std::min(ellipse.minorRatio, 1.0));
            out_.real(41, ellipse.startParam);
            out_.real(42, ellipse.endParam);
            return;
        }
        const double base = std::atan2(e.a.y, e.a.x);
        const double sense = e.a.cross(e.b) < 0.0 ? -1.0 : 1.0;
        double from = base + sense * e.t0;
        double to = base + sense * e.t1;
        if (to < from) std::swap(from, to);
        const bool full = to - from >= math::kTwoPi - 1e-12;
        head(full ? "CIRCLE" : "ARC", style);
        out_.subclass("AcDbCircle");
        out_.point(10, e.center, 0.0);
        out_.real(40, u);
        if (full) return;
        out_.subclass("AcDbArc");
        out_.angle(50, math::normalizeAngle(from));
        out_.angle(51, math::normalizeAngle(to));
    }

    void cubic(const Vector2& from, const PathElement& e, const OutlineStyle& style) {
        if (!finite(from) || !finite(e.a) || !finite(e.b) || !finite(e.p)) return;
        head("SPLINE", style);
        out_.subclass("AcDbSpline");
        out_.point(210, Vector3{0, 0, 1});
        out_.integer(70, 8);
        out_.integer(71, 3);
        out_.integer(72, 8);
        out_.integer(73, 4);
        out_.integer(74, 0);
        for (int i = 0; i < 8; ++i) out_.real(40, i < 4 ? 0.0 : 1.0);
        for (const Vector2& p : {from, e.a, e.b, e.p}) out_.point(10, p, 0.0);
    }

    void solid(const std::vector<Vector2>& ring, const OutlineStyle& style) {
        head("SOLID", style);
        out_.subclass("AcDbTrace");
        // Corners go zig-zag.
        const std::size_t order[] = {0, 1, ring.size() == 4 ? std::size_t{3} : std::size_t{2}, 2};
        for (int i = 0; i < 4; ++i) out_.point(10 + i, ring[order[i]], 0.0);
    }

    void hatch(const std::vector<Vector2>& ring, const OutlineStyle& style) {
        head("HATCH", style);
        out_.subclass("AcDbHatch");
        out_.point(10, Vector3{});
        out_.point(210, Vector3{0, 0, 1});
        out_.word(2, "SOLID");
        out_.integer(70, 1);
        out_.integer(71, 0);
        out_.integer(91, 1);
        HatchLoop loop;
        loop.type = HatchLoop::kExternal | HatchLoop::kPolyline;
        loop.vertices = ring;
        writer_.hatchLoop(loop);
        out_.integer(75, 0);
        out_.integer(76, 1);
        out_.integer(98, 0);
    }

    /// The text style with a font file; a run carries no more of its style.
    Name styleOf(Name font) const {
        auto& known = writer_.fontStyles_;
        if (known.empty()) {
            for (const TextStyle& style : writer_.drawing_.textStyles) known.try_emplace(style.fontFile.key(), style.name);
            known.try_emplace(Name().key(), commonNames().standard);
        }
        const auto found = known.find(font.key());
        return found != known.end() ? found->second : commonNames().standard;
    }

    Writer& writer_;
    GroupWriter& out_;
    std::uint64_t record_;
};

std::string Writer::picture(const Entity& entity, std::string_view prefix, std::uint64_t& record) {
    std::string name;
    do {
        name = std::string(prefix) + std::to_string(++nextPicture_);
    } while (drawing_.findBlock(Name(name)) != nullptr);
    record = newHandle();
    GroupWriter* const before = out_;
    out_ = &pictures_;
    blockBegin(name, record, false, 1, {}, {}, {});
    PictureSink sink(*this, record);
    OutlineStyle style = outlineStyle(entity);
    entity.emit(sink, style);
    blockEnd(record, false);
    out_ = before;
    anonymous_.push_back({name, record});
    return name;
}

/// Blocks that references, styles and arrows name but nobody defines; the standard arrows get their shape. All tables
/// that could add one are written by now, the table of block records last of all.
void Writer::missingBlocks() {
    out_ = &pictures_;
    for (std::size_t i = 0; i < missingBlocks_.size(); ++i) {
        const Name name = missingBlocks_[i];
        const std::uint64_t record = blockRecords_.at(name.key());
        blockBegin(symbol(name), record, false, 0, {}, {}, {});
        if (arrowKind(name.view()) != ArrowKind::User) {
            PictureSink sink(*this, record);
            OutlineStyle style;
            style.color = Color::byBlock();
            style.layer = commonNames().layerZero;
            style.linetype = commonNames().byBlock;
            style.lineweight = -2;
            emitArrow(sink, style, nullptr, name, {0, 0}, {1, 0}, 1.0);
        }
        blockEnd(record, false);
    }
    pictures_.record("ENDSEC");
}

}  // namespace kova::io::dxf
