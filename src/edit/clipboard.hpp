#pragma once

#include <memory>
#include <vector>

#include "doc/document.hpp"

namespace kova::cmd {

/// The program's clipboard: copies of entities with the layers, styles and blocks that they need, whatever becomes of
/// the drawing they came from. There is one for all drawings of the run.
class Clipboard {
public:
    static Clipboard& instance();

    bool empty() const { return content_ == nullptr; }
    void clear() { content_.reset(); }
    /// Copies entities of a drawing; ids that are gone are passed over, and without any the clipboard stays as it is.
    /// `base` comes to lie at the insertion point. Gives the number copied.
    std::size_t copy(doc::Document& document, const std::vector<std::uint64_t>& ids, const math::Vector2& base);
    /// Adds the content to the current space with its base point at `at`, in the units of the drawing, as part of the
    /// open group. Gives the new ids.
    std::vector<std::uint64_t> paste(doc::Document& document, const math::Vector2& at) const;
    /// The same where it was copied from.
    std::vector<std::uint64_t> pasteInPlace(doc::Document& document) const;
    /// Adds the content as a reference of a new block. Gives the reference; null when it could not be made.
    engine::Entity* pasteAsBlock(doc::Document& document, const math::Vector2& at) const;

private:
    /// The content as a drawing that an import may use up.
    std::unique_ptr<doc::Document> fresh() const;

    std::unique_ptr<doc::Document> content_;
    math::Vector2 base_;
};

/// The lower left corner of entities: where they are taken when nobody says.
math::Vector2 lowerLeft(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids);

}  // namespace kova::cmd
