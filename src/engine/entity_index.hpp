#pragma once

#include <cstdint>
#include <vector>

namespace kova::engine {

class Entity;

/// Finds entities by a 64-bit key in an open table: about 12 bytes an entity.
/// The key is read from the entity itself, so that the table holds only pointers.
template <std::uint64_t (Entity::*Key)() const>
class EntityIndex {
public:
    Entity* find(std::uint64_t key) const {
        if (table_.empty()) return nullptr;
        for (std::size_t i = place(key);; i = next(i)) {
            Entity* e = table_[i];
            if (e == nullptr || (e->*Key)() == key) return e;
        }
    }
    void insert(Entity* entity) {
        if ((count_ + 1) * 5 > table_.size() * 4) grow();
        std::size_t i = place((entity->*Key)());
        while (table_[i] != nullptr) i = next(i);
        table_[i] = entity;
        ++count_;
    }
    void erase(const Entity* entity) {
        if (table_.empty()) return;
        std::size_t i = place((entity->*Key)());
        while (table_[i] != entity) {
            if (table_[i] == nullptr) return;
            i = next(i);
        }
        --count_;
        // Close the gap: move up every following entity whose own place is not behind the gap.
        for (std::size_t j = next(i); table_[j] != nullptr; j = next(j)) {
            const std::size_t home = place((table_[j]->*Key)());
            const bool between = i < j ? (home > i && home <= j) : (home > i || home <= j);
            if (between) continue;
            table_[i] = table_[j];
            i = j;
        }
        table_[i] = nullptr;
    }
    std::size_t size() const { return count_; }

private:
    static std::uint64_t mix(std::uint64_t v) {
        v ^= v >> 32;
        v *= 0x9E3779B97F4A7C15ULL;
        return v ^ (v >> 29);
    }
    // Maps the mixed key onto any table size by multiplication, so that the table may grow by half.
    std::size_t place(std::uint64_t key) const {
        return static_cast<std::size_t>((static_cast<unsigned __int128>(mix(key)) * table_.size()) >> 64);
    }
    std::size_t next(std::size_t i) const { return i + 1 == table_.size() ? 0 : i + 1; }
    void grow() {
        std::vector<Entity*> old(table_.size() < 16 ? 32 : table_.size() + table_.size() / 2, nullptr);
        old.swap(table_);
        count_ = 0;
        for (Entity* e : old)
            if (e != nullptr) insert(e);
    }

    std::vector<Entity*> table_;
    std::size_t count_ = 0;
};

}  // namespace kova::engine
