#include "cmd/tool.hpp"

namespace kova::cmd {

void Tool::attach(doc::Document* document, Viewport* viewport, ToolHost* host) {
    document_ = document;
    viewport_ = viewport;
    host_ = host;
}

void Tool::mouseMove(const math::Vector2& point) {
    cursor_ = point;
    repaint();
}

void Tool::mousePress(const math::Vector2&, int) {}
void Tool::mouseRelease(const math::Vector2&, int) {}
void Tool::mouseWheel(const math::Vector2&, int) {}
void Tool::paint(QPainter&) {}
void Tool::cancel() { finish(); }

bool Tool::isSelectingObjects() const { return prompt_.starts_with("Select objects"); }

void Tool::setPrompt(std::string text) {
    prompt_ = std::move(text);
    if (host_ != nullptr) host_->promptChanged(prompt_);
}

void Tool::message(const std::string& text) const {
    if (host_ != nullptr) host_->message(text);
}

void Tool::repaint() const {
    if (viewport_ != nullptr) viewport_->repaint();
}

void Tool::finish() {
    if (!active_) return;
    active_ = false;
    if (host_ != nullptr) host_->finished();
}

}  // namespace kova::cmd
