#pragma once

#include <functional>
#include <string>

#include "doc/document.hpp"

namespace kova::cmd {

struct AuditTotals {
    std::size_t found = 0;
    std::size_t fixed = 0;
    std::size_t erased = 0;  ///< objects
};

/// Looks the open drawing through and, when `fix` is set, repairs it as one step of UNDO under `label`; prints what
/// AUDIT prints.
AuditTotals auditDocument(doc::Document& document, bool fix, const std::string& label,
                          const std::function<void(const std::string&)>& print);

}  // namespace kova::cmd
