#pragma once

#include <cstddef>

namespace kova::io {

/// Hears how far a reader or writer of a file has come. They are given a null pointer where nobody wants to know, and
/// tell at every kProgressStep records otherwise.
class Progress {
public:
    virtual ~Progress() = default;
    /// `done` of `total` bytes or entities; a total of 0: nobody knows.
    virtual void tell(std::size_t done, std::size_t total) = 0;
};

inline constexpr std::size_t kProgressStep = 4096;

/// Counts records for a reader or writer and tells of every kProgressStep-th.
class ProgressCounter {
public:
    explicit ProgressCounter(Progress* progress = nullptr) : progress_(progress) {}
    /// Counts one; `place` gives done and total when they are asked for.
    template <class Place>
    void count(Place&& place) {
        if (++count_ % kProgressStep != 0 || progress_ == nullptr) return;
        const auto [done, total] = place(count_);
        progress_->tell(done, total);
    }

private:
    Progress* progress_;
    std::size_t count_ = 0;
};

}  // namespace kova::io
