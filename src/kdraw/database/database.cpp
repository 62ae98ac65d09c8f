#include "kdraw/database/database.hpp"
#include "strings/case_fold.hpp"

namespace kdraw {

namespace {

/// Handles below this number of times the objects (and a bit) stand in an array.
constexpr std::size_t kDenseFactor = 8;
constexpr std::size_t kDenseStart = 4096;

std::string nameKey(Table table, std::string_view name) {
    return static_cast<char>('A' + static_cast<int>(table)) + kova::strings::foldCase(name);
}

}  // namespace

Object* Database::find(Handle handle) const {
    if (handle < direct_.size()) {
        const std::uint32_t place = direct_[handle];
        if (place != 0) return objects[place - 1].get();
    }
    if (indirect_.empty()) return nullptr;
    const auto found = indirect_.find(handle);
    return found == indirect_.end() ? nullptr : objects[found->second - 1].get();
}

Object& Database::add(std::unique_ptr<Object> object, Handle wanted) {
    if (wanted == 0 || find(wanted) != nullptr) wanted = next_;
    object->handle = wanted;
    reserveHandles(wanted);
    objects.push_back(std::move(object));
    const auto place = static_cast<std::uint32_t>(objects.size());
    if (wanted < objects.size() * kDenseFactor + kDenseStart) {
        if (wanted >= direct_.size()) direct_.resize(std::max<std::size_t>(wanted + 1, direct_.size() * 2));
        direct_[wanted] = place;
    } else {
        indirect_[wanted] = place;
    }
    return *objects.back();
}

void Database::nameRecord(Table table, std::string_view name, Handle handle) {
    names_.emplace(nameKey(table, name), handle);
}

Handle Database::recordNamed(Table table, std::string_view name) const {
    const auto found = names_.find(nameKey(table, name));
    return found == names_.end() ? 0 : found->second;
}

std::string_view Database::recordName(Handle handle) const {
    const Object* object = find(handle);
    return object == nullptr ? std::string_view() : object->recordName();
}

}  // namespace kdraw
