#include "edit/block_editing.hpp"
#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Block;
using engine::VisibilityState;

constexpr std::size_t kMostStates = 1000;

/// BVSTATE: the visibility states of the block in the editor.
class BvstateTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::string refusal = editorRefusal(document(), "BVSTATE");
        if (!refusal.empty()) co_return message(refusal);
        if (visibilityParameter(block()) == nullptr)
            co_return message("The block has no visibility parameter. Add one with BPARAMETER.");
        const Answer option = co_await ask.keyword("Enter an option [New/Set/Delete/Rename/Hide/SHow/Initial/?]:",
                                                   "New Set Delete Rename Hide SHow Initial ?");
        if (option.isEnter()) co_return;
        if (option.is("?")) co_return list();
        if (option.is("NEW"))
            co_await askNew(ask);
        else if (option.is("HIDE") || option.is("SHOW"))
            co_await askObjects(ask, option.is("SHOW"));
        else
            co_await askOther(ask, option.word);
        repaint();
    }

private:
    Block& block() const { return *drawing().editedBlock(); }
    bool isOpen() const { return drawing().editedBlock() != nullptr && document().blockEdit() != nullptr; }

    void list() const {
        Block& b = block();
        const engine::DynParameter* parameter = visibilityParameter(b);
        for (const VisibilityState& state : b.visibilityStates) {
            std::string marks;
            if (engine::equalNoCase(state.name, document().blockEdit()->state)) marks += "  shown";
            if (parameter != nullptr && engine::equalNoCase(state.name, parameter->activeVisibility))
                marks += "  initial";
            message("  " + inQuotes(state.name) + marks);
        }
        message(counted(b.visibilityStates.size(), "visibility state") + ".");
    }

    /// A name that no state has; empty: ended.
    Task<std::string> askFresh(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter new visibility state name:");
            std::string name = answer.isEnter() ? std::string() : typedName(answer.text);
            if (name.empty() || !isOpen()) co_return std::string();
            if (findState(block(), name) == nullptr) co_return name;
            message("Visibility state " + inQuotes(name) + " already exists.");
        }
    }

    Dialogue askNew(Ask& ask) {
        if (block().visibilityStates.size() >= kMostStates) co_return message("The block has too many states.");
        const std::string name = co_await askFresh(ask);
        if (name.empty()) co_return;
        const Answer way =
            co_await ask.keyword("Enter an option [Hide all/Show all/Current] <Current>:", "Hide Show Current");
        if (!isOpen()) co_return;
        changeEditedBlock(document(), "BVSTATE", [&](Block& b, doc::BlockEdit& edit) {
            VisibilityState state;
            state.name = name;
            if (way.is("SHOW")) {
                for (std::size_t i = 0; i < edit.ids.size(); ++i)
                    state.visibleEntityIndices.push_back(static_cast<std::int32_t>(i));
            } else if (!way.is("HIDE")) {
                if (const VisibilityState* now = findState(b, edit.state))
                    state.visibleEntityIndices = now->visibleEntityIndices;
            }
            b.visibilityStates.push_back(std::move(state));
            edit.state = name;
        });
        message("Visibility state " + inQuotes(name) + " added and shown.");
    }

    /// Set, Delete, Rename, Initial: all of them begin with a state's name.
    Dialogue askOther(Ask& ask, std::string option) {
        std::string name;
        for (;;) {
            const Answer answer = co_await ask.text("Enter visibility state name:");
            if (answer.isEnter() || !isOpen()) co_return;
            const VisibilityState* found = findState(block(), typedName(answer.text));
            if (found != nullptr) {
                name = found->name;
                break;
            }
            message("Visibility state " + inQuotes(typedName(answer.text)) + " not found.");
        }
        if (option == "DELETE" && block().visibilityStates.size() < 2)
            co_return message("The last visibility state cannot be deleted.");
        std::string fresh;
        if (option == "RENAME") {
            fresh = co_await askFresh(ask);
            if (fresh.empty()) co_return;
        }
        changeEditedBlock(document(), "BVSTATE", [&](Block& b, doc::BlockEdit& edit) {
            engine::DynParameter* parameter = visibilityParameter(b);
            const auto isIt = [&](const std::string& text) { return engine::equalNoCase(text, name); };
            if (option == "SET") {
                edit.state = name;
            } else if (option == "INITIAL") {
                if (parameter != nullptr) parameter->activeVisibility = name;
            } else if (option == "DELETE") {
                std::erase_if(b.visibilityStates, [&](const VisibilityState& state) { return isIt(state.name); });
                const std::string& first = b.visibilityStates.front().name;
                if (isIt(edit.state)) edit.state = first;
                if (parameter != nullptr && isIt(parameter->activeVisibility)) parameter->activeVisibility = first;
            } else {
                if (VisibilityState* state = findState(b, name)) state->name = fresh;
                if (isIt(edit.state)) edit.state = fresh;
                if (parameter != nullptr && isIt(parameter->activeVisibility)) parameter->activeVisibility = fresh;
            }
        });
        if (option == "DELETE") message("Visibility state " + inQuotes(name) + " deleted.");
    }

    /// Takes objects out of the state shown, or into it.
    Dialogue askObjects(Ask& ask, bool show) {
        // To be chosen, what the state hides must be seen; none of that is a change.
        if (show) {
            for (engine::Entity* entity : block().entities.entities())
                if (!entity->visible && !document().blockEdit()->hidden.contains(entity->id()))
                    lit_.push_back(entity->id());
            light(true);
            ask.onCancel([this] { light(false); });
        }
        const Answer objects = co_await ask.selection();
        light(false);
        lit_.clear();
        if (!isOpen()) co_return;
        if (objects.ids.empty()) co_return message("No objects selected.");
        changeEditedBlock(document(), "BVSTATE", [&](Block& b, doc::BlockEdit& edit) {
            VisibilityState* state = findState(b, edit.state);
            if (state == nullptr) return;
            std::vector<std::int32_t>& shown = state->visibleEntityIndices;
            std::vector<std::int32_t> numbers = numbersOf(edit, objects.ids);
            std::sort(numbers.begin(), numbers.end());
            std::erase_if(shown, [&](std::int32_t n) { return std::binary_search(numbers.begin(), numbers.end(), n); });
            if (show) shown.insert(shown.end(), numbers.begin(), numbers.end());
        });
        document().selection().clear();
        message(counted(objects.ids.size(), "object") + (show ? " shown in " : " hidden in ") +
                inQuotes(document().blockEdit()->state) + ".");
    }

    void light(bool on) {
        for (const std::uint64_t id : lit_)
            if (engine::Entity* entity = drawing().findById(id); entity != nullptr && entity->owner() != nullptr) {
                entity->visible = on;
                entity->owner()->touch(*entity);
            }
    }

    std::vector<std::uint64_t> lit_;
};

}  // namespace

KOVA_TOOL_COMMAND(Bvstate, "BVSTATE", "Block Visibility States", "Insert", {"BVS"})

}  // namespace kova::cmd::commands
