// The three layouts that a file may have, each with its reader; readContainer chooses.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "kdraw/container/container.hpp"

namespace kdraw {

std::string readLayout2000(std::string_view file, Container& container);
std::string readLayout2004(std::string_view file, Container& container);
std::string readLayout2007(std::string_view file, Container& container);

inline constexpr std::string_view tooSmall = "empty or too-small buffer";
inline constexpr std::size_t maxSections = 256;

/// How many bytes may still be taken up by sections, or be worked through to fill them: what bounds files that claim
/// more than they hold.
class Budget {
public:
    explicit Budget(std::string_view file) : m_left(maxExpansion * file.size() + sectionAllowance) {}

    bool spend(std::uint64_t bytes) {
        if (bytes > m_left) return false;
        m_left -= bytes;
        return true;
    }

private:
    std::uint64_t m_left;
};

/// Orders pages by their id; of pages with the same id the first one counts.
template <class Page>
void sortById(std::vector<Page>& pages) {
    std::stable_sort(pages.begin(), pages.end(), [](const Page& a, const Page& b) { return a.id < b.id; });
}
/// The page of an id among sorted ones; null: none.
template <class Page>
const Page* findPage(const std::vector<Page>& pages, decltype(Page::id) id) {
    const auto at = std::lower_bound(pages.begin(), pages.end(), id,
                                     [](const Page& page, decltype(Page::id) wanted) { return page.id < wanted; });
    return at != pages.end() && at->id == id ? &*at : nullptr;
}

/// Counts the faults of a section's pages and makes one note of each kind.
struct PageFaults {
    std::size_t damaged = 0;
    std::size_t wrongSums = 0;

    void note(const std::string& name, Container& container) const {
        if (damaged > 0) container.notes.push_back(std::to_string(damaged) + " damaged pages in section " + name);
        if (wrongSums > 0)
            container.notes.push_back("wrong checksum in " + std::to_string(wrongSums) + " pages of section " + name);
    }
};

}  // namespace kdraw
