#include <filesystem>

#include "edit/block_attributes.hpp"
#include "edit/block_editing.hpp"
#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/drawing_transfer.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/placement.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockReferenceEntity;
using engine::Name;
using math::Vector2;

namespace fs = std::filesystem;

/// INSERT and MINSERT: place a block, of this drawing or out of a file, with values for its attributes.
class InsertTool : public DialogueTool {
public:
    explicit InsertTool(bool multiple = false) : multiple_(multiple) {}

protected:
    Dialogue dialogue(Ask& ask) override {
        const bool chosen = co_await askBlock(ask);
        if (!chosen) co_return;
        // A block that is defined anew stays so when it is not placed.
        if (redefines_) ask.onCancel([this] { redefine(); });
        PlacementRequest request;
        request.exploded = exploded_;
        if (multiple_) request.wholeOnly = kWholeOnly;
        request.mayExplode = [this] { return isExplodable(); };
        request.scalesAlike = [this] {
            const engine::Block* block = source_ ? nullptr : drawing().findBlock(name_);
            return block != nullptr && block->scaleUniform;
        };
        const std::optional<Placement> placement = co_await askPlacement(ask, document(), std::move(request));
        if (!placement) {
            if (redefines_) redefine();
            co_return;
        }
        place_ = *placement;
        exploded_ = place_.exploded;
        if (multiple_) co_await askGrid(ask);
        if (!exploded_) co_await askValues(ask);
        commit();
    }

private:
    const char* label() const { return multiple_ ? "MINSERT" : "INSERT"; }

    // The block ------------------------------------------------------------------------------------------------

    /// The definitions of the attributes to be filled in; none when the block went while the command waited.
    std::vector<const engine::AttributeDefinitionEntity*> definitions() const {
        if (source_) return attributeDefinitions(source_->modelSpace());
        const engine::Block* block = drawing().findBlock(name_);
        if (block == nullptr) return {};
        return attributeDefinitions(block->entities);
    }
    bool exists() const { return drawing().findBlock(name_) != nullptr; }

    Task<bool> askBlock(Ask& ask) {
        for (;;) {
            const std::string last = engine::sysVarString(drawing(), "INSNAME");
            std::string prompt = "Enter block name or [?]";
            prompt += last.empty() ? ":" : " <" + last + ">:";
            const Answer answer = co_await ask.text(std::move(prompt), "?");
            if (answer.isEnter() && last.empty()) co_return false;
            if (answer.is("?")) {
                const std::string pattern = co_await askNamesToList(ask, "Enter block(s) to list <*>:");
                listBlocks(drawing(), pattern, *host());
                continue;
            }
            std::string text = answer.isEnter() ? last : typedName(answer.text);
            if (text == "~") {
                message(needsDialog("Select Drawing File"));
                co_return false;
            }
            if (text.starts_with('*') && drawing().findBlock(Name(text)) == nullptr) {
                if (multiple_) {
                    message(kWholeOnly);
                    continue;
                }
                exploded_ = true;
                text.erase(0, 1);
            }
            if (text.empty()) {
                message("Invalid block name \"\".");
                continue;
            }
            const std::size_t equals = text.find('=');
            if (equals != std::string::npos) {
                const std::string name = text.substr(0, equals);
                std::string file = text.substr(equals + 1);
                if (file.empty()) file = name;
                if (!readFile(typedName(file), name)) continue;
                if (exists() && engine::sysVarInt(drawing(), "EXPERT") < 2) {
                    std::string question =
                        "Block " + cmd::inQuotes(name_) + " already exists. Redefine it? [Yes/No] <N>:";
                    const bool redefine = co_await askYesNo(ask, std::move(question), false);
                    if (!redefine) {
                        source_.reset();
                        continue;
                    }
                }
                redefines_ = exists() && !exploded_;
            } else if (const engine::Block* block = drawing().findBlock(Name(text))) {
                name_ = block->name;
            } else {
                const std::string stem = fs::path(text).stem().string();
                const engine::Block* known = drawing().findBlock(Name(stem));
                if (known != nullptr && fs::path(text).has_extension())
                    name_ = known->name;
                else if (!readFile(text, stem))
                    continue;
            }
            if (const std::string refusal = insertRefusal(document(), name_); !refusal.empty()) {
                message(refusal);
                source_.reset();
                continue;
            }
            if (exploded_ && !isExplodable()) continue;
            co_return true;
        }
    }

    bool isExplodable() {
        const engine::Block* block = source_ ? nullptr : drawing().findBlock(name_);
        if (block == nullptr || block->explodable) return true;
        message("Block " + cmd::inQuotes(name_) + " cannot be exploded.");
        exploded_ = false;
        return false;
    }

    /// Reads a file for a block of that name; false after a line that says why not.
    bool readFile(const std::string& file, const std::string& name) {
        exploded_ = exploded_ && !multiple_;
        const std::string path = findDrawingFile(drawing(), file);
        if (path.empty()) {
            message("Block " + cmd::inQuotes(file) + " not found.");
            return false;
        }
        if (!engine::isValidSymbolName(name)) {
            message("Invalid block name " + cmd::inQuotes(name) + ".");
            return false;
        }
        AppServices* services = host()->services();
        auto source = std::make_unique<engine::Drawing>();
        const std::string error =
            services != nullptr ? services->readDrawing(path, *source) : std::string("Files cannot be read here.");
        if (!error.empty()) {
            message("Could not open " + path + ": " + error);
            return false;
        }
        source_ = std::move(source);
        const engine::Block* known = drawing().findBlock(Name(name));
        name_ = known != nullptr ? known->name : Name(name);
        return true;
    }

    // The grid ---------------------------------------------------------------------------------------------------

    Dialogue askGrid(Ask& ask) {
        const Answer rows = co_await ask.integer("Enter number of rows (---) <1>:", 1, 32767);
        rows_ = rows.isNumber() ? rows.integer() : 1;
        const Answer columns = co_await ask.integer("Enter number of columns (|||) <1>:", 1, 32767);
        columns_ = columns.isNumber() ? columns.integer() : 1;
        bool cell = false;
        if (rows_ > 1) {
            const char* prompt = columns_ > 1 ? "Enter distance between rows or specify unit cell (---):"
                                              : "Specify distance between rows (---):";
            const Answer distance = co_await ask.distance(prompt, {}, place_.point);
            if (distance.isNumber() && !isTyped(distance) && columns_ > 1) {
                const Vector2 first = distance.point;
                const Answer corner = co_await ask.point("Specify opposite corner:", {}, first);
                if (corner.isPoint()) {
                    const Vector2 x = Vector2::from_angle(place_.rotation);
                    columnSpacing_ = (corner.point - first).dot(x);
                    rowSpacing_ = (corner.point - first).dot(x.perpendicular());
                    cell = true;
                }
            } else {
                rowSpacing_ = distance.numberOr(0.0);
            }
        }
        if (columns_ < 2 || cell) co_return;
        const Answer distance = co_await ask.distance("Specify distance between columns (|||):", {}, place_.point);
        columnSpacing_ = distance.numberOr(0.0);
    }

    // Attributes -------------------------------------------------------------------------------------------------

    Dialogue askValues(Ask& ask) {
        values_ = co_await askAttributeValues(ask, drawing(), [this] { return definitions(); });
    }

    // The change -------------------------------------------------------------------------------------------------

    /// Defines the block from the file; false after a line that says why not.
    bool define() {
        const double factor = unitFactor(*source_, drawing());
        const std::string error = importAsBlock(document(), *source_, name_, factor);
        if (!error.empty()) {
            message(error);
            return false;
        }
        if (factor != 1.0) message("Units of the file converted, factor " + lengthDefault(drawing(), factor) + ".");
        return true;
    }

    void redefine() {
        doc::GroupScope group(document(), label());
        if (!define()) return group.rollback();
        message("Block " + cmd::inQuotes(name_) + " redefined.");
        repaint();
    }

    void commit() {
        doc::GroupScope group(document(), label());
        if (source_ && !define()) return group.rollback();
        engine::Block* block = drawing().findBlock(name_);
        if (block == nullptr) return;
        auto reference = std::make_unique<BlockReferenceEntity>(block->name, place_.point);
        applyCurrentValues(document(), *reference);
        place_.applyTo(*reference, *block);
        if (!reference->insert.is_finite() || !std::isfinite(reference->scaleX) || !std::isfinite(reference->scaleY)) {
            group.rollback();
            return message("Invalid value.");
        }
        reference->rows = rows_;
        reference->columns = columns_;
        reference->rowSpacing = rowSpacing_;
        reference->columnSpacing = columnSpacing_;
        if (exploded_) return addExploded(*block, *reference);
        const auto definitions = attributeDefinitions(block->entities);
        for (std::size_t i = 0; i < definitions.size(); ++i)
            reference->attributes.push_back(
                makeAttribute(*definitions[i], *reference, *block,
                              i < values_.size() ? values_[i] : definitions[i]->defaultValue, drawing()));
        document().addEntity(std::move(reference));
        engine::setSysVar(drawing(), "INSNAME", name_.str());
        repaint();
    }

    /// The block's entities by themselves.
    void addExploded(engine::Block& block, const BlockReferenceEntity& reference) {
        const math::Matrix4 matrix = reference.blockMatrix(block);
        const auto shown = block.visibleEntities({});
        std::size_t position = 0;
        for (const engine::Entity& entity : block.entities) {
            const std::size_t at = position++;
            if (shown && (at >= shown->size() || !(*shown)[at])) continue;
            if (std::unique_ptr<engine::Entity> copy = engine::transformedEntity(entity, matrix)) {
                copy->setHandle(0);
                document().addEntity(std::move(copy));
            }
        }
        // A file inserted exploded leaves no block behind that was not there before.
        if (source_ && engine::countReferences(drawing(), engine::SymbolKind::Block, name_) == 0)
            document().deleteBlock(name_);
        else
            engine::setSysVar(drawing(), "INSNAME", name_.str());
        repaint();
    }

    static constexpr const char* kWholeOnly = "MINSERT cannot insert a block exploded.";

    bool multiple_;
    bool exploded_ = false;
    bool redefines_ = false;  ///< the name was given with a file, and the block is known
    Name name_;
    std::unique_ptr<engine::Drawing> source_;  ///< the file that the block is to be defined from
    Placement place_;
    int rows_ = 1;
    int columns_ = 1;
    double rowSpacing_ = 0.0;
    double columnSpacing_ = 0.0;
    std::vector<std::string> values_;
};

class MinsertTool final : public InsertTool {
public:
    MinsertTool() : InsertTool(true) {}
};

}  // namespace

KOVA_TOOL_COMMAND(Insert, "INSERT", "Insert Block", "Insert", {"I", "DDINSERT"})
KOVA_TOOL_COMMAND(Minsert, "MINSERT", "Insert Block as Grid", "Insert")

}  // namespace kova::cmd::commands
