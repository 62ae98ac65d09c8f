#pragma once

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "headless/session.hpp"

namespace kova::script::python {

/// The session that the `kova` module works on, and the undo groups of what runs. Lives while Python may run;
/// there is at most one.
///
/// What one run of Python code (a run_python call, a script file, a command written in Python) changes outside
/// transactions is one undo group, opened by the first change. A transaction, an undo and a command line close it.
class Binding {
public:
    explicit Binding(headless::Session& session);
    ~Binding();
    Binding(const Binding&) = delete;
    Binding& operator=(const Binding&) = delete;

    /// Null while there is no session.
    static Binding* current();
    /// The one that is there; throws std::runtime_error without one and on another thread than its own.
    static Binding& get();

    headless::Session& session() const { return session_; }
    doc::Document& document() const { return session_.document(); }
    engine::Drawing& drawing() const { return session_.document().drawing(); }

    /// One run of code; `label` names the undo group of what it changes. Throws when runs are nested too deeply.
    void beginRun(const std::string& label);
    /// Ends it: transactions that the code left open are rolled back.
    void endRun();
    bool isRunning() const { return !runs_.empty(); }

    /// To be called before every change: opens the run's own group.
    void prepareChange();
    /// Closes the run's own group, so that undo, commands and files find none open.
    void settle();

    /// Opens a transaction and gives its number.
    std::uint64_t beginTransaction(const std::string& name);
    /// Commits or rolls back a transaction and what was opened inside it. One that has ended already (its drawing was
    /// closed, its run ended) is passed over.
    void endTransaction(std::uint64_t number, bool commit);
    bool inTransaction() const { return !transactions_.empty(); }
    /// Throws std::runtime_error inside a transaction: "`what` is not possible inside a transaction".
    void requireNoTransaction(const char* what) const;

    /// A command that asks goes on, up to its next question; until then it must not be ended.
    void setInDialogue(bool on) { inDialogue_ = on; }
    /// Throws std::runtime_error meanwhile: "`what` is not possible in a command that asks".
    void requireNoDialogue(const char* what) const;

private:
    struct Run {
        std::string label;
        std::size_t transactions;  ///< open when it began
    };

    headless::Session& session_;
    std::thread::id thread_ = std::this_thread::get_id();
    std::vector<Run> runs_;
    std::vector<std::uint64_t> transactions_;
    std::uint64_t lastTransaction_ = 0;
    bool ownGroup_ = false;
    bool inDialogue_ = false;
};

}  // namespace kova::script::python
