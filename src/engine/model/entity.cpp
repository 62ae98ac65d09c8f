#include "engine/model/entity.hpp"

#include <atomic>

#include "engine/model/drawing.hpp"

namespace kova::engine {

namespace {
std::atomic<std::uint64_t> lastId{0};
}

Entity::Entity() : id_(++lastId) {}
Entity::~Entity() = default;

Entity::Entity(const Entity& o)
    : layer(o.layer), linetype(o.linetype), elevation(o.elevation), lineweight(o.lineweight),
      transparency(o.transparency), color(o.color), visible(o.visible), id_(++lastId), handle_(o.handle_),
      extras_(o.extras_ ? std::make_unique<Extras>(*o.extras_) : nullptr) {}

Entity::Extras::Extras(const Extras& o)
    : linetypeScale(o.linetypeScale), thickness(o.thickness), normal(o.normal), plotStyleName(o.plotStyleName),
      annotative(o.annotative), annotationScale(o.annotationScale), objectScales(o.objectScales),
      xdata(o.xdata ? std::make_unique<XData>(*o.xdata) : nullptr) {}

void Entity::copyCommonFrom(const Entity& o) {
    layer = o.layer;
    linetype = o.linetype;
    elevation = o.elevation;
    lineweight = o.lineweight;
    transparency = o.transparency;
    color = o.color;
    visible = o.visible;
    extras_ = o.extras_ ? std::make_unique<Extras>(*o.extras_) : nullptr;
}

void Entity::setHandle(std::uint64_t handle) {
    if (owner_ == nullptr) handle_ = handle;
}

Drawing* Entity::drawing() const { return owner_ != nullptr ? owner_->drawing() : nullptr; }

const std::vector<Name>& Entity::objectScales() const {
    static const std::vector<Name> none;
    return extras_ ? extras_->objectScales : none;
}

void Entity::setObjectScales(std::vector<Name> v) {
    if (!extras_) {
        if (v.empty()) return;
        extras_ = std::make_unique<Extras>();
    }
    extras_->objectScales = std::move(v);
}

XData& Entity::ensureXdata() {
    if (!extras_) extras_ = std::make_unique<Extras>();
    if (!extras_->xdata) extras_->xdata = std::make_unique<XData>();
    return *extras_->xdata;
}

void Entity::setXdata(XData data) {
    if (data.empty()) {
        if (extras_) extras_->xdata.reset();
        return;
    }
    ensureXdata() = std::move(data);
}

std::size_t Entity::extrasSize() const {
    if (!extras_) return 0;
    return sizeof(Extras) + extras_->objectScales.capacity() * sizeof(Name) +
           (extras_->xdata ? extras_->xdata->sizeInBytes() : 0);
}

void Entity::describeCommon(FieldVisitor& v) {
    const CommonNames& names = commonNames();
    v.name("layer", layer);
    v.color("color", color);
    v.integer("lineweight", lineweight);
    v.boolean("visible", visible);
    v.name("linetype", linetype, "ByLayer");
    if (!extras_ && !v.reading()) {
        v.integer("transparency", transparency, 0);
        v.length("elevation", elevation, 0.0);
        return;
    }
    // A reader fills a side record of its own, which is kept only when it holds something.
    Extras fresh;
    Extras& e = extras_ ? *extras_ : fresh;
    v.number("linetypeScale", e.linetypeScale, 1.0);
    v.integer("transparency", transparency, 0);
    v.length("elevation", elevation, 0.0);
    v.length("thickness", e.thickness, 0.0);
    math::Vector3 n = e.normal;
    if (v.reading() || !n.near_equal({0, 0, 1}, 1e-9)) v.point("normal", n);
    e.normal = n;
    v.name("plotStyleName", e.plotStyleName, "ByLayer");
    v.boolean("annotative", e.annotative, false);
    if (e.annotative || v.reading()) {
        v.number("annotationScale", e.annotationScale, 1.0);
        v.names("objectScales", e.objectScales, true);
    }
    if (extras_ || !v.reading()) return;
    const bool plain = fresh.linetypeScale == 1.0 && fresh.thickness == 0.0 &&
                       fresh.normal == math::Vector3{0, 0, 1} && fresh.plotStyleName.identical(names.byLayer) &&
                       !fresh.annotative && fresh.annotationScale == 1.0 && fresh.objectScales.empty();
    if (!plain) extras_ = std::make_unique<Extras>(fresh);
}

}  // namespace kova::engine
