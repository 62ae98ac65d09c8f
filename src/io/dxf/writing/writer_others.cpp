// Multilines, images, wipeouts, regions, viewports, solids and the section that holds their bodies.
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {


bool allFinite(const std::vector<Vector2>& points) {
    return std::all_of(points.begin(), points.end(), [](const Vector2& p) { return finite(p); });
}

}  // namespace

// Multilines -------------------------------------------------------------------------------------------------------

namespace {

/// What the style of a multiline says, as a key.
std::string lookOf(const MLineEntity& e) {
    std::string key;
    const auto put = [&](const auto& value) { key.append(reinterpret_cast<const char*>(&value), sizeof value); };
    const auto putColor = [&](const engine::Color& color) {
        for (const int part : {static_cast<int>(color.method), static_cast<int>(color.aci), static_cast<int>(color.red),
                               static_cast<int>(color.green), static_cast<int>(color.blue)})
            put(part);
    };
    put(e.flags);
    put(e.startAngle + 0.0);  // no minus in front of a zero
    put(e.endAngle + 0.0);
    putColor(e.fillColor);
    for (const MLineElement& element : e.elements) {
        put(element.offset + 0.0);
        putColor(element.color);
        const void* linetype = element.linetype.key();
        put(linetype);
    }
    return key;
}

}  // namespace

/// The style record for what a multiline holds; multilines of the same name and look share one.
const Writer::MLineStyleRecord& Writer::mlineStyle(const MLineEntity& e) {
    static const std::string standardLook = lookOf(MLineEntity());
    const std::string wanted(e.styleName.empty() ? std::string_view("Standard") : symbol(e.styleName));
    const std::string look = lookOf(e);
    const auto [known, fresh] = mlineStyleIndex_.try_emplace(engine::foldCase(wanted) + '\n' + look, 0);
    if (fresh) {
        // "Standard" is there for the default look; another look under a name that is taken gets a number.
        if (mlineNames_.names.empty()) mlineNames_.names.insert(engine::foldCase("Standard"));
        if (!engine::equalNoCase(wanted, "Standard") || look != standardLook) {
            known->second = mlineStyles_.size();
            mlineStyles_.push_back({freeName(wanted, mlineNames_), newHandle(), &e});
        }
    }
    return mlineStyles_[known->second];
}

bool Writer::write(const MLineEntity& e, const Target& t) {
    if (e.vertices.size() < 2 || !allFinite(e.vertices) || !std::isfinite(e.scale)) return false;
    FieldKeys keys;
    const MLineStyleRecord& record = mlineStyle(e);
    const std::uint64_t style = record.handle;
    if (record.name != e.styleName.view() || e.elements.size() > 16) keys.push_back("styleName");
    // The style carries the elements; colours without an index and what is over sixteen elements stay here.
    if (e.elements.size() > 16 ||
        std::any_of(e.elements.begin(), e.elements.end(),
                    [this](const MLineElement& element) { return !isPlain(element.linetype); }))
        keys.push_back("elements");
    if ((e.flags & ~0x773) != 0) keys.push_back("flags");
    if (static_cast<int>(e.justification) > 2) keys.push_back("justificationAcad");
    const OwnData own = gather(e, kElevation | kNormal, keys);
    head("MLINE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbMline");
    out.text(2, record.name);
    out.handle(340, style);
    out.real(40, e.scale);
    out.integer(70, std::min(static_cast<int>(e.justification), 2));
    out.integer(71, 1 | (e.closed ? 2 : 0));
    const std::size_t elements = std::min<std::size_t>(e.elements.size(), 16);
    out.integer(72, static_cast<std::int64_t>(e.vertices.size()));
    out.integer(73, static_cast<std::int64_t>(elements));
    out.point(10, e.vertices.front(), e.elevation);
    const Vector3 n = e.normal();
    out.point(210, n);
    const std::vector<Vector2> steps = e.miterSteps();
    const std::size_t count = e.vertices.size();
    Vector2 direction{1, 0};
    for (std::size_t i = 0; i < count; ++i) {
        Vector2 next = e.vertices[(i + 1) % count] - e.vertices[i];
        if (i + 1 == count && !e.closed) next = direction;
        if (const double length = next.length(); length > 0.0) direction = next / length;
        const Vector2 step = i < steps.size() ? steps[i] : Vector2{-direction.y, direction.x};
        const double stretch = step.length();
        const Vector2 miter = stretch > 0.0 ? step / stretch : Vector2{-direction.y, direction.x};
        out.point(11, e.vertices[i], e.elevation);
        out.point(12, direction, 0.0);
        out.point(13, miter, 0.0);
        for (std::size_t k = 0; k < elements; ++k) {
            out.integer(74, 2);
            out.real(41, e.elementDistance(e.elements[k]) * stretch);
            out.real(41, 0.0);
            out.integer(75, 0);
        }
    }
    tail(e, own);
    return true;
}

// Images ------------------------------------------------------------------------------------------------------------

std::uint64_t Writer::imageDefinition(const ImageEntity& image, std::uint64_t handle, std::uint64_t& reactor) {
    const std::string key =
        image.filePath + '\n' + std::to_string(image.pixelWidth) + ' ' + std::to_string(image.pixelHeight);
    const auto [it, fresh] = imageIndex_.try_emplace(key, images_.size());
    if (fresh) images_.push_back({image.filePath, image.pixelWidth, image.pixelHeight, newHandle(), {}});
    reactor = newHandle();
    images_[it->second].reactors.emplace_back(reactor, handle);
    return images_[it->second].handle;
}

bool Writer::write(const ImageEntity& e, const Target& t) {
    if (!finite(e.insertion) || !std::isfinite(e.width) || !std::isfinite(e.height) || !std::isfinite(e.rotation) ||
        e.width == 0.0 || e.height == 0.0 || !allFinite(e.clipBoundary))
        return false;
    const double pixelsX = e.pixelWidth > 0 ? e.pixelWidth : 1.0;
    const double pixelsY = e.pixelHeight > 0 ? e.pixelHeight : 1.0;
    const Vector2 right{std::cos(e.rotation), std::sin(e.rotation)};
    const Vector2 up{-right.y, right.x};
    // Sizes and angle stand as vectors of one pixel, so they come back only nearly; clips count pixels.
    FieldKeys keys{"width", "height", "rotation", "imageTransparency"};
    if (!e.clipBoundary.empty()) keys.push_back("clipBoundary");
    if (e.clipEnabled && e.clipBoundary.size() < 2) keys.push_back("clipEnabled");
    const auto percent = [&](std::string_view key, std::int32_t value) {
        if (value < 0 || value > 100) keys.push_back(key);
    };
    percent("brightness", e.brightness);
    percent("contrast", e.contrast);
    percent("fade", e.fade);
    const OwnData own = gather(e, kElevation, keys);
    std::uint64_t reactor = 0;
    const std::uint64_t definition = imageDefinition(e, e.handle(), reactor);
    ++classCounts_["IMAGE"];
    head("IMAGE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbRasterImage");
    out.integer(90, 0);
    out.point(10, e.insertion, e.elevation);
    out.point(11, right * (e.width / pixelsX), 0.0);
    out.point(12, up * (e.height / pixelsY), 0.0);
    out.real(13, e.pixelWidth);
    out.real(23, e.pixelHeight);
    out.handle(340, definition);
    const bool clipped = e.clipBoundary.size() >= 2;
    out.integer(70, 2 | (e.showFrame ? 1 : 0) | (clipped ? 4 : 0) | (e.imageTransparency != 0 ? 8 : 0));
    out.flag(280, clipped && e.clipEnabled);
    out.integer(281, std::clamp(e.brightness, 0, 100));
    out.integer(282, std::clamp(e.contrast, 0, 100));
    out.integer(283, std::clamp(e.fade, 0, 100));
    out.handle(360, reactor);
    // Pixels, y down, from the middle of the top left one.
    const auto pixel = [&](const Vector2& p) {
        const Vector2 d = p - e.insertion;
        return Vector2{d.dot(right) / e.width * pixelsX - 0.5, (1.0 - d.dot(up) / e.height) * pixelsY - 0.5};
    };
    if (clipped && e.clipBoundary.size() > 2) {
        out.integer(71, 2);
        out.integer(91, static_cast<std::int64_t>(e.clipBoundary.size() + 1));
        for (const Vector2& p : e.clipBoundary) out.point(14, pixel(p));
        out.point(14, pixel(e.clipBoundary.front()));
    } else {
        const Vector2 a = clipped ? pixel(e.clipBoundary[0]) : Vector2{-0.5, -0.5};
        const Vector2 b = clipped ? pixel(e.clipBoundary[1]) : Vector2{pixelsX - 0.5, pixelsY - 0.5};
        out.integer(71, 1);
        out.integer(91, 2);
        out.point(14, Vector2{std::min(a.x, b.x), std::min(a.y, b.y)});
        out.point(14, Vector2{std::max(a.x, b.x), std::max(a.y, b.y)});
    }
    tail(e, own);
    return true;
}

bool Writer::write(const WipeoutEntity& e, const Target& t) {
    if (e.vertices.size() < 3 || !allFinite(e.vertices)) return false;
    math::Bounds2 box;
    for (const Vector2& p : e.vertices) box.expand(p);
    const double size = std::max(box.max.x - box.min.x, box.max.y - box.min.y);
    if (!(size > 0.0)) return false;
    // The corners stand as fractions of a square round them.
    FieldKeys keys{"vertices"};
    if (!e.showFrame) keys.push_back("showFrame");
    const OwnData own = gather(e, kNoCommon, keys);
    ++classCounts_["WIPEOUT"];
    head("WIPEOUT", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbWipeout");
    out.integer(90, 0);
    out.point(10, box.min, e.elevation);
    out.point(11, Vector3{size, 0, 0});
    out.point(12, Vector3{0, size, 0});
    out.point(13, Vector2{1, 1});
    out.word(340, "0");
    out.integer(70, 7);  // bit 1 would hide the wipeout itself: frames are a matter of the whole drawing
    out.integer(280, 1);
    out.integer(281, 50);
    out.integer(282, 50);
    out.integer(283, 0);
    out.word(360, "0");
    out.integer(71, 2);
    out.integer(91, static_cast<std::int64_t>(e.vertices.size() + 1));
    const auto place = [&](const Vector2& p) {
        return Vector2{(p.x - box.min.x) / size - 0.5, 0.5 - (p.y - box.min.y) / size};
    };
    for (const Vector2& p : e.vertices) out.point(14, place(p));
    out.point(14, place(e.vertices.front()));
    tail(e, own);
    return true;
}

// Regions ------------------------------------------------------------------------------------------------------------

/// A region has no body that a modeller made: the record is a shell for other programs, the boundaries stand beside it.
bool Writer::write(const RegionEntity& e, const Target& t) {
    if (e.vertices.empty() || !allFinite(e.vertices)) return false;
    const OwnData own = gather(e, kNoCommon, {"vertices", "bulges", "loops"});
    head("REGION", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbModelerGeometry");
    out.flag(290, true);
    out.word(2, "{00000000-0000-0000-0000-000000000000}");
    tail(e, own);
    return true;
}

// Viewports ---------------------------------------------------------------------------------------------------------

/// The number that a viewport has when it is counted: DWG files hold none. The sheet is 1, added when there is none.
std::int32_t Writer::countedNumber(const ViewportEntity& e, const Target& t) {
    for (Space& space : spaces_) {
        if (space.record != t.owner || &space == &spaces_.front()) continue;
        if (e.isSheet() && !space.hasSheet) {
            space.hasSheet = true;
            return e.vpId;
        }
        return ++space.viewports + 1;
    }
    return 0;
}

bool Writer::write(const ViewportEntity& e, const Target& t) {
    if (!finite(e.center) || !std::isfinite(e.width) || !std::isfinite(e.height)) return false;
    FieldKeys keys;
    double viewHeight = e.height;
    if (std::isfinite(e.viewScale) && e.viewScale != 0.0) viewHeight = std::abs(e.height / e.viewScale);
    if (e.height / viewHeight != e.viewScale) keys.push_back("viewScale");
    if (std::any_of(e.vpFrozenLayers.begin(), e.vpFrozenLayers.end(),
                    [&](Name layer) { return !drawing_.layers.contains(layer) || !isPlain(layer); }))
        keys.push_back("vpFrozenLayers");
    // The twist turns the view, so its centre in view coordinates is the target turned back.
    const bool plan = e.showsPlan();
    const Vector2 target = plan ? e.viewTarget : Vector2{};
    if (plan && e.viewTwist != 0.0) keys.push_back("viewTarget");
    const bool hasDirection = e.viewDirection.is_finite() && e.viewDirection != Vector3{};
    if (!hasDirection) keys.insert(keys.end(), {"viewDirectionX", "viewDirectionY", "viewDirectionZ"});
    if (!std::isfinite(e.viewTargetZ)) keys.push_back("viewTargetZ");
    std::int32_t flags = e.statusFlags & ~(ViewportEntity::kLocked | ViewportEntity::kOff);
    if (e.locked) flags |= ViewportEntity::kLocked;
    if (!e.on) flags |= ViewportEntity::kOff;
    const bool clipped = e.clipEntity() != nullptr;
    if (clipped) flags |= ViewportEntity::kNonRectangular;
    if (flags != e.statusFlags) keys.push_back("statusFlags");
    if (e.clipHandle != 0 && !clipped) keys.push_back("clipHandle");
    if (e.vpId < 0 || e.vpId > 32767 || (forDwg_ && e.vpId != countedNumber(e, t))) keys.push_back("vpId");
    const OwnData own = gather(e, kElevation, keys);
    for (Space& space : spaces_)
        if (space.record == t.owner && (space.lastViewport == 0 || e.isSheet())) space.lastViewport = e.handle();
    head("VIEWPORT", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbViewport");
    out.point(10, e.center, e.elevation);
    out.real(40, e.width);
    out.real(41, e.height);
    out.integer(68, e.on ? (e.isSheet() ? 1 : 2) : 0);
    out.integer(69, std::clamp(e.vpId, 0, 32767));
    const double c = std::cos(e.viewTwist);
    const double s = std::sin(e.viewTwist);
    out.point(12, Vector2{target.x * c - target.y * s, target.x * s + target.y * c});
    out.point(13, e.snapBase);
    out.point(14, e.snapSpacing);
    out.point(15, e.gridSpacing);
    out.point(16, hasDirection ? e.viewDirection : Vector3{0, 0, 1});
    // Seen from a direction the target itself stands at the centre.
    const double z = std::isfinite(e.viewTargetZ) ? e.viewTargetZ : 0.0;
    out.point(17, plan ? Vector3{0, 0, z} : Vector3(e.viewTarget, z));
    out.real(42, 50.0);
    out.real(43, 0.0);
    out.real(44, 0.0);
    out.real(45, viewHeight);
    out.angle(50, e.snapAngle);
    out.angle(51, e.viewTwist);
    out.integer(72, 1000);
    for (const Name layer : e.vpFrozenLayers)
        if (const auto known = layers_.find(layer.key()); known != layers_.end()) out.handle(331, known->second);
    out.integer(90, flags);
    if (clipped) out.handle(340, e.clipHandle);
    out.word(1, "");
    out.integer(281, 0);
    out.integer(71, 1);
    out.integer(74, 0);
    out.point(110, Vector3{0, 0, 0});
    out.point(111, Vector3{1, 0, 0});
    out.point(112, Vector3{0, 1, 0});
    out.integer(79, 0);
    out.real(146, 0.0);
    out.integer(170, 0);
    out.integer(61, 5);
    tail(e, own);
    return true;
}

// Solids -------------------------------------------------------------------------------------------------------------

bool Writer::write(const Solid3DEntity& e, const Target& t) {
    if (e.sab.empty()) {
        // This version holds bodies in binary form only.
        if (!e.sat.empty()) ++report_.droppedSat;
        return false;
    }
    FieldKeys keys;
    if (!e.sat.empty()) keys.push_back("sat");
    if (e.modelerVersion != 2) keys.push_back("modelerVersion");
    if (!keys.empty()) keys.push_back("kind");
    const OwnData own = gather(e, kNoCommon, keys);
    const std::string_view type = e.kind == Solid3DEntity::BodyKind::Region ? "REGION"
                                  : e.kind == Solid3DEntity::BodyKind::Body ? "BODY"
                                                                            : "3DSOLID";
    head(type, e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbModelerGeometry");
    out.flag(290, true);
    // A name that no other body of the file has.
    char guid[40];
    std::snprintf(guid, sizeof guid, "{%08X-0000-4000-8000-%012llX}", static_cast<unsigned>(bodies_.size() + 1),
                  static_cast<unsigned long long>(e.handle() & 0xFFFFFFFFFFFFULL));
    out.word(2, guid);
    if (e.kind == Solid3DEntity::BodyKind::Solid) {
        out.subclass("AcDb3dSolid");
        out.word(350, "0");
    }
    tail(e, own);
    bodies_.push_back({e.handle(), e.sab});
    return true;
}

void Writer::dataSection() {
    if (bodies_.empty()) return;
    GroupWriter& out = *out_;
    out.record("SECTION");
    out.word(2, "ACDSDATA");
    out.integer(70, 2);
    out.integer(71, 8);
    // Two schemas of data, then the four that these refer to.
    const auto dataSchema = [&](int index, std::string_view name, std::string_view column) {
        out.record("ACDSSCHEMA");
        out.integer(90, index);
        out.word(1, name);
        out.word(2, "AcDbDs::ID");
        out.integer(280, 10);
        out.integer(91, 8);
        out.word(2, column);
        out.integer(280, 15);
        out.integer(91, 0);
        const auto attribute = [&](int code, std::string_view owner, int schema, std::string_view property, int kind,
                                   int valueCode) {
            out.word(101, "ACDSRECORD");
            if (code == 95)
                out.integer(95, index);
            else
                out.word(1, owner);
            out.integer(90, schema);
            out.word(2, property);
            out.integer(280, kind);
            out.integer(valueCode, 1);
        };
        attribute(95, {}, 2, "AcDbDs::TreatedAsObjectData", 1, 291);
        attribute(95, {}, 3, "AcDbDs::Legacy", 1, 291);
        attribute(1, "AcDbDs::ID", 4, "AcDs:Indexable", 1, 291);
        attribute(1, "AcDbDs::ID", 5, "AcDbDs::HandleAttribute", 7, 282);
    };
    dataSchema(0, "AcDb_Thumbnail_Schema", "Thumbnail_Data");
    dataSchema(1, "AcDb3DSolid_ASM_Data", "ASM_Data");
    const auto propertySchema = [&](int index, std::string_view name, std::string_view property) {
        out.record("ACDSSCHEMA");
        out.integer(90, index);
        out.word(1, name);
        out.word(2, property);
        out.integer(280, index == 5 ? 7 : 1);
        out.integer(91, index == 5 ? 1 : 0);
        if (index == 5) out.integer(284, 1);
    };
    propertySchema(2, "AcDbDs::TreatedAsObjectDataSchema", "AcDbDs::TreatedAsObjectData");
    propertySchema(3, "AcDbDs::LegacySchema", "AcDbDs::Legacy");
    propertySchema(4, "AcDbDs::IndexedPropertySchema", "AcDs:Indexable");
    propertySchema(5, "AcDbDs::HandleAttributeSchema", "AcDbDs::HandleAttribute");
    for (const Body& body : bodies_) {
        out.record("ACDSRECORD");
        out.integer(90, 1);
        out.word(2, "AcDbDs::ID");
        out.integer(280, 10);
        out.handle(320, body.owner);
        out.word(2, "ASM_Data");
        out.integer(280, 15);
        out.integer(94, static_cast<std::int64_t>(body.bytes.size()));
        for (std::size_t at = 0; at < body.bytes.size(); at += 127) out.bytes(310, body.bytes.substr(at, 127));
    }
    out.record("ENDSEC");
}

}  // namespace kova::io::dxf
