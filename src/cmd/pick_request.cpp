#include "cmd/pick_request.hpp"

namespace kova::cmd {

Ask::Awaiter askPick(Ask& ask, PickRequest wanted) {
    Ask::Awaiter awaiter = ask.object(std::move(wanted.prompt), wanted.options);
    awaiter.request.refusal = std::move(wanted.refusal);
    PickFilter filter;
    filter.isName = std::move(wanted.isName);
    filter.rules = std::move(wanted);
    awaiter.request.filter = std::move(filter);
    return awaiter;
}

Ask::Awaiter askSource(Ask& ask, std::string prompt, std::string_view options,
                       std::function<bool(const engine::Entity&)> usable) {
    PickRequest request;
    request.prompt = std::move(prompt);
    request.options = options;
    request.usable = std::move(usable);
    request.locked = Locked::Taken;
    return askPick(ask, std::move(request));
}

}  // namespace kova::cmd
