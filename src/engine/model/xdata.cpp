#include "engine/model/xdata.hpp"

namespace kova::engine {

const std::vector<XDataItem>* XData::find(Name application) const {
    for (const Application& a : applications)
        if (a.name == application) return &a.items;
    return nullptr;
}

void XData::set(Name application, std::vector<XDataItem> items) {
    const auto it = std::find_if(applications.begin(), applications.end(),
                                 [&](const Application& a) { return a.name == application; });
    if (items.empty()) {
        if (it != applications.end()) applications.erase(it);
    } else if (it != applications.end()) {
        it->items = std::move(items);
    } else {
        applications.push_back({application, std::move(items)});
    }
}

std::size_t XData::sizeInBytes() const {
    std::size_t size = sizeof *this;
    for (const Application& a : applications) {
        size += sizeof a + a.items.capacity() * sizeof(XDataItem);
        for (const XDataItem& item : a.items)
            if (const auto* text = std::get_if<std::string>(&item.value)) size += text->capacity();
    }
    return size;
}

}  // namespace kova::engine
