#include "kdraw/objects/dictionary.hpp"

#include "kdraw/groups/describing_objects.hpp"
#include "strings/case_fold.hpp"

namespace kdraw {

using kova::strings::equalNoCase;

namespace {

void readEntries(DxfInput& in, std::vector<Dictionary::Entry>& entries) {
    entries.clear();
    std::string key;
    bool named = false;
    for (bool more = in.find(3); more && !in.atEnd(); in.skip()) {
        if (in.peek() == 3) {
            key = in.decoded();
            named = true;
        } else if ((in.peek() == 350 || in.peek() == 360) && named) {
            entries.push_back({std::move(key), in.handle()});
            key.clear();
            named = false;
        }
    }
}

}  // namespace

void Dictionary::describe(Fields& f) {
    if (f.dxf()) {
        f.subclass("AcDbDictionary");
        if (f.reading() || hardOwner) f.b(280, hardOwner);
        f.bs(281, cloning);
        if (DxfInput* in = f.input()) readEntries(*in, entries);
        if (DxfOutput* out = f.output())
            for (const Entry& entry : entries) {
                out->text(3, entry.key);
                out->handle(hardOwner ? 360 : 350, entry.value);
            }
        return;
    }
    // A key has two bits at least, its reference eight in another stream.
    const std::size_t n = f.count(Width::BL, 0, entries.size(), 8);
    f.bs(0, cloning);
    std::uint8_t owns = hardOwner ? 1 : 0;
    f.rc(0, owns);
    hardOwner = owns != 0;
    f.rest(entries, n, [&](Entry& entry) {
        f.text(0, entry.key);
        f.handle(Ref::SoftOwner, 0, entry.value);
    });
}

Handle Dictionary::find(std::string_view key) const {
    for (const Entry& entry : entries)
        if (equalNoCase(entry.key, key)) return entry.value;
    return 0;
}

void Dictionary::set(std::string_view key, Handle value) {
    for (Entry& entry : entries)
        if (equalNoCase(entry.key, key)) {
            entry.value = value;
            return;
        }
    entries.push_back({std::string(key), value});
}

void DictionaryWithDefault::describe(Fields& f) {
    Dictionary::describe(f);
    f.subclass("AcDbDictionaryWithDefault");
    f.handle(Ref::HardPointer, 340, fallback);
}

void DictionaryVariable::describe(Fields& f) {
    f.subclass("DictionaryVariables");
    f.rc(280, schema);
    f.text(1, value);
}

}  // namespace kdraw
