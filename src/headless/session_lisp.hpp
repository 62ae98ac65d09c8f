#pragma once

#include "headless/session.hpp"
#include "script/lisp/machine.hpp"

namespace kova::headless {

/// What a session gives its LISP engine.
class Session::LispLink final : public script::lisp::LispHost {
public:
    explicit LispLink(Session& session) : session_(session) {}
    doc::Document& document() override { return session_.document(); }
    cmd::CommandProcessor& processor() override { return session_.processor(); }
    void print(const std::string& line) override { session_.append(line); }

private:
    Session& session_;
};

}  // namespace kova::headless
