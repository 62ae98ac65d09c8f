#include "engine/entities/image.hpp"

#include <filesystem>

#include "cmd/prompts/clip_boundary.hpp"
#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "math/curves/path.hpp"

namespace kova::cmd::commands {

namespace {

namespace fs = std::filesystem;

using engine::ImageEntity;
using math::Vector2;

bool isImage(const engine::Entity& entity) { return entity.type() == engine::EntityType::Image; }

/// The units in which a picture's size may be taken, in metres; 0: a width of 1.
struct UnitRow {
    const char* word;
    const char* name;
    double metres;
};
constexpr UnitRow kUnits[] = {
    {"MM", "Millimeters", 0.001},        {"CENTIMETER", "Centimeters", 0.01}, {"METER", "Meters", 1.0},
    {"KILOMETER", "Kilometers", 1000.0}, {"INCH", "Inches", 0.0254},          {"FOOT", "Feet", 0.3048},
    {"YARD", "Yards", 0.9144},           {"MILE", "Miles", 1609.344},         {"UNITLESS", "Unitless", 0.0}};

/// IMAGEATTACH: places a picture file in the drawing.
class ImageattachTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool found = co_await askFile(ask);
        if (!found) co_return;
        const Answer at = co_await ask.point("Specify insertion point <0,0>:");
        image_.insertion = at.isPoint() ? at.point : drawing().ucs.origin;
        double unit = 0.0;
        double scale = 1.0;
        tellSize(unit, "Unitless");
        for (;;) {
            const Answer answer =
                co_await ask.distance("Specify scale factor or [Unit] <1>:", "Unit", image_.insertion, kPositive);
            if (!answer.is("UNIT")) {
                scale = answer.numberOr(1.0);
                break;
            }
            const Answer chosen = co_await ask.keyword(
                "Enter unit [MM/Centimeter/Meter/Kilometer/Inch/Foot/Yard/MIle/Unitless] <Unitless>:",
                "MM Centimeter Meter Kilometer Inch Foot Yard MIle Unitless");
            if (size_.pixelsPerMeter <= 0.0 && !chosen.isEnter() && !chosen.is("UNITLESS")) {
                message("The image file holds no resolution.");
                continue;
            }
            for (const UnitRow& row : kUnits)
                if (chosen.is(row.word) || (chosen.isEnter() && row.metres == 0.0)) {
                    unit = row.metres;
                    tellSize(unit, row.name);
                }
        }
        const Answer angle = co_await ask.angle("Specify rotation angle <0>:", {}, image_.insertion);
        image_.rotation = angle.isNumber() ? worldDirection(angle, drawing()) : ucsRotation(drawing());
        image_.width = baseWidth(unit) * scale;
        image_.height = image_.width * size_.height / size_.width;
        if (!std::isfinite(image_.width) || !(image_.height > 0.0)) co_return message("Invalid value.");
        image_.pixelWidth = size_.width;
        image_.pixelHeight = size_.height;
        addNew(document(), std::make_unique<ImageEntity>(image_), "IMAGEATTACH");
        repaint();
    }

private:
    double baseWidth(double unit) const {
        return unit > 0.0 && size_.pixelsPerMeter > 0.0 ? size_.width / size_.pixelsPerMeter / unit : 1.0;
    }
    void tellSize(double unit, const char* name) const {
        const double width = baseWidth(unit);
        message("Base image size: Width: " + lengthText(drawing(), width) +
                ", Height: " + lengthText(drawing(), width * size_.height / size_.width) + ", " + name);
    }

    Task<bool> askFile(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter name of image file to attach:");
            if (answer.isEnter()) co_return false;
            const std::string typed = typedPath(answer.text);
            if (typed == "~") {
                message("\"Attach Image\" needs its dialog, which kovacad-cli cannot show; cancelled.");
                co_return false;
            }
            const std::string path = locate(typed);
            if (path.empty()) {
                message("Image file " + cmd::inQuotes(typed) + " not found.");
                continue;
            }
            AppServices* services = host()->services();
            const auto size = services != nullptr ? services->pictureSize(path) : std::nullopt;
            if (!size) {
                message(cmd::inQuotes(typed) + " is not an image file that can be read.");
                continue;
            }
            size_ = *size;
            co_return true;
        }
    }

    /// The path of the file; the name is kept as it was typed where it counts from the drawing's folder.
    std::string locate(const std::string& typed) {
        std::error_code error;
        const fs::path name(typed);
        if (typed.empty()) return {};
        if (name.is_relative() && !drawing().fileName.empty()) {
            const fs::path beside = fs::path(drawing().fileName).parent_path() / name;
            if (fs::is_regular_file(beside, error)) {
                image_.filePath = typed;
                return beside.string();
            }
        }
        if (!fs::is_regular_file(name, error)) return {};
        image_.filePath = fs::absolute(name, error).string();
        return typed;
    }

    ImageEntity image_;
    PictureSize size_;
};

/// IMAGEADJUST: brightness, contrast and fade of images.
class ImageadjustTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection("Select image(s):");
        std::vector<std::uint64_t> ids;
        for (const std::uint64_t id : selected.ids) {
            const engine::Entity* entity = drawing().findById(id);
            if (entity != nullptr && isImage(*entity)) ids.push_back(id);
        }
        if (ids.empty()) {
            if (!selected.ids.empty()) message("No images selected.");
            co_return;
        }
        for (;;) {
            const Answer option = co_await ask.keyword("Enter image option [Contrast/Fade/Brightness] <Brightness>:",
                                                       "Contrast Fade Brightness");
            auto field = &ImageEntity::brightness;
            const char* name = "brightness";
            if (option.is("CONTRAST")) {
                field = &ImageEntity::contrast;
                name = "contrast";
            } else if (option.is("FADE")) {
                field = &ImageEntity::fade;
                name = "fade";
            }
            const auto* first = dynamic_cast<const ImageEntity*>(drawing().findById(ids.front()));
            if (first == nullptr) co_return;
            std::string prompt = std::string("Enter ") + name + " value (0-100)";
            prompt = withDefault(prompt, std::to_string(first->*field));
            const Answer value = co_await ask.integer(std::move(prompt), 0, 100);
            // Enter twice is the way out.
            if (option.isEnter() && value.isEnter()) co_return;
            if (!value.isNumber()) continue;
            if (!group_) group_.emplace(document(), "IMAGEADJUST");
            for (const std::uint64_t id : ids)
                if (engine::Entity* entity = drawing().findById(id))
                    document().modifyEntity(*entity, [&](engine::Entity& target) {
                        static_cast<ImageEntity&>(target).*field = value.integer();
                    });
            repaint();
        }
    }

private:
    std::optional<doc::GroupScope> group_;
};

/// IMAGECLIP: shows only a part of an image.
class ImageclipTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer pick = co_await ask.object("Select image to clip:", {}, isImage);
        if (!pick.isObject()) co_return;
        id_ = pick.id;
        const Answer option = co_await ask.keyword("Enter image clipping option [ON/OFF/Delete/New boundary] <New>:",
                                                   "ON OFF Delete New");
        const ImageEntity* now = image();
        if (now == nullptr) co_return;
        const bool clipped = now->clipBoundary.size() >= 2;
        if (option.is("ON") || option.is("OFF") || option.is("DELETE")) {
            if (!clipped) co_return message("No clipping boundary found.");
            edit([&](ImageEntity& image) {
                image.clipEnabled = option.is("ON");
                if (option.is("DELETE")) image.clipBoundary.clear();
            });
            co_return;
        }
        if (clipped) {
            const bool replace = co_await askYesNo(ask, "Delete old boundary? [No/Yes] <Yes>:", true);
            if (!replace) co_return;
        }
        bool inverted = false;
        std::vector<Vector2> polygon = co_await askClipBoundary(
            ask, document(),
            "Enter clipping type or invert option [Select polyline/Polygonal/Rectangular/Invert clip] <Rectangular>:",
            &inverted);
        if (polygon.size() < 3 || image() == nullptr) co_return;
        if (!meets(polygon)) co_return message("The boundary does not meet the image.");
        if (inverted) polygon = around(polygon);
        edit([&](ImageEntity& image) {
            image.clipBoundary = polygon;
            image.clipEnabled = true;
        });
    }

private:
    ImageEntity* image() const { return dynamic_cast<ImageEntity*>(drawing().findById(id_)); }

    void edit(const std::function<void(ImageEntity&)>& change) {
        ImageEntity* target = image();
        if (target == nullptr) return;
        const doc::GroupScope group(document(), "IMAGECLIP");
        document().modifyEntity(*target, [&](engine::Entity& entity) { change(static_cast<ImageEntity&>(entity)); });
        repaint();
    }

    bool meets(const std::vector<Vector2>& polygon) const {
        math::Bounds2 box;
        math::Bounds2 picture;
        for (const Vector2& p : polygon) box.expand(p);
        for (const Vector2& p : image()->corners()) picture.expand(p);
        return box.intersects(picture);
    }

    /// The picture without the polygon: a ring of its corners and the hole, joined by a seam.
    std::vector<Vector2> around(const std::vector<Vector2>& hole) const {
        const auto corners = image()->corners();
        std::vector<Vector2> ring(corners.begin(), corners.end());
        ring.push_back(corners[0]);
        ring.insert(ring.end(), hole.begin(), hole.end());
        ring.push_back(hole.front());
        return ring;
    }

    std::uint64_t id_ = 0;
};

}  // namespace

KOVA_TOOL_COMMAND(Imageattach, "IMAGEATTACH", "Attach Image", "Insert", {"IAT", "IMAGE", "IM"})
KOVA_TOOL_COMMAND(Imageadjust, "IMAGEADJUST", "Adjust Image", "Insert", {"IAD"})
KOVA_TOOL_COMMAND(Imageclip, "IMAGECLIP", "Clip Image", "Insert", {"ICL"})

}  // namespace kova::cmd::commands
