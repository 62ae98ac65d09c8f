#include "kdraw/database/dangling_references.hpp"

#include <algorithm>

#include "kdraw/database/database.hpp"
#include "kdraw/objects/block_header.hpp"
#include "kdraw/objects/control.hpp"
#include "kdraw/objects/dictionary.hpp"
#include "kdraw/objects/group.hpp"
#include "kdraw/objects/layout.hpp"
#include "kdraw/objects/small_objects.hpp"
#include "kdraw/objects/xrecord.hpp"

namespace kdraw {

namespace {

/// Walks the references of a description as an encoder does, without writing anything.
class ReferenceCheck final : public Fields {
public:
    explicit ReferenceCheck(const Database& database)
        : Fields(Mode::Encode, std::max(database.version, Version::R2010)), database_(database) {}

    bool isThere(Handle h) const {
        const Object* object = database_.find(h);
        return object != nullptr && !object->isOpaque();
    }
    void check(Handle& h) const {
        if (h != 0 && !isThere(h)) h = 0;
    }
    void check(std::vector<Handle>& list) const {
        std::erase_if(list, [&](Handle h) { return h == 0 || !isThere(h); });
    }

    void whole(Width, int, std::int64_t&) override {}
    void bd(int, double&) override {}
    void rd(int, double&) override {}
    void dd(int, double&, double) override {}
    void angle(int, double&) override {}
    void thickness(int, double&) override {}
    void extrusion(int, Vector3&) override {}
    void text(int, std::string&) override {}
    void bytes(int, std::string&, std::size_t) override {}
    void color(int, int, Color&) override {}
    void rawColor(int, Color&) override {}
    void longColor(int, Color&) override {}
    void handle(Ref, int, Handle& v) override { check(v); }
    void record(Table, int, Handle& v, Ref) override { check(v); }
    std::size_t count(Width, int, std::size_t current, unsigned) override { return current; }
    void subclass(std::string_view) override {}
    void constant(int, std::int64_t) override {}

private:
    const Database& database_;
};

}  // namespace

void dropDanglingReferences(Database& database) {
    ReferenceCheck f(database);
    for (const auto& held : database.objects) {
        Object& object = *held;
        f.check(object.owner);
        f.check(object.dictionary);
        if (!object.reactors.empty()) f.check(object.reactors);
        for (XBlock& block : object.xdata) f.check(block.application);
        // Without an application extended data cannot stand.
        std::erase_if(object.xdata, [](const XBlock& block) { return block.application == 0; });
        if (object.isEntity()) {
            auto& entity = static_cast<Entity&>(object);
            for (Handle* h : {&entity.bookColor, &entity.layer, &entity.linetype, &entity.material, &entity.plotStyle})
                f.check(*h);
            for (Handle& h : entity.visualStyles) f.check(h);
            if (std::vector<Handle>* owned = entity.owned()) f.check(*owned);
            if (Handle* end = entity.seqEnd()) f.check(*end);
        } else if (auto* control = dynamic_cast<Control*>(&object)) {
            f.check(control->records);
        } else if (auto* block = dynamic_cast<BlockHeader*>(&object)) {
            f.check(block->owned);
            f.check(block->inserts);
        } else if (auto* dictionary = dynamic_cast<Dictionary*>(&object)) {
            std::erase_if(dictionary->entries, [&](const Dictionary::Entry& entry) { return !f.isThere(entry.value); });
        } else if (auto* group = dynamic_cast<Group*>(&object)) {
            f.check(group->members);
        } else if (auto* layout = dynamic_cast<Layout*>(&object)) {
            f.check(layout->viewports);
        } else if (auto* order = dynamic_cast<SortEntities*>(&object)) {
            std::erase_if(order->pairs, [&](const SortEntities::Pair& pair) { return !f.isThere(pair.entity); });
        } else if (auto* fields = dynamic_cast<FieldList*>(&object)) {
            f.check(fields->fields);
        } else if (auto* record = dynamic_cast<XRecord*>(&object)) {
            // Its references stand among its data.
            for (XRecord::Item& item : record->items)
                if (XRecord::kindOf(item.code) == XRecord::Kind::Handle) f.check(item.handle);
        }
        object.describe(f);
    }
    database.header.describe(f);
}

}  // namespace kdraw
