#include "engine/inquiry/value_text.hpp"

#include "engine/model/units.hpp"

namespace kova::cmd {

namespace {

std::string length(const engine::Drawing& drawing, double value, int zeros) {
    return engine::formatLinear(value, engine::sysVarInt(drawing, "LUNITS", engine::kDecimal),
                                engine::sysVarInt(drawing, "LUPREC", 4), zeros);
}

}  // namespace

std::string counted(std::size_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string lengthText(const engine::Drawing& drawing, double value) { return length(drawing, value, 0); }

std::string lengthDefault(const engine::Drawing& drawing, double value) {
    return length(drawing, value, engine::kTrailingZerosHidden);
}

std::string angleText(const engine::Drawing& drawing, double radians) {
    return engine::formatAngle(radians, engine::sysVarInt(drawing, "AUNITS"), engine::sysVarInt(drawing, "AUPREC"),
                               engine::sysVarReal(drawing, "ANGBASE"), engine::sysVarInt(drawing, "ANGDIR") == 1);
}

std::string pointDefault(const engine::Drawing& drawing, const math::Vector2& world) {
    const math::Vector2 p = drawing.ucs.fromWorld(world);
    return lengthDefault(drawing, p.x) + "," + lengthDefault(drawing, p.y);
}

std::string handleText(std::uint64_t handle) {
    char buffer[24];
    std::snprintf(buffer, sizeof buffer, "%llX", static_cast<unsigned long long>(handle));
    return buffer;
}

std::string inQuotes(std::string_view text) { return '"' + std::string(text) + '"'; }

}  // namespace kova::cmd
