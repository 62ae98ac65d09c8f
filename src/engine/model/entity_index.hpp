#pragma once

#include <array>
#include <cstdint>
#include <memory>
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

/// Finds entities by keys that mostly follow each other (ids, handles): pages of pointers, so that entities made one
/// after the other are found in memory one after the other. Stray keys, for which a page would be a waste, go
/// to an EntityIndex: the memory stays within a small multiple of the number of entities, whatever the keys.
template <std::uint64_t (Entity::*Key)() const>
class PagedEntityIndex {
public:
    Entity* find(std::uint64_t key) const {
        const std::uint64_t page = key / kPageSize;
        if (page < pages_.size() && pages_[page])
            if (Entity* e = (*pages_[page])[key % kPageSize]) return e;
        return stray_.size() != 0 ? stray_.find(key) : nullptr;
    }
    void insert(Entity* entity) {
        const std::uint64_t key = (entity->*Key)();
        ++count_;
        if (Page* page = pageFor(key / kPageSize)) (*page)[key % kPageSize] = entity;
        else stray_.insert(entity);
    }
    void erase(const Entity* entity) {
        const std::uint64_t key = (entity->*Key)();
        const std::uint64_t page = key / kPageSize;
        if (page < pages_.size() && pages_[page] && (*pages_[page])[key % kPageSize] == entity) {
            (*pages_[page])[key % kPageSize] = nullptr;
            --count_;
            return;
        }
        const std::size_t before = stray_.size();
        stray_.erase(entity);
        count_ -= before - stray_.size();
    }
    std::size_t size() const { return count_; }

private:
    static constexpr std::uint64_t kPageSize = 1024;
    static constexpr std::uint64_t kMaxPages = std::uint64_t{1} << 17;
    using Page = std::array<Entity*, kPageSize>;

    Page* pageFor(std::uint64_t page) {
        if (page >= kMaxPages) return nullptr;
        if (page < pages_.size() && pages_[page]) return pages_[page].get();
        // A page in eight must be filled, on the whole.
        if ((made_ + 1) * kPageSize > 8 * count_ + 16 * kPageSize) return nullptr;
        if (page >= pages_.size()) pages_.resize(page + 1);
        pages_[page] = std::make_unique<Page>();
        pages_[page]->fill(nullptr);
        ++made_;
        return pages_[page].get();
    }

    std::vector<std::unique_ptr<Page>> pages_;
    EntityIndex<Key> stray_;
    std::size_t made_ = 0;
    std::size_t count_ = 0;
};

}  // namespace kova::engine
