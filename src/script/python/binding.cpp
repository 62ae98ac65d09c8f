#include "script/python/binding.hpp"

namespace kova::script::python {

namespace {

Binding* theBinding = nullptr;
constexpr std::size_t kMaxRuns = 40;

}  // namespace

Binding::Binding(headless::Session& session) : session_(session) { theBinding = this; }
Binding::~Binding() { theBinding = nullptr; }

Binding* Binding::current() { return theBinding; }

Binding& Binding::get() {
    if (theBinding == nullptr) throw std::runtime_error("there is no drawing to work on");
    if (theBinding->thread_ != std::this_thread::get_id())
        throw std::runtime_error("kova works on the program's main thread only");
    return *theBinding;
}

void Binding::beginRun(const std::string& label) {
    if (runs_.size() >= kMaxRuns) throw std::runtime_error("Python and commands call each other too deeply");
    settle();
    runs_.push_back({label, transactions_.size()});
}

void Binding::endRun() {
    if (runs_.empty()) return;
    const std::size_t before = runs_.back().transactions;
    if (transactions_.size() > before) endTransaction(transactions_[before], false);
    settle();
    runs_.pop_back();
}

void Binding::prepareChange() {
    if (!transactions_.empty() || runs_.empty() || document().isGroupOpen()) return;
    document().beginGroup(runs_.back().label);
    ownGroup_ = true;
}

void Binding::settle() {
    if (!std::exchange(ownGroup_, false)) return;
    document().endGroup();
}

std::uint64_t Binding::beginTransaction(const std::string& name) {
    settle();
    document().beginGroup(name);
    transactions_.push_back(++lastTransaction_);
    return lastTransaction_;
}

void Binding::endTransaction(std::uint64_t number, bool commit) {
    if (std::find(transactions_.begin(), transactions_.end(), number) == transactions_.end()) return;
    for (bool last = false; !last;) {
        last = transactions_.back() == number;
        transactions_.pop_back();
        // A drawing that was replaced took its open group along.
        if (!document().isGroupOpen()) continue;
        if (commit)
            document().endGroup();
        else
            document().rollbackGroup();
    }
}

void Binding::requireNoTransaction(const char* what) const {
    if (!transactions_.empty()) throw std::runtime_error(std::string(what) + " is not possible inside a transaction");
}

void Binding::requireNoDialogue(const char* what) const {
    if (inDialogue_) throw std::runtime_error(std::string(what) + " is not possible in a command that asks");
}

}  // namespace kova::script::python
