#include "kdraw/fields/version.hpp"

namespace kdraw {

namespace {

struct VersionFacts {
    Version version;
    std::string_view name;
    std::string_view tag;
    int internal;
};

constexpr VersionFacts facts[] = {
    {Version::Unknown, "Unknown", "", 0},    {Version::R11R12, "R11/R12", "AC1009", 0},
    {Version::R2000, "R2000", "AC1015", 23}, {Version::R2004, "R2004", "AC1018", 25},
    {Version::R2007, "R2007", "AC1021", 27}, {Version::R2010, "R2010", "AC1024", 29},
    {Version::R2013, "R2013", "AC1027", 31}, {Version::R2018, "R2018", "AC1032", 33},
};

const VersionFacts& factsOf(Version version) {
    const auto index = static_cast<std::size_t>(version);
    return index < std::size(facts) ? facts[index] : facts[0];
}

}  // namespace

std::string_view versionName(Version version) { return factsOf(version).name; }
std::string_view versionTag(Version version) { return factsOf(version).tag; }
int internalVersion(Version version) { return factsOf(version).internal; }

Version versionOfTag(std::string_view tag) {
    tag = tag.substr(0, 6);
    for (const VersionFacts& known : facts)
        if (!known.tag.empty() && known.tag == tag) return known.version;
    return Version::Unknown;
}

}  // namespace kdraw
