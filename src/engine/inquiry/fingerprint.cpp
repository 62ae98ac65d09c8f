#include "engine/inquiry/fingerprint.hpp"

namespace kova::cmd {

namespace {

Fingerprint fingerprintOf(const engine::Entity& entity) {
    Fingerprint print;
    // Describing changes nothing while the visitor only looks.
    auto& e = const_cast<engine::Entity&>(entity);
    e.describeCommon(print);
    e.describe(print);
    return print;
}

bool sameXdata(const engine::XData* a, const engine::XData* b) {
    const std::size_t count = a != nullptr ? a->applications.size() : 0;
    if (count != (b != nullptr ? b->applications.size() : 0)) return false;
    for (std::size_t i = 0; i < count; ++i)
        if (a->applications[i].name != b->applications[i].name || a->applications[i].items != b->applications[i].items)
            return false;
    return true;
}

}  // namespace

bool holdSame(const engine::Entity& a, const engine::Entity& b) {
    if (a.type() != b.type() || !sameXdata(a.xdata(), b.xdata())) return false;
    const Fingerprint first = fingerprintOf(a);
    const Fingerprint second = fingerprintOf(b);
    return first.numbers == second.numbers && first.text == second.text;
}

}  // namespace kova::cmd
