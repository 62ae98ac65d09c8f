#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/region.hpp"
#include "engine/inquiry/mass_properties.hpp"
#include "engine/model/units.hpp"
#include "io/save.hpp"

namespace kova::cmd::commands {

namespace {

using engine::AreaMoments;
using engine::VolumeMoments;
using math::Bounds2;
using math::Vector2;
using math::Vector3;

/// From world coordinates to those of the coordinate system in force.
math::Matrix4 toUser(const engine::Ucs& ucs) {
    const Vector2 o = ucs.fromWorld({0, 0});
    const Vector2 x = ucs.fromWorld({1, 0}) - o;
    const Vector2 y = ucs.fromWorld({0, 1}) - o;
    math::Matrix4 m;
    m(0, 0) = x.x;
    m(1, 0) = x.y;
    m(0, 1) = y.x;
    m(1, 1) = y.y;
    m(0, 3) = o.x;
    m(1, 3) = o.y;
    return m;
}

/// MASSPROP: what regions weigh as plates and closed meshes as bodies of density 1, in the current coordinate system.
class MasspropTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        for (const engine::Entity* entity : entitiesInOrder(document(), selected.ids)) take(*entity);
        if (regions_ == 0 && bodies_ == 0) {
            message("No solids or regions selected.");
            co_return;
        }
        if (ignored_ > 0) message(counted(ignored_, "object") + " ignored: neither region nor closed body.");
        if (bodies_ > 0) reportBodies();
        if (regions_ > 0) reportRegions();
        for (const std::string& text : lines_) message(text);
        const bool write = co_await askYesNo(ask, "Write analysis to a file? [Yes/No] <N>:", false);
        if (!write) co_return;
        const std::filesystem::path own(drawing().fileName);
        const std::string usual = (own.empty() ? std::string("Drawing1") : own.stem().string()) + ".mpr";
        const Answer name = co_await ask.text(withDefault("Enter file name", usual));
        std::filesystem::path path(typedPath(name.text));
        if (path.empty()) path = own.empty() ? std::filesystem::path(usual) : own.parent_path() / usual;
        if (!path.has_extension()) path += ".mpr";
        std::string text;
        for (const std::string& row : lines_) text += row + "\n";
        const std::string error = io::saveFile(path.string(), text);
        message(error.empty() ? "Saved: " + path.string() : error);
    }

private:
    void take(const engine::Entity& entity) {
        if (entity.type() == engine::EntityType::Region && engine::inWorldPlane(entity)) {
            engine::Path path;
            engine::transformPath(static_cast<const engine::RegionEntity&>(entity).path(), toUser(drawing().ucs), path);
            const AreaMoments moments = engine::evenOddMoments(path);
            if (moments.area > 0.0) {
                area_ += moments;
                perimeter_ += engine::pathLength(path);
                box_.expand(engine::pathBounds(path));
                ++regions_;
                return;
            }
        }
        std::vector<engine::Triangle> triangles = engine::meshTriangles(entity);
        for (engine::Triangle& triangle : triangles)
            for (Vector3& p : triangle) p = Vector3(drawing().ucs.fromWorld(p.xy()), p.z);
        if (const auto moments = engine::bodyMoments(triangles)) {
            volume_ += *moments;
            for (const engine::Triangle& triangle : triangles)
                for (const Vector3& p : triangle) {
                    bodyBox_.expand(p.xy());
                    low_ = std::min(low_, p.z);
                    high_ = std::max(high_, p.z);
                }
            ++bodies_;
            return;
        }
        ++ignored_;
    }

    void reportRegions() {
        line("   ----------------   REGIONS   ----------------");
        row("Area:", number(area_.area));
        row("Perimeter:", length(perimeter_));
        row("Bounding box:", "X: " + length(box_.min.x) + "  --  " + length(box_.max.x));
        row("", "Y: " + length(box_.min.y) + "  --  " + length(box_.max.y));
        const Vector2 centroid = area_.centroid();
        row("Centroid:", "X: " + length(centroid.x));
        row("", "Y: " + length(centroid.y));
        row("Moments of inertia:", "X: " + number(area_.yy));
        row("", "Y: " + number(area_.xx));
        row("Product of inertia:", "XY: " + number(area_.xy));
        row("Radii of gyration:", "X: " + length(std::sqrt(area_.yy / area_.area)));
        row("", "Y: " + length(std::sqrt(area_.xx / area_.area)));
        line("Principal moments and X-Y directions about centroid:");
        const auto principal = engine::principalMoments(area_);
        const char* names[] = {"I", "J"};
        for (std::size_t i = 0; i < 2; ++i)
            row("", std::string(names[i]) + ": " + number(principal[i].moment) + " along [" +
                        number(principal[i].axis.x) + " " + number(principal[i].axis.y) + "]");
    }

    void reportBodies() {
        line("   ----------------   SOLIDS    ----------------");
        row("Mass:", number(volume_.volume));
        row("Volume:", number(volume_.volume));
        row("Bounding box:", "X: " + length(bodyBox_.min.x) + "  --  " + length(bodyBox_.max.x));
        row("", "Y: " + length(bodyBox_.min.y) + "  --  " + length(bodyBox_.max.y));
        row("", "Z: " + length(low_) + "  --  " + length(high_));
        const Vector3 centroid = volume_.centroid();
        triple("Centroid:", "X: ", length(centroid.x), "Y: ", length(centroid.y), "Z: ", length(centroid.z));
        const Vector3 inertia = volume_.inertia();
        triple("Moments of inertia:", "X: ", number(inertia.x), "Y: ", number(inertia.y), "Z: ", number(inertia.z));
        const Vector3& products = volume_.products;
        triple("Products of inertia:", "XY: ", number(products.x), "YZ: ", number(products.y),
               "ZX: ", number(products.z));
        const auto radius = [&](double moment) { return length(std::sqrt(moment / volume_.volume)); };
        triple("Radii of gyration:", "X: ", radius(inertia.x), "Y: ", radius(inertia.y), "Z: ", radius(inertia.z));
        line("Principal moments and X-Y-Z directions about centroid:");
        const auto principal = engine::principalMoments(volume_);
        const char* names[] = {"I", "J", "K"};
        for (std::size_t i = 0; i < 3; ++i) {
            const Vector3& a = principal[i].axis;
            row("", std::string(names[i]) + ": " + number(principal[i].moment) + " along [" + number(a.x) + " " +
                        number(a.y) + " " + number(a.z) + "]");
        }
    }

    void line(std::string text) { lines_.push_back(std::move(text)); }
    void row(std::string title, const std::string& value) {
        title.resize(std::max<std::size_t>(title.size(), 22), ' ');
        line(title + value);
    }
    void triple(const char* title, const std::string& a, const std::string& x, const std::string& b,
                const std::string& y, const std::string& c, const std::string& z) {
        row(title, a + x);
        row("", b + y);
        row("", c + z);
    }
    std::string length(double v) const { return lengthText(drawing(), v); }
    /// Areas, moments and directions are decimal in all units.
    std::string number(double v) const {
        return engine::formatLinear(v, engine::kDecimal, engine::sysVarInt(drawing(), "LUPREC", 4));
    }

    AreaMoments area_;
    double perimeter_ = 0.0;
    Bounds2 box_;
    std::size_t regions_ = 0;
    VolumeMoments volume_;
    Bounds2 bodyBox_;
    double low_ = std::numeric_limits<double>::infinity();
    double high_ = -std::numeric_limits<double>::infinity();
    std::size_t bodies_ = 0;
    std::size_t ignored_ = 0;
    std::vector<std::string> lines_;
};

}  // namespace

KOVA_TOOL_COMMAND(Massprop, "MASSPROP", "Mass Properties", "Inquiry")

}  // namespace kova::cmd::commands
