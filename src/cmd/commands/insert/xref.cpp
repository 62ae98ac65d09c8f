#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/drawing_transfer.hpp"
#include "edit/external_references.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/placement.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/symbols/external_reference.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Block;
using engine::BlockReferenceEntity;
using engine::Name;
using engine::SymbolKind;
using engine::XrefType;
using math::Vector2;

namespace fs = std::filesystem;

/// What XREF and XATTACH share: attaching a file and placing it.
class ReferenceTool : public DialogueTool {
protected:
    /// Asks for a file and places it. Nothing given as type: asks for that, too.
    Dialogue attach(Ask& ask, std::optional<XrefType> type) {
        const Answer file = co_await ask.text("Enter name of file to attach:");
        const std::string typed = typedPath(file.text);
        if (typed.empty()) co_return;
        const std::string path = findDrawingFile(drawing(), typed);
        if (path.empty()) {
            message("File not found: " + typed);
            co_return;
        }
        if (!type) {
            const bool overlay = engine::sysVarInt(drawing(), "XREFTYPE") == 1;
            const std::string fallback = overlay ? "Overlay" : "Attachment";
            const Answer answer = co_await ask.keyword("Enter reference type [Attachment/Overlay] <" + fallback + ">:",
                                                       "Attachment Overlay");
            const bool chosen = answer.isEnter() ? overlay : answer.is("OVERLAY");
            type = chosen ? XrefType::Overlay : XrefType::Attach;
        }
        const std::string stem = fs::path(path).stem().string();
        if (!engine::isValidSymbolName(stem)) {
            message("Invalid block name " + cmd::inQuotes(stem) + ".");
            co_return;
        }
        const Block* known = drawing().findBlock(Name(stem));
        if (known != nullptr && known->xrefType == XrefType::None) {
            message("Block " + cmd::inQuotes(known->name.view()) + " already exists.");
            co_return;
        }
        if (known != nullptr) {
            message("Xref " + cmd::inQuotes(known->name.view()) +
                    " has already been defined. Using existing definition.");
            engine::Drawing source;
            AppServices* services = host()->services();
            if (services != nullptr && services->readReference(known->xrefPath, source).empty())
                units_ = engine::sysVarInt(source, "INSUNITS");
        } else if (!define(Name(stem), *type, path)) {
            co_return;
        }
        co_await place(ask, Name(stem));
    }

private:
    /// A file beside the drawing or below it is named from there, any other by its whole path.
    std::string storedPath(const std::string& path) const {
        std::error_code error;
        const fs::path full = fs::absolute(path, error).lexically_normal();
        if (error || drawing().fileName.empty()) return error ? path : full.string();
        const fs::path folder = fs::absolute(drawing().fileName, error).parent_path().lexically_normal();
        if (error) return full.string();
        const fs::path relative = full.lexically_relative(folder);
        return relative.empty() || *relative.begin() == ".." ? full.string() : relative.string();
    }

    bool define(Name name, XrefType type, const std::string& path) {
        AppServices* services = host()->services();
        if (services == nullptr) return false;
        doc::GroupScope group(document(), "XATTACH");
        auto block = std::make_unique<Block>(name);
        block->xrefType = type;
        block->xrefPath = storedPath(path);
        document().addBlock(std::move(block));
        const std::string error = reloadReference(document(), *services, name, &units_);
        if (!error.empty()) {
            group.rollback();
            message(error);
            return false;
        }
        message("Xref " + cmd::inQuotes(name.view()) + " attached.");
        return true;
    }

    Dialogue place(Ask& ask, Name name) {
        PlacementRequest request;
        request.external = true;
        const std::optional<Placement> placement = co_await askPlacement(ask, document(), std::move(request));
        const Block* block = drawing().findBlock(name);
        if (!placement || block == nullptr) co_return;
        auto reference = std::make_unique<BlockReferenceEntity>(block->name, placement->point);
        // What it shows is read anew from its file each time: the units are converted where it stands.
        const double factor = unitFactor(units_, engine::sysVarInt(drawing(), "INSUNITS"));
        placement->applyTo(*reference, *block, factor);
        if (!reference->insert.is_finite() || !std::isfinite(reference->scaleX) || !std::isfinite(reference->scaleY))
            co_return message("Invalid value.");
        addNew(document(), std::move(reference), "XATTACH");
        if (factor != 1.0) message("Units of the file converted, factor " + lengthDefault(drawing(), factor) + ".");
        repaint();
    }

    int units_ = 0;  ///< INSUNITS of the attached file
};

class XattachTool final : public ReferenceTool {
protected:
    Dialogue dialogue(Ask& ask) override { co_await attach(ask, std::nullopt); }
};

/// XREF: the drawing's external references.
class XrefTool final : public ReferenceTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer option =
            co_await ask.keyword("Enter an option [?/Bind/Detach/Path/pathType/Unload/Reload/Overlay/Attach] <Attach>:",
                                 "? Bind Detach Path pathType Unload Reload Overlay Attach");
        if (option.isEnter() || option.is("ATTACH")) {
            co_await attach(ask, XrefType::Attach);
        } else if (option.is("OVERLAY")) {
            co_await attach(ask, XrefType::Overlay);
        } else if (option.is("?")) {
            const std::string filter = co_await askNamesToList(ask, "Enter xref(s) to list <*>:");
            list(filter);
        } else if (option.is("PATH")) {
            co_await changePaths(ask);
        } else if (option.is("PATHTYPE")) {
            co_await changePathTypes(ask);
        } else {
            const std::string word = option.word;
            std::string prompt = "Enter xref name(s) to " + engine::foldCase(word) + ":";
            const Answer names = co_await ask.text(std::move(prompt));
            if (!names.isEnter()) apply(word, typedName(names.text));
        }
    }

private:
    void list(const std::string& filter) {
        const std::vector<Name> names = referencesMatching(drawing(), filter);
        for (const Name name : names) {
            const Block& block = *drawing().findBlock(name);
            message(cmd::inQuotes(name.view()) + "  " + (block.xrefType == XrefType::Overlay ? "Overlay" : "Attach") +
                    "  " + std::string(referenceStatusName(block.xrefStatus)) + "  " + block.xrefPath);
        }
        message("Total xref(s): " + std::to_string(names.size()));
    }

    /// Those that the names mean; tells when there are none.
    std::vector<Name> chosen(const std::string& names) {
        std::vector<Name> found = referencesMatching(drawing(), names);
        if (found.empty()) message("No matching xrefs found.");
        return found;
    }

    void apply(const std::string& word, const std::string& names) {
        AppServices* services = host()->services();
        if (services == nullptr) return;
        const bool merge = engine::sysVarInt(drawing(), "BINDTYPE") == 1;
        for (const Name name : chosen(names)) {
            doc::GroupScope group(document(), "XREF");
            std::string error;
            const char* done = "unloaded";
            if (word == "UNLOAD") {
                unloadReference(document(), name);
            } else if (word == "RELOAD") {
                done = "reloaded";
                error = reloadReference(document(), *services, name);
            } else if (word == "DETACH") {
                done = "detached";
                error = detachReference(document(), name);
            } else {
                done = "bound";
                error = bindReference(document(), *services, name, merge);
                if (!error.empty()) group.rollback();
            }
            message(error.empty() ? "Xref " + cmd::inQuotes(name.view()) + " " + done + "." : error);
        }
        repaint();
    }

    Dialogue changePaths(Ask& ask) {
        const Answer which = co_await ask.text("Edit path for which xref(s):");
        if (which.isEnter()) co_return;
        for (const Name name : chosen(typedName(which.text))) {
            message("Xref name: " + name.str());
            const Block* block = drawing().findBlock(name);
            if (block == nullptr) continue;
            message("Old path: " + block->xrefPath);
            const Answer answer = co_await ask.text("Enter new path:");
            const std::string path = typedPath(answer.text);
            if (path.empty()) continue;
            setPath(name, path);
        }
    }

    /// The path as typed, and what stands there is shown.
    void setPath(Name name, const std::string& path) {
        Block* block = drawing().findBlock(name);
        AppServices* services = host()->services();
        if (block == nullptr || services == nullptr) return;
        const doc::GroupScope group(document(), "XREF");
        document().editBlock(*block, [&](Block& b) { b.xrefPath = path; });
        const std::string error = reloadReference(document(), *services, name);
        if (!error.empty()) message(error);
        repaint();
    }

    Dialogue changePathTypes(Ask& ask) {
        const Answer which = co_await ask.text("Enter xref name(s) to change path type:");
        if (which.isEnter()) co_return;
        const std::vector<Name> names = chosen(typedName(which.text));
        if (names.empty()) co_return;
        const Answer type =
            co_await ask.keyword("Enter a path type [Full/Relative/None] <Relative>:", "Full Relative None");
        const fs::path folder = fs::absolute(drawing().fileName).parent_path();
        const doc::GroupScope group(document(), "XREF");
        for (const Name name : names) {
            Block* block = drawing().findBlock(name);
            if (block == nullptr) continue;
            const fs::path old(block->xrefPath);
            fs::path path = old.filename();
            if (type.is("FULL")) path = (folder / old).lexically_normal();
            if (type.isEnter() || type.is("RELATIVE"))
                path = old.is_relative() ? old : old.lexically_normal().lexically_relative(folder);
            if (path.empty()) continue;
            document().editBlock(*block, [&](Block& b) { b.xrefPath = path.string(); });
        }
    }
};

/// XBIND: single records of a reference become the drawing's own.
class XbindTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer type = co_await ask.keyword("Enter symbol type to bind [Block/Dimstyle/LAyer/LType/Style]:",
                                                 "Block Dimstyle LAyer LType Style");
        if (type.isEnter()) co_return;
        SymbolKind kind = SymbolKind::Block;
        if (type.is("DIMSTYLE")) kind = SymbolKind::DimStyle;
        if (type.is("LAYER")) kind = SymbolKind::Layer;
        if (type.is("LTYPE")) kind = SymbolKind::Linetype;
        if (type.is("STYLE")) kind = SymbolKind::TextStyle;
        std::string prompt = "Enter dependent " + std::string(engine::symbolKindName(kind)) + " name(s):";
        const Answer answer = co_await ask.text(std::move(prompt));
        if (answer.isEnter()) co_return;
        const std::string patterns = typedName(answer.text);
        std::vector<engine::SymbolRename> renames;
        const auto note = [&](Name name) {
            if (engine::referenceOf(drawing(), name) == nullptr || !matchesWildcards(name.view(), patterns)) return;
            renames.push_back({kind, name, boundName(drawing(), kind, name)});
        };
        noteAll(kind, note);
        const doc::GroupScope group(document(), "XBIND");
        const std::size_t count = document().renameSymbolsUnchecked(std::move(renames));
        message(count == 0 ? std::string("No matching names found.")
                           : counted(count, engine::symbolKindName(kind)) + " bound.");
    }

private:
    template <class Note>
    void noteAll(SymbolKind kind, const Note& note) {
        const auto each = [&](const auto& table) {
            for (const auto& record : table) note(record.name);
        };
        if (kind == SymbolKind::DimStyle) each(drawing().dimStyles);
        if (kind == SymbolKind::Layer) each(drawing().layers);
        if (kind == SymbolKind::Linetype) each(drawing().linetypes);
        if (kind == SymbolKind::TextStyle) each(drawing().textStyles);
        if (kind != SymbolKind::Block) return;
        for (const auto& block : drawing().blocks()) note(block->name);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Xref, "XREF", "External References", "Insert", {"XR", "ER"})
KOVA_TOOL_COMMAND(Xattach, "XATTACH", "Attach Reference", "Insert", {"XA", "ATTACH"})
KOVA_TOOL_COMMAND(Xbind, "XBIND", "Bind Reference Symbols", "Insert", {"XB"})

}  // namespace kova::cmd::commands
