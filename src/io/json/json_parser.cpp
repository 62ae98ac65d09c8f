#include "io/json/json_parser.hpp"

#include <nlohmann/json.hpp>

namespace kova::io::native {

namespace {

using Index = JsonTree::Index;

/// Receives the parser's events and sorts them: into the tree, to the sink, or away.
class Handler {
public:
    Handler(JsonTree& tree, RecordSink& sink, ParseOutcome& outcome) : tree_(tree), sink_(sink), outcome_(outcome) {}

    bool null() {
        return scalar([&] { tree_.addNull(); });
    }
    bool boolean(bool v) {
        return scalar([&] { tree_.addBoolean(v); });
    }
    bool number_integer(std::int64_t v) {
        return scalar([&] { tree_.addInteger(v); });
    }
    bool number_unsigned(std::uint64_t v) {
        return scalar([&] { tree_.addUnsigned(v); });
    }
    bool number_float(double v, const std::string&) {
        return scalar([&] { tree_.addFloat(v); });
    }
    bool string(std::string& v) {
        return scalar([&] { tree_.addText(v); });
    }
    bool binary(nlohmann::json::binary_t&) { return true; }

    bool key(std::string& text) {
        if (skipped_ > 0) return true;
        guarded([&] {
            if (tree_.openContainers() == 1) startSection(text);
            entitiesNext_ = tree_.openContainers() == 3 && owner_ != Owner::None && text == "entities";
            tree_.key(text);
        });
        return true;
    }

    bool start_object(std::size_t) { return start(JsonType::Object); }
    bool start_array(std::size_t) { return start(JsonType::Array); }
    bool end_object() { return end(); }
    bool end_array() { return end(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& problem) {
        // A number beyond all doubles stands in a text that is JSON all the same.
        const bool syntax = dynamic_cast<const nlohmann::json::parse_error*>(&problem) != nullptr;
        (syntax ? outcome_.syntaxError : outcome_.otherError) = problem.what();
        return false;
    }

private:
    enum class Section { Other, Unwanted, Entities, Blocks, Layouts };
    enum class Owner { None, Block, Layout };

    /// Runs a step; a failure is kept for its part of the file, and parsing goes on, since a syntax error further
    /// down counts more.
    template <class Step>
    void guarded(Step&& step) {
        try {
            step();
        } catch (...) {
            std::exception_ptr& slot = section_ == Section::Entities  ? outcome_.entitiesError
                                       : section_ == Section::Blocks  ? outcome_.blocksError
                                       : section_ == Section::Layouts ? outcome_.layoutsError
                                                                      : outcome_.otherSectionError;
            if (!slot) slot = std::current_exception();
        }
    }

    bool failed() const {
        switch (section_) {
            case Section::Entities:
                return outcome_.entitiesError != nullptr;
            case Section::Blocks:
                return outcome_.blocksError != nullptr;
            case Section::Layouts:
                return outcome_.layoutsError != nullptr;
            default:
                return false;
        }
    }

    void startSection(std::string_view key) {
        section_ = key == "entities"  ? Section::Entities
                   : key == "blocks"  ? Section::Blocks
                   : key == "layouts" ? Section::Layouts
                   : sink_.wants(key) ? Section::Other
                                      : Section::Unwanted;
    }

    /// Nothing is kept of a text that is no object, nor of members that nobody wants.
    bool ignoring() const {
        const std::size_t depth = tree_.openContainers();
        return depth == 0 || (depth == 1 && section_ == Section::Unwanted);
    }

    template <class Add>
    bool scalar(Add&& add) {
        if (skipped_ > 0 || ignoring()) return true;
        guarded([&] {
            if (!openRecordArray_ || (tree_.openContainers() != 2 && !isEntityElement())) {
                add();
                return;
            }
            const JsonTree::Mark mark = tree_.mark();
            const auto index = static_cast<Index>(tree_.size());
            add();
            deliver(index, mark);
        });
        return true;
    }

    bool start(JsonType type) {
        const std::size_t depth = tree_.openContainers();
        const bool rootIsNoObject = depth == 0 && type != JsonType::Object;
        if (skipped_ > 0 || rootIsNoObject || (depth == 1 && section_ == Section::Unwanted)) {
            ++skipped_;
            return true;
        }
        bool opened = false;
        guarded([&] {
            if (depth >= kMaxDepth) throw std::length_error("values are nested too deep");
            if (depth == 2 && openRecordArray_) {
                marks_[0] = tree_.mark();
                beginOwner();
            } else if (isEntityElement()) {
                marks_[1] = tree_.mark();
            }
            const Index index = tree_.open(type);
            opened = true;
            if (depth == 0) outcome_.root = index;
            if (depth == 1 && type == JsonType::Array) startRecordArray();
            if (depth == 3 && entitiesNext_ && type == JsonType::Array) ownerEntities_ = true;
            entitiesNext_ = false;
        });
        // What could not be opened is passed over up to its end.
        if (!opened) ++skipped_;
        return true;
    }

    bool end() {
        if (skipped_ > 0) {
            --skipped_;
            return true;
        }
        guarded([&] {
            const Index index = tree_.close();
            const std::size_t depth = tree_.openContainers();
            if (depth == 1) {
                openRecordArray_ = false;
                section_ = Section::Other;
            } else if (depth == 3 && ownerEntities_) {
                ownerEntities_ = false;
            } else if (depth == 2 && openRecordArray_) {
                deliver(index, marks_[0]);
            } else if (isEntityElement()) {
                deliver(index, marks_[1]);
            }
        });
        return true;
    }

    /// True where the value at hand is an element of an array of entities.
    bool isEntityElement() const {
        const std::size_t depth = tree_.openContainers();
        return (depth == 2 && modelEntities_ && openRecordArray_) || (depth == 4 && ownerEntities_);
    }

    void startRecordArray() {
        modelEntities_ = section_ == Section::Entities;
        openRecordArray_ = modelEntities_ || section_ == Section::Blocks || section_ == Section::Layouts;
        if (section_ == Section::Blocks) sink_.beginBlocks();
        if (section_ == Section::Layouts) sink_.beginLayouts();
    }

    void beginOwner() {
        if (section_ == Section::Blocks) {
            owner_ = Owner::Block;
            if (!failed()) sink_.beginBlock();
        } else if (section_ == Section::Layouts) {
            owner_ = Owner::Layout;
            if (!failed()) sink_.beginLayout();
        }
    }

    /// Hands a finished element of an array of records to the sink and takes it out of the tree.
    void deliver(Index index, const JsonTree::Mark& mark) {
        const bool element = tree_.openContainers() == 2 && openRecordArray_;
        const bool entity = isEntityElement();
        if (!element && !entity) return;
        const auto forget = [&] {
            tree_.drop(mark);
            if (!entity) owner_ = Owner::None;
        };
        try {
            if (!failed()) {
                // A value that is no record fails here, as asking it for its members would.
                if (tree_.type(index) != JsonType::Object) throwNoMembers(tree_.type(index));
                if (entity)
                    sink_.entity(index);
                else if (section_ == Section::Blocks)
                    sink_.endBlock(index);
                else
                    sink_.endLayout(index);
            }
        } catch (...) {
            forget();
            throw;
        }
        forget();
    }

    JsonTree& tree_;
    RecordSink& sink_;
    ParseOutcome& outcome_;
    Section section_ = Section::Other;
    Owner owner_ = Owner::None;
    bool openRecordArray_ = false;  ///< inside the top-level array of entities, blocks or layouts
    bool modelEntities_ = false;
    bool entitiesNext_ = false;   ///< the key "entities" of a block or layout was read
    bool ownerEntities_ = false;  ///< inside the entities of a block or layout
    std::size_t skipped_ = 0;     ///< open containers that are not kept
    JsonTree::Mark marks_[2]{};
};

}  // namespace

ParseOutcome parseDrawingText(std::string_view text, JsonTree& tree, RecordSink& sink) {
    ParseOutcome outcome;
    Handler handler(tree, sink, outcome);
    try {
        nlohmann::json::sax_parse(text.begin(), text.end(), &handler);
    } catch (const std::exception& problem) {
        outcome.otherError = problem.what();
    }
    return outcome;
}

}  // namespace kova::io::native
