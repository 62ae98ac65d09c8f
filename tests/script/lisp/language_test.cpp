// The language without the drawing: reader, printer, evaluator, functions.

#include <filesystem>
#include <fstream>

#include "lisp_tools.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/cycles.hpp"

namespace kova::script::lisp {
namespace {

TEST_F(LispTest, ReadsAndPrints) {
    EXPECT_EQ(eval("(setq a 1.0)"), "1.0");
    EXPECT_EQ(eval("(cons 1 2)"), "(1 . 2)");
    EXPECT_EQ(eval("(cons 1 (cons 2 3))"), "(1 2 . 3)");
    EXPECT_EQ(eval("'(a (b . c) \"d\\\"e\\n\" nil 'x .5 -3 +4 1e3)"),
              "(A (B . C) \"d\\\"e\\n\" nil (QUOTE X) 0.5 -3 4 1000.0)");
    EXPECT_EQ(eval("car"), "<builtin: CAR>");
    EXPECT_EQ(eval("(lambda (x) x)"), "<function>");
    EXPECT_EQ(eval("(list 1+ '3dpoly (/ 1.0 3) 123456.789 -0.0 1e20)"),
              "(<builtin: 1+> 3DPOLY 0.333333 123456.789 0.0 1e+20)");
    EXPECT_EQ(eval("; nothing but a comment"), "nil");
    EXPECT_EQ(eval("1 2 ; two expressions\n3"), "3");
}

TEST_F(LispTest, ParserMessages) {
    const std::pair<const char*, const char*> cases[] = {
        {")", "Parser error: unexpected ')'"},
        {"(list 1))", "Parser error: unexpected ')'"},
        {"(list 1", "Parser error: expected ')'"},
        {"'(1 2 . 3)", "Parser error: dotted pair must have exactly one element before the dot"},
        {"'(1 . 2 3)", "Parser error: expected ')' after dotted pair"},
        {"'(1 . 2", "Parser error: expected ')' after dotted pair"},
        {".", "Parser error: unexpected '.'"},
        {"(\n  \"abc", "Unterminated string starting at line 2, column 3"},
        {"\"ab\\", "Unterminated string escape at line 1, column 4"},
        {"(+ 1 2e)", "Invalid number exponent at line 1, column 6"},
        {"1e999", "stod argument out of range"},
        {"99999999999999999999", "stoll argument out of range"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(eval(text), std::string("; error: ") + message) << text;
}

TEST_F(LispTest, EvaluationMessages) {
    const std::pair<const char*, const char*> cases[] = {
        {"(/ 1 0)", "/: divide by zero"},
        {"(rem 5 0)", "REM: divide by zero"},
        {"(setq 5 1)", "SETQ: expected symbol"},
        {"(set 5 1)", "SET: expected symbol"},
        {"(foreach 5 '(1) 1)", "FOREACH: expected symbol"},
        {"(defun f)", "DEFUN: expected name, params, body"},
        {"(defun 5 (x) x)", "DEFUN: expected function name"},
        {"(lambda)", "LAMBDA: expected params and body"},
        {"(vl-sort '(2 1) 7)", "VL-SORT: second argument is not a function"},
        {"(progn (setq c:v 5) (c:v))", "Cannot apply non-function"},
        {"(5 6)", "Cannot apply non-function"},
        {"(no-such-thing 1)", "Not a function: NO-SUCH-THING"},
        {"(mapcar 5 '(1))", "Not a function: 5"},
        {"((lambda (a b) a) 1)", "LAMBDA: too few arguments (expected 2, got 1)"},
        {"(progn (defun f (a) a) (f))", "F: too few arguments (expected 1, got 0)"},
        {"(car 5)", "CAR: expected a list, got 5"},
        {"(+ 1 \"a\")", "+: expected a number, got \"a\""},
        {"(setq T 1)", "SETQ: cannot change T"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(eval(text), std::string("; error: ") + message) << text;
}

/// The manual's examples are the functions' first tests: what stands behind "->" must come out.
TEST_F(LispTest, ManualExamplesAreTrue) {
    int checked = 0;
    const auto check = [&](std::string_view example) {
        const std::size_t arrow = example.rfind(" -> ");
        if (arrow == std::string_view::npos) return;
        EXPECT_EQ(eval(std::string(example.substr(0, arrow))), example.substr(arrow + 4)) << example;
        ++checked;
    };
    for (const FormDef& f : specialForms()) check(f.example);
    for (const BuiltinGroup& group : builtinGroups())
        for (const BuiltinDef& f : group.rows) check(f.example);
    EXPECT_GT(checked, 150);
}

TEST_F(LispTest, ManualIsUpToDate) {
    std::ifstream in(KOVA_SOURCE_DIR "/docs/lisp.md");
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    if (text != manual()) {
        const auto path = std::filesystem::absolute("lisp.md");
        std::ofstream(path) << manual();
        FAIL() << "docs/lisp.md is not what the table of functions gives; a new one stands in " << path;
    }
}

TEST_F(LispTest, VariablesAndScopes) {
    // Functions see the variables around them; what a function sets that nobody binds is global.
    eval("(defun adder (n) (lambda (x) (+ x n)))");
    EXPECT_EQ(eval("(setq add5 (adder 5))"), "<function>");
    EXPECT_EQ(eval("(list (add5 1) ((adder 7) 1))"), "(6 8)");
    eval("(defun counter ( / n) (setq n 0) (list (lambda () (setq n (1+ n))) (lambda () n)))");
    EXPECT_EQ(eval("(progn (setq c (counter)) ((car c)) ((car c)) ((cadr c)))"), "2");
    EXPECT_EQ(eval("(progn (defun f (a / b) (setq b 2 g 3) (list a b g)) (f 1))"), "(1 2 3)");
    EXPECT_EQ(eval("(list b g (boundp 'b) (boundp 'g))"), "(nil 3 nil T)");
    // SET and EVAL reach locals by name; a loop's variable is gone behind the loop.
    EXPECT_EQ(eval("((lambda (x) (set 'x 9) (eval '(+ x 1))) 1)"), "10");
    EXPECT_EQ(eval("(progn (setq i 'outer) (foreach i '(1 2) (set 'i (* i 10))) i)"), "OUTER");
    EXPECT_EQ(eval("((lambda (v) (foreach v '(1 2) v) v) 'kept)"), "KEPT");
    EXPECT_EQ(eval("(mapcar '(lambda (x) (* x g)) '(1 2 3))"), "(3 6 9)");
    EXPECT_EQ(eval("((lambda (k) (mapcar '(lambda (x) (* x k)) '(1 2))) 10)"), "(10 20)");
    EXPECT_EQ(eval("(progn (setq h 'car) (apply h '((1 2))))"), "1");
}

TEST_F(LispTest, ControlFlow) {
    EXPECT_EQ(eval("(cond (nil 1) ((member 2 '(1 2 3))) (T 5))"), "(2 3)");
    EXPECT_EQ(eval("(cond (nil 1))"), "nil");
    EXPECT_EQ(eval("(list (and) (or) (and 1 nil 2) (or nil nil) (if nil 1) (while nil))"), "(T nil nil nil nil nil)");
    EXPECT_EQ(eval("(progn (setq s 0) (foreach p '((1 2) (3 4)) (foreach x p (setq s (+ s x)))) s)"), "10");
    EXPECT_EQ(eval("(repeat 0 1)"), "nil");
    EXPECT_EQ(eval("(vl-sort '((2 . a) (1 . b) (2 . c) (1 . d)) '(lambda (x y) (< (car x) (car y))))"),
              "((1 . B) (1 . D) (2 . A) (2 . C))");
    EXPECT_EQ(eval("(boole 6 5 3)"), "6");
    EXPECT_EQ(eval("(mapcar '(lambda (f) (boole f 12 10)) '(0 1 2 4 8 15))"), "(0 8 4 2 -15 -1)");
    EXPECT_EQ(eval("(+ 9223372036854775807 1)"), "9.22337203685478e+18");
}

TEST_F(LispTest, ErrorsAreCaughtAndHandled) {
    EXPECT_EQ(eval("(vl-catch-all-error-message (vl-catch-all-apply '(lambda (x) (car x)) '(5)))"),
              "\"CAR: expected a list, got 5\"");
    // A function's own *ERROR* speaks for the error; its variables are those of where it was written.
    eval("(setq seen nil)");
    eval("(defun risky (/ *error* mark) (setq mark 42) (defun *error* (msg) (setq seen (list mark msg))) (/ 1 0))");
    EXPECT_EQ(eval("(risky)"), "");
    EXPECT_EQ(eval("seen"), "(42 \"/: divide by zero\")");
    // An error within the handler ends there; afterwards errors are plain again.
    eval("(defun worse (/ *error*) (defun *error* (msg) (car 7)) (/ 1 0))");
    EXPECT_EQ(eval("(worse)"), "; error: CAR: expected a list, got 7");
    EXPECT_EQ(eval("(/ 1 0)"), "; error: /: divide by zero");
    EXPECT_EQ(eval("(progn (exit) 5)"), "; error: quit / exit abort");
}

TEST_F(LispTest, DeepAndEndlessThingsEnd) {
    eval("(defun down (n) (if (= n 0) 0 (+ 1 (down (1- n)))))");
    EXPECT_EQ(eval("(down 100000)"), "100000");
    EXPECT_EQ(eval("(down 100000000)"), "; error: Recursion is too deep");
    // A call in the last place takes no room.
    eval("(defun count (n) (if (= n 0) 'done (count (1- n))))");
    EXPECT_EQ(eval("(count 1000000)"), "DONE");
    engine().machine().setStepLimit(1'000'000);
    EXPECT_EQ(eval("(while T)"), "; error: The evaluation takes too long");
    EXPECT_EQ(eval("(defun loop () (loop))(loop)"), "; error: The evaluation takes too long");
    engine().machine().setStepLimit(Machine::kDefaultSteps);
    // Long and deep lists are made, printed, compared and released without recursion.
    EXPECT_EQ(
        eval("(progn (setq l nil) (repeat 300000 (setq l (list l))) (setq m nil) (repeat 300000 (setq m (list m))) "
             "(equal l m))"),
        "T");
    EXPECT_EQ(eval("l").size(), 600'000u + 3u);
    EXPECT_EQ(eval("(progn (setq l nil m nil) (repeat 1000000 (setq l (cons 1 l))) (length l))"), "1000000");
    EXPECT_EQ(eval("(setq l nil)"), "nil");
    EXPECT_EQ(eval(std::string(200'000, '(')), "; error: Parser error: expected ')'");
    EXPECT_EQ(eval("(progn (setq e 1) (repeat 5000 (setq e (list '+ e 1))) (eval e))"),
              "; error: The expression is nested too deeply");
}

TEST_F(LispTest, MemoryIsBoundedAndGivenBack) {
    eval("(setq warm (list 1 2 3))");
    const std::size_t before = Heap::bytes;
    eval("(defun leak (n / f) (defun f (k) (if (= k 0) n (f (1- k)))) (f 3))");
    eval("(leak 5)");
    const std::size_t defined = Heap::bytes;
    eval("(repeat 1000 (leak 5))");
    EXPECT_LT(Heap::bytes, defined + 10'000) << "a local function and its scope are released";
    EXPECT_GE(defined, before);
    Heap::limit = Heap::bytes + 50'000'000;
    EXPECT_EQ(eval("(progn (setq s \"x\") (while T (setq s (strcat s s))))"), "; error: Insufficient memory");
    EXPECT_EQ(eval("(progn (setq s nil) (while T (setq s (cons 1 s))))"), "; error: Insufficient memory");
    Heap::limit = Heap::kDefaultLimit;
    EXPECT_EQ(eval("(setq s nil)"), "nil");
    EXPECT_LT(Heap::bytes, defined + 1'000'000);
}

TEST_F(LispTest, RingsOfScopesAndFunctionsAreFreed) {
    eval("(setq a nil b nil l nil n 0)");
    const auto settled = [&] {
        eval("(gc)");
        return Heap::bytes;
    };
    // Each of these leaves a scope and a function that only hold each other.
    const char* const rings[] = {
        "(defun f (/ g) (setq g (list (lambda () 1))) 2)",
        "(defun f (/ g h) (defun g () 1) (setq h g) 2)",
        "(defun f (/ g h) (defun g () (h)) (defun h () (list g h)) (setq n (list g h)) (setq n 0))",
        "(defun f (x / g) (setq g (list (lambda () (lambda () x)))) (setq g (cons ((car g)) g)) 2)",
        "(defun f (/ g s) (setq s (strcat \"a\" \"b\") g (cons (eval (list 'lambda '() (lambda () s))) s)) 2)",
        "(defun f (/ g) (setq g (eval (list 'list (list 'quote (lambda () 1))))) (defun g () 1) (setq l (list g)) 2)",
        "(defun f (/ g) (setq g (mapcar '(lambda (x) (lambda () x)) '(1 2 3))) (setq g (list g (lambda () g))) (car 5))",
    };
    for (const char* const ring : rings) {
        eval(ring);
        const std::string call = std::string(ring).starts_with("(defun f (x") ? "(f (list 1 2))" : "(f)";
        eval(call + "(setq l nil)");
        const std::size_t before = settled();
        for (int i = 0; i < 20; ++i) eval(call);
        eval("(setq l nil)");
        EXPECT_EQ(settled(), before) << ring;
    }
    // What is still held keeps all that it needs.
    eval("(defun make (n / self) (setq self (list (lambda () (setq n (1+ n))) (lambda () self))) self)");
    eval("(progn (setq a (make 5) b ((cadr a))) (repeat 100 (make 0)) (gc))");
    EXPECT_EQ(eval("(progn ((car a)) ((car b)) ((car ((cadr b)))))"), "8");
    eval("(progn (setq a (cadr a) b nil) (gc))");
    EXPECT_EQ(eval("((car (a)))"), "9");
    // One that is in use is no ring yet.
    EXPECT_EQ(eval("(progn (defun deep (k / me) (setq me (list (lambda () (list me k)))) (gc)"
                   " (if (= k 0) (cadr ((car me))) (+ (deep (1- k)) (cadr ((car me)))))) (deep 100))"),
              "5050");
}

TEST_F(LispTest, RingsAreFreedInTimeAndAtAFairPrice) {
    eval("(defun f (/ g) (setq g (list (lambda () 1))) 2)");
    eval("(progn (setq l nil) (repeat 200000 (setq l (cons 1 l))) ((lambda (m) (setq held (lambda () m))) l) (gc))");
    const std::size_t before = Heap::bytes;
    const std::uint64_t looked = Cycles::looked();
    for (int i = 0; i < 10; ++i) {
        eval("(repeat 50000 (f))");
        EXPECT_LT(Heap::bytes, 2 * before + 20'000'000);
    }
    // Three objects a call; the long list, which is looked at, too, must not be so again and again.
    EXPECT_LT(Cycles::looked() - looked, 500'000u * 20);
    // At the limit rings go before anything fails.
    Heap::limit = Heap::bytes + 1'000'000;
    EXPECT_EQ(eval("(repeat 50000 (f))"), "2");
    Heap::limit = Heap::kDefaultLimit;
    eval("(setq l nil held nil)");
}

TEST(LispEngines, LeaveNothingBehind) {
    const auto use = [] {
        headless::Session session;
        session.feed("(progn (defun f (/ g) (setq g (list (lambda () g))) (setq kept g)) (f) (f))");
    };
    use();
    const std::size_t before = Heap::bytes;
    use();
    EXPECT_EQ(Heap::bytes, before);
}

TEST_F(LispTest, NumbersAndTexts) {
    EXPECT_EQ(eval("(list (rtos 15.5 1 2) (rtos 15.5 4 4) (rtos 15.5 5 3) (rtos 15.5 3 2))"),
              "(\"1.55E+01\" \"1'-3 1/2\\\"\" \"15 1/2\" \"1'-3.5\\\"\")");
    EXPECT_EQ(eval("(list (angtos 0.785398163 0 2) (angtos pi 2 1) (angtos pi 3 2))"), "(\"45\" \"200g\" \"3.14r\")");
    EXPECT_EQ(eval("(mapcar '(lambda (p) (wcmatch \"Wall-12a\" p)) '(\"W*\" \"w*\" \"~W*\" \"*##@\" \"Wall.12?\" "
                   "\"[A-Z]all*\" \"[~W]*\" \"x,Wall*\"))"),
              "(T nil nil T T T nil T)");
    EXPECT_EQ(
        eval("(list (strlen \"\xC3\xA4\xC3\xB6\") (substr \"\xC3\xA4\xC3\xB6\xC3\xBC\" 2 1) (strcase \"\xC3\xA4\"))"),
        "(2 \"\xC3\xB6\" \"\xC3\x84\")");
    EXPECT_EQ(eval("(list (atoi \"-12x\") (atof \"1e3z\") (atof \"abc\") (atof \"0x10\"))"), "(-12 1000.0 0.0 0.0)");
    EXPECT_EQ(eval("(list (substr \"abc\" 5) (substr \"abc\" 2) (vl-string-subst \"-\" \"b\" \"abc\"))"),
              "(\"\" \"bc\" \"a-c\")");
}

TEST_F(LispTest, OutputBecomesLines) {
    EXPECT_THAT(lines({"(progn (princ \"one \") (princ 2) (terpri) (print \"x\") (princ))"}),
                ::testing::ElementsAre("one 2", "\"x\" "));
    EXPECT_THAT(lines({"(princ \"a\\nb\")"}), ::testing::ElementsAre("a", "b", "\"a\\nb\""));
    EXPECT_THAT(lines({"(alert \"Look\")"}), ::testing::ElementsAre("[ALERT] Look", "nil"));
    EXPECT_THAT(lines({"(princ \"half\") (/ 1 0)"}), ::testing::ElementsAre("half", "; error: /: divide by zero"));
}

}  // namespace
}  // namespace kova::script::lisp
