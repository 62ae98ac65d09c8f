// How groups and fields meet, and what all kinds of entities have in common.

#include <cmath>

#include "strings/wildcards.hpp"
#include "script/lisp/entities/entity_codes.hpp"
#include "script/lisp/printer.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

// The visitor over groups -------------------------------------------------------------------------------------

void GroupIo::real(int code, double& v) const {
    if (reading())
        v = in_->real(code, v);
    else
        out_->real(code, v);
}

void GroupIo::real(int code, double& v, double usual) const {
    if (reading() || v != usual) real(code, v);
}

void GroupIo::boolean(int code, bool& v) const {
    if (reading())
        v = in_->integer(code, v ? 1 : 0) != 0;
    else
        out_->integer(code, v ? 1 : 0);
}

void GroupIo::text(int code, std::string& v) const {
    if (reading())
        v = in_->text(code, v);
    else
        out_->text(code, v);
}

void GroupIo::name(int code, Name& v) const {
    if (!reading())
        out_->text(code, v.view());
    else if (in_->has(code))
        v = Name(in_->text(code));
}

void GroupIo::point(int code, Vector3& p) const {
    if (reading())
        p = in_->point(code, p);
    else
        out_->point(code, p);
}

void GroupIo::point(int code, Vector2& p, double& z) const {
    Vector3 v(p, z);
    point(code, v);
    if (!reading()) return;
    p = v.xy();
    z = v.z;
}

void GroupIo::flat(int code, Vector2& p) const {
    Vector3 v(p, 0.0);
    point(code, v);
    if (reading()) p = v.xy();
}

std::int32_t GroupIo::narrow(int code, const Value& v) {
    const std::int64_t n = GroupList::integerOf(code, v);
    if (n < std::numeric_limits<std::int32_t>::min() || n > std::numeric_limits<std::int32_t>::max())
        throw LispError("group " + std::to_string(code) + ": the number is too large");
    return static_cast<std::int32_t>(n);
}

// What all kinds have -----------------------------------------------------------------------------------------

void commonGroups(const GroupIo& io, Entity& e) {
    if (io.reading()) {
        const GroupList& in = io.in();
        if (in.has(8)) {
            const std::string layer = in.text(8);
            if (layer.empty()) throw LispError("group 8: expected a layer name");
            e.layer = Name(layer);
        }
        if (in.has(6)) e.linetype = Name(in.text(6));
        if (in.has(62)) {
            const auto color =
                Color::fromBareIndex(static_cast<int>(std::clamp<std::int64_t>(in.integer(62), -1, 1000)));
            if (!color) throw LispError("group 62: expected a colour from 0 to 256");
            e.color = *color;
        }
        if (in.has(420)) {
            const std::int64_t rgb = in.integer(420);
            e.color = Color::rgb(static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
                                 static_cast<std::uint8_t>(rgb));
        }
        if (in.has(48)) e.setLinetypeScale(in.real(48));
        if (in.has(60)) e.visible = in.integer(60) == 0;
        if (in.has(370)) e.lineweight = static_cast<std::int32_t>(std::clamp<std::int64_t>(in.integer(370), -3, 211));
        if (in.has(39)) e.setThickness(in.real(39));
        if (in.has(440)) {
            // The low byte is opacity, when bit 25 says that the value counts.
            const std::int64_t raw = in.integer(440);
            const double alpha = static_cast<double>(raw & 0xFF) / 255.0;
            e.transparency = (raw & 0x2000000) != 0
                                 ? static_cast<std::int32_t>(std::clamp(std::lround((1.0 - alpha) * 100.0), 0L, 90L))
                                 : 0;
        }
        if (in.has(210)) {
            const Vector3 normal = in.point(210).normalized();
            if (normal.length_squared() == 0.0) throw LispError("group 210: expected a direction");
            e.setNormal(normal);
        }
        return;
    }
    GroupWriter& out = io.out();
    out.text(8, e.layer.view());
    if (!(e.linetype == commonNames().byLayer)) out.text(6, e.linetype.view());
    if (e.color.method != ColorMethod::ByLayer) out.integer(62, e.color.bareIndex());
    if (e.color.method == ColorMethod::RGB) out.integer(420, (e.color.red << 16) | (e.color.green << 8) | e.color.blue);
    if (e.linetypeScale() != 1.0) out.real(48, e.linetypeScale());
    if (!e.visible) out.integer(60, 1);
    if (e.lineweight != -1) out.integer(370, e.lineweight);
    if (e.thickness() != 0.0) out.real(39, e.thickness());
    if (e.transparency != 0) out.integer(440, 0x2000000 | std::lround(255.0 * (1.0 - e.transparency / 100.0)));
}

void normalGroup(const GroupIo& io, const Entity& e) {
    if (!io.reading()) io.out().point(210, e.normal());
}

void writeExtendedData(GroupWriter& out, const Entity& e, const Value& applications) {
    if (e.xdata() == nullptr) return;
    ListBuilder list;
    for (const XData::Application& application : e.xdata()->applications) {
        bool wanted = false;
        for (ListView item(applications); item && !wanted; ++item)
            wanted = item->isString() && cmd::matchesWildcards(application.name.view(), item->text());
        if (!wanted) continue;
        ListBuilder items;
        items.add(Value::string(application.name.str()));
        for (const XDataItem& item : application.items) {
            const Value code = Value::integer(item.code);
            if (const auto* s = std::get_if<std::string>(&item.value))
                items.add(Value::cons(code, Value::string(*s)));
            else if (const auto* r = std::get_if<double>(&item.value))
                items.add(Value::cons(code, Value::real(*r)));
            else if (const auto* i = std::get_if<std::int64_t>(&item.value))
                items.add(Value::cons(code, Value::integer(*i)));
            else {
                const auto& p = std::get<Vector3>(item.value);
                items.add(Value::list({code, Value::real(p.x), Value::real(p.y), Value::real(p.z)}));
            }
        }
        list.add(items.finish());
    }
    if (list.size() > 0) out.addItem(Value::cons(Value::integer(-3), list.finish()));
}

void readExtendedData(const Value& list, Entity& e) {
    // An application that is not named keeps its data; one without items loses them.
    constexpr std::size_t kMaxItems = 100'000;
    XData data = e.xdata() != nullptr ? *e.xdata() : XData{};
    for (ListView application(list); application; ++application) {
        if (!application->isCons() || !application->car().isString())
            throw LispError("group -3: expected (application item ...)");
        std::vector<XDataItem> items;
        for (ListView item(application->cdr()); item; ++item) {
            if (!item->isCons() || !item->car().isInteger() || items.size() >= kMaxItems)
                throw LispError("group -3: bad item " + printed(*item).substr(0, 60));
            const std::int64_t code = item->car().asInteger();
            const Value& v = item->cdr();
            const int c = static_cast<int>(std::clamp<std::int64_t>(code, 0, 9999));
            XDataItem made;
            made.code = c;
            if (code >= 1010 && code <= 1013)
                made.value = GroupList::pointOf(c, v);
            else if (code >= 1040 && code <= 1042)
                made.value = GroupList::realOf(c, v);
            else if (code == 1070 || code == 1071)
                made.value = GroupList::integerOf(c, v);
            else if (code >= 1000 && code <= 1005 && code != 1001)
                made.value = GroupList::textOf(c, v);
            else
                throw LispError("group -3: bad item " + printed(*item).substr(0, 60));
            items.push_back(std::move(made));
        }
        data.set(Name(application->car().text()), std::move(items));
    }
    e.setXdata(std::move(data));
}

}  // namespace kova::script::lisp
