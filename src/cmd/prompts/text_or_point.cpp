#include "cmd/prompts/text_or_point.hpp"

#include "cmd/point_entry.hpp"

namespace kova::cmd {

Task<PointOfText> pointOfText(Ask& ask, doc::Document& document, std::string line, math::Vector2 base,
                              std::optional<math::Vector2> cursor) {
    PointEntry entry;
    PointOfText out;
    for (;;) {
        const PointEntry::Result result = entry.feed(document, line, base, base, cursor.value_or(base));
        if (result == PointEntry::Result::Point) {
            out.point = entry.point();
            co_return out;
        }
        if (result == PointEntry::Result::Refused) ask.message(entry.refusal());
        if (!entry.waiting()) {
            out.told = result == PointEntry::Result::Refused;
            co_return out;
        }
        if (result == PointEntry::Result::NotMine) ask.message("Invalid input.");
        const Answer more = co_await ask.text(entry.prompt());
        line = more.text;
    }
}

}  // namespace kova::cmd
