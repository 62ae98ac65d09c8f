#pragma once

#include <vector>

#include "doc/document.hpp"

namespace kova::cmd {

/// Remembers that these entities were hidden one by one, not by their file.
void noteIsolated(doc::Document& document, const std::vector<engine::Entity*>& entities);

/// Shows what HIDEOBJECTS and ISOLATEOBJECTS hide while it lives: a saved drawing shows everything, unless
/// OBJECTISOLATIONMODE wants hidden objects to stay so. No step of undo.
class ShownForSaving {
public:
    explicit ShownForSaving(doc::Document& document);
    ~ShownForSaving();
    ShownForSaving(const ShownForSaving&) = delete;
    ShownForSaving& operator=(const ShownForSaving&) = delete;
    std::size_t count() const { return shown_.size(); }

private:
    std::vector<engine::Entity*> shown_;
};

}  // namespace kova::cmd
