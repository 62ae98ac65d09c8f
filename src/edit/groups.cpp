#include "edit/groups.hpp"

#include <unordered_set>

#include "doc/table_edits.hpp"

namespace kova::cmd {

engine::Name nextGroupName(const engine::Drawing& drawing) { return drawing.groups.freeName("*A"); }

std::vector<std::uint64_t> handlesOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids) {
    std::vector<std::uint64_t> handles;
    std::unordered_set<std::uint64_t> seen;
    handles.reserve(ids.size());
    for (const std::uint64_t id : ids)
        if (const engine::Entity* entity = drawing.findById(id); entity != nullptr && seen.insert(id).second)
            handles.push_back(entity->handle());
    return handles;
}

void addGroup(doc::Document& document, engine::Name name, const std::string& description,
              const std::vector<std::uint64_t>& ids) {
    engine::Group group;
    group.name = name;
    group.description = description;
    group.memberHandles = handlesOf(document.drawing(), ids);
    document.editTable<doc::GroupTraits>([&](auto& groups) { groups.add(std::move(group)); });
}

std::vector<engine::Name> groupsOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids) {
    const std::vector<std::uint64_t> handles = handlesOf(drawing, ids);
    const std::unordered_set<std::uint64_t> wanted(handles.begin(), handles.end());
    std::vector<engine::Name> names;
    for (const engine::Group& group : drawing.groups)
        if (std::any_of(group.memberHandles.begin(), group.memberHandles.end(),
                        [&](std::uint64_t handle) { return wanted.contains(handle); }))
            names.push_back(group.name);
    return names;
}

}  // namespace kova::cmd
