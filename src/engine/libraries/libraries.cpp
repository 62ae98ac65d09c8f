#include "engine/libraries/libraries.hpp"

namespace kova::resources {
extern const unsigned char kovacad_pat[];
extern const std::size_t kovacad_pat_size;
extern const unsigned char kovacad_lin[];
extern const std::size_t kovacad_lin_size;
extern const unsigned char kovacad_imperial_lin[];
extern const std::size_t kovacad_imperial_lin_size;
}  // namespace kova::resources

namespace kova::engine {

namespace {

constexpr double kMillimetresPerInch = 25.4;

std::string_view text(const unsigned char* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

std::vector<Linetype> standardLinetypes(std::string_view library) {
    std::vector<Linetype> linetypes = parseLinetypeLibrary(library);
    for (Linetype& linetype : linetypes) linetype.standard = true;
    return linetypes;
}

/// Patterns of standards that are written in millimetres have one size in both sets.
bool isMetricOnly(const HatchPattern& pattern) {
    return pattern.name.view().starts_with("GOST_") || pattern.name.view().starts_with("JIS_");
}

std::vector<HatchPattern> imperialPatterns() {
    std::vector<HatchPattern> patterns = builtinHatchPatterns(true);
    for (HatchPattern& pattern : patterns) {
        if (isMetricOnly(pattern)) continue;
        for (HatchFamily& family : pattern.families) {
            family.origin = family.origin / kMillimetresPerInch;
            family.shift = family.shift / kMillimetresPerInch;
            for (double& dash : family.dashes) dash /= kMillimetresPerInch;
        }
    }
    return patterns;
}

}  // namespace

const std::vector<Linetype>& builtinLinetypes(bool metric) {
    if (metric) {
        static const std::vector<Linetype> linetypes =
            standardLinetypes(text(resources::kovacad_lin, resources::kovacad_lin_size));
        return linetypes;
    }
    static const std::vector<Linetype> linetypes =
        standardLinetypes(text(resources::kovacad_imperial_lin, resources::kovacad_imperial_lin_size));
    return linetypes;
}

std::string_view builtinPatternText() { return text(resources::kovacad_pat, resources::kovacad_pat_size); }

const std::vector<HatchPattern>& builtinHatchPatterns(bool metric) {
    if (metric) {
        static const std::vector<HatchPattern> patterns = parsePatternLibrary(builtinPatternText());
        return patterns;
    }
    static const std::vector<HatchPattern> patterns = imperialPatterns();
    return patterns;
}

std::vector<AnnotationScale> builtinAnnotationScales() {
    std::vector<AnnotationScale> scales;
    for (const double drawingUnits : {1.0, 10.0, 16.0, 20.0, 30.0, 40.0, 50.0, 100.0})
        scales.push_back({Name("1:" + std::to_string(static_cast<int>(drawingUnits))), 1.0, drawingUnits});
    scales.push_back({Name("10:1"), 10.0, 1.0});
    scales.push_back({Name("100:1"), 100.0, 1.0});
    return scales;
}

}  // namespace kova::engine
