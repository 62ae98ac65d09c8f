#include "io/json/json_tree.hpp"

#include <bit>
#include <cstring>
#include <new>
#include <stdexcept>

namespace kova::io::native {

namespace {

/// Texts from this length on keep the memory that the parser gathered them in.
constexpr std::size_t kLongTextSize = std::size_t{1} << 16;
constexpr std::uint32_t kMaxKeys = std::uint32_t{1} << 28;

/// A larger block at the same place where the system can; nothing is copied when a large block grows.
template <class T>
void enlarge(T*& block, std::size_t& capacity, std::size_t wanted) {
    const std::size_t larger = std::max({wanted, capacity + capacity / 2, std::size_t{1024}});
    void* fresh = std::realloc(static_cast<void*>(block), larger * sizeof(T));
    if (fresh == nullptr) throw std::bad_alloc();
    block = static_cast<T*>(fresh);
    capacity = larger;
}

}  // namespace

JsonTree::JsonTree() {
    keys_.emplace_back();  // key 0: none
}

JsonTree::~JsonTree() {
    std::free(nodes_);
    std::free(chars_);
}

void JsonTree::grow() {
    if (count_ >= kNone - 1) throw std::length_error("file holds too many values");
    enlarge(nodes_, capacity_, count_ + 1);
}

void JsonTree::add(JsonType type, std::uint64_t payload, std::uint32_t size) {
    if (count_ == capacity_) grow();
    nodes_[count_++] = {payload, size, pendingKey_ << kTypeBits | static_cast<std::uint32_t>(type)};
    pendingKey_ = 0;
    if (!open_.empty()) ++open_.back().items;
}

void JsonTree::addFloat(double v) { add(JsonType::Float, std::bit_cast<std::uint64_t>(v), 0); }

void JsonTree::addText(std::string& text) {
    if (text.size() >= kLongTextSize) {
        longTexts_.push_back(std::move(text));
        add(JsonType::Text, longTexts_.size() - 1, kLongText);
        return;
    }
    if (charCapacity_ - charCount_ < text.size()) enlarge(chars_, charCapacity_, charCount_ + text.size());
    if (!text.empty()) std::memcpy(chars_ + charCount_, text.data(), text.size());
    add(JsonType::Text, charCount_, static_cast<std::uint32_t>(text.size()));
    charCount_ += text.size();
}

JsonTree::Index JsonTree::open(JsonType container) {
    add(container, 0, 1);
    const auto index = static_cast<Index>(count_ - 1);
    open_.push_back({index, 0});
    return index;
}

JsonTree::Index JsonTree::close() {
    const Container container = open_.back();
    open_.pop_back();
    Node& node = nodes_[container.node];
    node.size = static_cast<std::uint32_t>(count_ - container.node);
    if (type(container.node) == JsonType::Array) {
        node.payload = container.items;
        return container.node;
    }
    ++serial_;
    std::uint64_t mask = 0;
    for (Index i = first(container.node); i != count_; i = next(i)) {
        Key& key = keys_[nodes_[i].keyAndType >> kTypeBits];
        // The one before loses its key, so that nobody finds it.
        if (key.seenIn == serial_) nodes_[key.seenAt].keyAndType &= (1U << kTypeBits) - 1U;
        key.seenIn = serial_;
        key.seenAt = i;
        ++key.count;
        mask |= key.bit;
    }
    node.payload = mask;
    return container.node;
}

void JsonTree::drop(const Mark& mark) {
    count_ = mark.nodes;
    charCount_ = mark.chars;
    longTexts_.resize(mark.longTexts);
}

std::uint32_t JsonTree::intern(std::string_view text) {
    // Records of a kind have the same keys in the same order: try the one that followed last time.
    const std::uint32_t guess = keys_[lastKey_].follower;
    if (guess != 0 && keys_[guess].text == text) {
        lastKey_ = guess;
        return guess;
    }
    std::uint32_t id = 0;
    if (const auto known = keyIndex_.find(text); known != keyIndex_.end()) {
        id = known->second;
    } else {
        if (keys_.size() >= kMaxKeys) throw std::length_error("file holds too many different member names");
        id = static_cast<std::uint32_t>(keys_.size());
        const std::string& kept = keyTexts_.emplace_back(text);
        keys_.push_back({kept, keyBit(kept)});
        keyIndex_.emplace(kept, id);
    }
    keys_[lastKey_].follower = id;
    lastKey_ = id;
    return id;
}

double JsonTree::real(Index i) const { return std::bit_cast<double>(nodes_[i].payload); }

double JsonTree::number(Index i) const {
    switch (type(i)) {
        case JsonType::Float:
            return real(i);
        case JsonType::Unsigned:
            return static_cast<double>(nodes_[i].payload);
        case JsonType::Integer:
            return static_cast<double>(integer(i));
        default:
            throwTypeError(JsonType::Float, type(i));
    }
}

std::string_view JsonTree::text(Index i) const {
    if (type(i) != JsonType::Text) throwTypeError(JsonType::Text, type(i));
    const Node& node = nodes_[i];
    if (node.size == kLongText) return longTexts_[node.payload];
    return {chars_ + node.payload, node.size};
}

void JsonTree::takeText(Index i, std::string& out) {
    const std::string_view found = text(i);
    if (nodes_[i].size == kLongText)
        out = std::move(longTexts_[nodes_[i].payload]);
    else
        out.assign(found);
}

JsonTree::Index JsonTree::find(Index object, std::string_view key) const {
    if (type(object) != JsonType::Object) throwNoMembers(type(object));
    if ((keyMask(object) & keyBit(key)) == 0) return kNone;
    for (Index i = first(object), last = end(object); i != last; i = next(i))
        if (isMember(i) && hasKey(i, key)) return i;
    return kNone;
}

}  // namespace kova::io::native
