#pragma once

#include "cmd/dialogue.hpp"
#include "cmd/step_group.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd::commands {

/// The vertex editing of PEDIT: a marker that walks over the vertices of one polyline. Each change is a step of the
/// group.
class VertexEditor {
public:
    VertexEditor(doc::Document& document, StepGroup& group, std::uint64_t id)
        : document_(document), group_(group), id_(id) {}

    Dialogue run(Ask& ask);

private:
    engine::PolylineEntity* polyline() const;
    void change(const std::function<void(engine::PolylineEntity&)>& edit);
    void step(std::size_t& index, int by) const;
    void tell(Ask& ask, std::size_t index) const;
    math::Vector2 place(std::size_t index) const;
    Dialogue insert(Ask& ask);
    Dialogue move(Ask& ask);
    Dialogue tangent(Ask& ask);
    Dialogue width(Ask& ask);
    /// Break and Straighten: from the marker to a second one.
    Dialogue stretch(Ask& ask, bool breaks);
    void breakBetween(std::size_t first, std::size_t last);

    doc::Document& document_;
    StepGroup& group_;
    std::uint64_t id_;
    std::size_t marker_ = 0;
};

}  // namespace kova::cmd::commands
