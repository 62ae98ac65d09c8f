// LISP on the drawing: entities, selection sets, tables, commands, questions.

#include <QTemporaryDir>
#include <fstream>

#include "engine/kinds/all.hpp"
#include "lisp_tools.hpp"
#include "script/lisp/entities/entity_codes.hpp"

namespace kova::script::lisp {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct CadTest : LispTest {
    QTemporaryDir directory;
    CadTest() { engine::resetProfileVariables(); }
    ~CadTest() override { engine::resetProfileVariables(); }
    std::string path(const std::string& name) { return directory.filePath(QString::fromStdString(name)).toStdString(); }
    std::size_t count() { return drawing().modelSpace().size(); }
    template <class T>
    T& last() {
        return dynamic_cast<T&>(*drawing().modelSpace().last());
    }
};

TEST_F(CadTest, MakesChangesAndDeletesUndoably) {
    EXPECT_EQ(eval("(entmake '((0 . \"LINE\") (8 . \"Walls\") (62 . 1) (10 1 2 3) (11 4 5 6)))"),
              "((0 . \"LINE\") (8 . \"Walls\") (62 . 1) (10 1 2 3) (11 4 5 6))");
    ASSERT_EQ(count(), 1u);
    EXPECT_EQ(last<engine::LineEntity>().end3(), math::Vector3(4, 5, 6));
    EXPECT_TRUE(drawing().layers.contains("walls"));
    EXPECT_EQ(session.document().history().undoLabel(), "LISP entmake");
    EXPECT_THAT(
        eval("(setq l (entget (entlast)))"),
        HasSubstr(
            "(8 . \"Walls\") (62 . 1) (100 . \"AcDbLine\") (10 1.0 2.0 3.0) (11 4.0 5.0 6.0) (210 0.0 0.0 1.0))"));
    eval("(entmod (subst '(11 9 9 0) (assoc 11 l) l))");
    EXPECT_EQ(session.document().history().undoLabel(), "LISP entmod");
    EXPECT_EQ(last<engine::LineEntity>().end, math::Vector2(9, 9));
    session.document().undo();
    EXPECT_EQ(last<engine::LineEntity>().end3(), math::Vector3(4, 5, 6));
    EXPECT_EQ(eval("(= (entlast) (cdr (assoc -1 l)))"), "T");
    eval("(setq e (entlast)) (entdel e)");
    EXPECT_EQ(count(), 0u);
    EXPECT_EQ(session.document().history().undoLabel(), "LISP entdel");
    EXPECT_EQ(eval("(entget e)"), "nil");
    eval("(entdel e)");
    EXPECT_EQ(eval("(cdr (assoc 11 (entget e)))"), "(4.0 5.0 6.0)");
    EXPECT_EQ(eval("(eq e (handent (cdr (assoc 5 (entget e)))))"), "T");
}

TEST_F(CadTest, EntitiesFollowEachOtherAsTheyWereMade) {
    for (const char* x : {"1", "2", "3", "4"})
        eval("(entmake '((0 . \"POINT\") (10 " + std::string(x) + " 0)))");
    // A handle that the counter never gave is older than all that it gives.
    auto odd = std::make_unique<engine::PointEntity>(math::Vector2{0, 0});
    odd->setHandle(0x10000000);
    drawing().modelSpace().append(std::move(odd));
    std::vector<engine::Entity*> order = drawing().modelSpace().entities();
    std::swap(order[0], order[3]);
    std::swap(order[1], order[4]);
    ASSERT_TRUE(drawing().modelSpace().reorder(order));
    const std::string walk =
        "(progn (setq e (entnext) l nil) (while e (setq l (cons (cadr (assoc 10 (entget e))) l) e (entnext e)))"
        " (reverse l))";
    EXPECT_EQ(eval(walk), "(0.0 1.0 2.0 3.0 4.0)");
    EXPECT_EQ(eval("(cadr (assoc 10 (entget (entlast))))"), "4.0");
    eval("(entdel (setq gone (entlast)))");
    EXPECT_EQ(eval("(cadr (assoc 10 (entget (entlast))))"), "3.0");
    eval("(entdel gone)");
    EXPECT_EQ(eval(walk), "(0.0 1.0 2.0 3.0 4.0)");
    // Far apart, by what stands elsewhere.
    drawing().nextHandle += 100'000;
    eval("(entmake '((0 . \"POINT\") (10 5 0)))");
    drawing().nextHandle += 100'000;
    EXPECT_EQ(eval(walk), "(0.0 1.0 2.0 3.0 4.0 5.0)");
    EXPECT_EQ(eval("(cadr (assoc 10 (entget (entlast))))"), "5.0");
}

TEST_F(CadTest, WhatCannotBeMadeIsRefused) {
    const char* const cases[] = {
        "(entmake '((0 . \"CIRCLE\") (10 0 0) (40 . 0.0)))",
        "(entmake '((0 . \"CIRCLE\") (10 0 0)))",
        "(entmake '((0 . \"TEXT\") (10 0 0) (40 . 1) (1 . \"x\") (7 . \"NoStyle\")))",
        "(entmake '((0 . \"INSERT\") (2 . \"NoBlock\") (10 0 0)))",
        "(entmake '((0 . \"FROB\") (10 0 0)))",
        "(entmake '((0 . \"LINE\") (6 . \"NoLinetype\") (8 . \"Fresh\") (10 0 0) (11 1 1)))",
        "(entmake '((0 . \"SPLINE\") (71 . 3) (10 0 0) (10 1 1)))",
    };
    for (const char* text : cases) EXPECT_EQ(eval(text), "nil") << text;
    EXPECT_EQ(count(), 0u);
    EXPECT_FALSE(drawing().layers.contains("Fresh")) << "the layer went with the refused line";
    EXPECT_FALSE(session.document().history().canUndo());
    EXPECT_EQ(eval("(entmake '((0 . \"LINE\") (10 \"a\" 0) (11 1 1)))"),
              "; error: group 10: expected a point, got (\"a\" 0)");
    EXPECT_EQ(eval("(entmake '((0 . \"LINE\") 5))"), "; error: bad DXF group: 5");
    EXPECT_EQ(eval("(entmake (list '(0 . \"CIRCLE\") '(10 0 0) (cons 40 (* 1e308 10))))"),
              "; error: group 40: expected a finite number, got inf");
}

/// What ENTGET lists, ENTMAKE makes again: both name the same groups for every kind that can be made.
TEST_F(CadTest, EveryKindGoesThroughItsGroups) {
    eval("(entmake '((0 . \"BLOCK\") (2 . \"Box\") (70 . 0) (10 0 0)))");
    eval("(entmake '((0 . \"LINE\") (8 . \"0\") (10 0 0) (11 1 0)))");
    EXPECT_EQ(eval("(entmake '((0 . \"ENDBLK\")))"), "\"Box\"");
    const char* const makes[] = {
        "((0 . \"LINE\") (10 1 2 0) (11 3 4 5) (39 . 2.0) (48 . 0.5))",
        "((0 . \"CIRCLE\") (10 1 2 3) (40 . 2.5) (420 . 1193046))",
        "((0 . \"ARC\") (10 1 2 0) (40 . 2.5) (50 . 0.5) (51 . 2.0) (210 0 0 -1))",
        "((0 . \"LWPOLYLINE\") (70 . 1) (38 . 4.0) (10 0 0) (42 . 0.5) (10 5 0) (40 . 0.1) (41 . 0.2) (10 5 5))",
        "((0 . \"POINT\") (10 1 2 3))",
        "((0 . \"TEXT\") (10 1 2 0) (40 . 2.5) (1 . \"Hello\") (50 . 0.5) (72 . 1) (73 . 2) (11 7 8 0))",
        "((0 . \"MTEXT\") (10 1 2 0) (40 . 2.5) (41 . 30.0) (71 . 5) (1 . \"Hello\\\\Pthere\") (50 . 0.25))",
        "((0 . \"ELLIPSE\") (10 1 2 0) (11 4 3 0) (40 . 0.5) (41 . 0.0) (42 . 3.0))",
        "((0 . \"XLINE\") (10 1 2 0) (11 0.6 0.8 0))",
        "((0 . \"RAY\") (10 1 2 0) (11 0.6 0.8 0))",
        "((0 . \"SPLINE\") (71 . 2) (40 . 0.0) (40 . 0.0) (40 . 0.0) (40 . 1.0) (40 . 1.0) (40 . 1.0) (10 0 0) (10 1 "
        "2) (10 3 0))",
        "((0 . \"LEADER\") (10 0 0 0) (10 5 5 0) (71 . 1))",
        "((0 . \"INSERT\") (2 . \"Box\") (10 1 2 0) (41 . 2.0) (42 . 3.0) (43 . 1.0) (50 . 0.5))",
        "((0 . \"MLINE\") (11 0 0 0) (11 5 0 0) (11 5 5 0) (40 . 2.0) (70 . 1))",
        "((0 . \"HATCH\") (10 0 0 0) (2 . \"ANSI31\") (70 . 0) (91 . 2) (92 . 3) (72 . 1) (73 . 1) (93 . 3) (10 0 0) "
        "(42 . 0.5) "
        "(10 9 0) (42 . 0.0) (10 9 9) (42 . 0.0) (97 . 0) (92 . 1) (93 . 2) (72 . 1) (10 1 1) (11 2 1) (72 . 2) (10 "
        "1.5 1) "
        "(40 . 0.5) (50 . 0.0) (51 . 3.14) (73 . 1) (97 . 0) (75 . 1) (76 . 1) (52 . 0.5) (41 . 2.0) (98 . 1) (10 3 "
        "3))",
        "((0 . \"DIMENSION\") (70 . 32) (10 0 5 0) (13 0 0 0) (14 9 0 0) (50 . 0.0) (1 . \"<> mm\"))",
        "((0 . \"DIMENSION\") (70 . 34) (10 0 5 0) (13 0 0 0) (14 9 0 0) (15 0 1 0) (16 3 3 0))",
        "((0 . \"TOLERANCE\") (10 1 2 0) (1 . \"{\\\\Fgdt;j}%%v0.1\"))",
        "((0 . \"ATTDEF\") (10 1 2 0) (40 . 2.5) (1 . \"default\") (2 . \"TAG\") (3 . \"Prompt\") (70 . 8))",
        "((0 . \"VIEWPORT\") (10 50 50 0) (40 . 60.0) (41 . 40.0) (12 1 2 0) (45 . 80.0))",
        "((0 . \"3DFACE\") (10 0 0 1) (11 1 0 2) (12 1 1 3) (13 0 1 4) (70 . 5))",
        "((0 . \"SOLID\") (10 0 0 0) (11 1 0 0) (12 0 1 0) (13 1 1 0))",
        "((0 . \"WIPEOUT\") (14 0 0 0) (14 5 0 0) (14 5 5 0))",
        "((0 . \"REGION\") (10 0 0 0) (10 5 0 0) (10 5 5 0))",
        "((0 . \"SHAPE\") (10 1 2 0) (40 . 3.0) (2 . \"ARROW\"))",
        "((0 . \"MULTILEADER\") (300 . \"CONTEXT_DATA{\") (40 . 1.0) (10 12 8 0) (41 . 2.0) (140 . 1.5) (145 . 0.5) "
        "(290 . 1) (304 . \"Weld\") (296 . 0) (302 . \"LEADER{\") (10 10 8 0) (11 1 0 0) (40 . 1.5) "
        "(304 . \"LEADER_LINE{\") (10 0 0 0) (10 5 5 0) (305 . \"}\") (303 . \"}\") (301 . \"}\") (172 . 2))",
        "((0 . \"MULTILEADER\") (300 . \"CONTEXT_DATA{\") (10 1 2 0) (296 . 1) (341 . \"Box\") (301 . \"}\") (172 . "
        "1))",
        "((0 . \"ACAD_TABLE\") (10 1 2 0) (91 . 2) (92 . 2) (141 . 9.0) (141 . 7.0) (142 . 30.0) (142 . 20.0) (171 . "
        "1) "
        "(175 . 2) (1 . \"Title\") (171 . 1) (173 . 1) (1 . \"\") (171 . 1) (170 . 5) (7 . \"Standard\") (1 . \"a\") "
        "(171 . "
        "1) (3 . \"long \") (1 . \"text\"))",
        "((0 . \"IMAGE\") (1 . \"a.png\") (10 1 2 0) (11 0.1 0 0) (12 0 0.1 0) (13 100 50) (281 . 60))",
    };
    for (const char* make : makes) {
        ASSERT_NE(eval(std::string("(setq made (entmakex '") + make + "))"), "nil") << make;
        // A copy made from the list has the same list, names and handles apart.
        EXPECT_EQ(eval("(progn (setq l (entget made) c (entget (entmakex l)))"
                       " (defun own (x) (not (member (car x) '(-1 5))))"
                       " (equal (vl-remove-if-not 'own l) (vl-remove-if-not 'own c) 1e-9))"),
                  "T")
            << make << "\n"
            << eval("l") << "\n"
            << eval("c");
        // And given back as it is, it changes nothing.
        EXPECT_NE(eval("(entmod l)"), "nil") << make;
        EXPECT_EQ(eval("(equal l (entget made) 1e-9)"), "T") << make << "\n" << eval("(entget made)");
    }
}

TEST_F(CadTest, SizesOfTheStyleStayTheStyles) {
    auto leader = std::make_unique<engine::MLeaderEntity>();
    leader->heads.push_back({{{0, 0}, {5, 5}}});
    leader->contentPos = {8, 5};
    leader->textContent = "old";
    session.document().addEntity(std::move(leader));
    EXPECT_NE(eval("(progn (setq l (entget (entlast))) (entmod (subst '(304 . \"new\") (assoc 304 l) l)))"), "nil");
    EXPECT_EQ(last<engine::MLeaderEntity>().textContent, "new");
    EXPECT_EQ(last<engine::MLeaderEntity>().textHeight, 0.0) << "the style's still counts";
    EXPECT_EQ(last<engine::MLeaderEntity>().heads.size(), 1u);
    EXPECT_EQ(eval("(cdr (assoc 0 (entget (cdr (assoc 340 (member '(301 . \"}\") l))))))"), "\"MLEADERSTYLE\"");
    auto table = std::make_unique<engine::TableEntity>();
    table->rows = table->cols = 2;
    session.document().addEntity(std::move(table));
    EXPECT_NE(eval("(entmod (append (entget (entlast)) '((171 . 1) (1 . \"first\"))))"), "nil");
    EXPECT_TRUE(last<engine::TableEntity>().rowHeights.empty());
    EXPECT_EQ(last<engine::TableEntity>().cell(0, 0)->content, "first");
    EXPECT_THAT(eval("(entmod (subst '(91 . 2000000000) (assoc 91 (setq l (entget (entlast)))) l))"),
                HasSubstr("; error"));
}

TEST_F(CadTest, BodiesGoThroughTheirData) {
    auto body = std::make_unique<engine::Solid3DEntity>();
    body->kind = engine::Solid3DEntity::BodyKind::Body;
    body->sat = "400 3 1 0\nbody $-1 $1 $-1 $-1 #\nlump $-1 $-1 $2 $0 #\nshell ANTEATER $-1 #\nEnd-of-ACIS-data\n";
    const std::string sat = body->sat;
    session.document().addEntity(std::move(body));
    EXPECT_EQ(eval("(progn (setq l (entget (entlast))) (cdr (assoc 1 l)))"), "\"koo l n o\"");
    ASSERT_NE(eval("(entmakex l)"), "nil");
    EXPECT_EQ(last<engine::Solid3DEntity>().sat, sat);
    EXPECT_EQ(last<engine::Solid3DEntity>().kind, engine::Solid3DEntity::BodyKind::Body);
    EXPECT_NE(eval("(entmod (subst '(8 . \"Bodies\") (assoc 8 l) l))"), "nil");
    EXPECT_EQ(eval("(entmake '((0 . \"3DSOLID\") (70 . 1) (1 . \"no body\")))"), "nil");
    EXPECT_EQ(eval("(entmake '((0 . \"3DSOLID\") (70 . 1)))"), "nil");
    auto binary = std::make_unique<engine::Solid3DEntity>();
    for (int i = 0; i < 300; ++i) binary->sab += static_cast<char>(i);
    session.document().addEntity(std::move(binary));
    EXPECT_EQ(eval("(strlen (cdr (assoc 310 (setq l (entget (entlast))))))"), "254");
    EXPECT_NE(eval("(entmod l)"), "nil");
    EXPECT_EQ(last<engine::Solid3DEntity>().sab.size(), 300u);
    EXPECT_EQ(eval("(equal l (entget (entlast)))"), "T");
}

TEST_F(CadTest, PicksWithinBlocks) {
    // A circle in an inner block, which stands turned in an outer one, which stands shifted and doubled.
    eval(
        "(entmake '((0 . \"BLOCK\") (2 . \"In\") (10 0 0)))(entmake '((0 . \"CIRCLE\") (10 0 0) (40 . 1)))"
        "(entmake '((0 . \"LINE\") (10 5 0) (11 9 0)))(entmake '((0 . \"ENDBLK\")))"
        "(entmake '((0 . \"BLOCK\") (2 . \"Out\") (10 0 0)))"
        "(entmake (list '(0 . \"INSERT\") '(2 . \"In\") '(10 10 0) (cons 50 (/ pi 2))))(entmake '((0 . \"ENDBLK\")))"
        "(entmake '((0 . \"INSERT\") (66 . 1) (2 . \"Out\") (10 100 0) (41 . 2.0) (42 . 2.0)))"
        "(entmake '((0 . \"ATTRIB\") (10 130 0) (40 . 3.0) (1 . \"7\") (2 . \"NO\")))(entmake '((0 . \"SEQEND\")))");
    session.feed("(setq p (nentsel))");
    session.feed("120,14");  // on the line, which stands upright above (120,0)
    EXPECT_EQ(eval("(cdr (assoc 0 (entget (car p))))"), "\"LINE\"");
    EXPECT_EQ(eval("(caddr p)"), "((0.0 2.0 0.0) (-2.0 0.0 0.0) (0.0 0.0 2.0) (120.0 0.0 0.0))");
    EXPECT_EQ(eval("(mapcar '(lambda (e) (cdr (assoc 2 (entget e)))) (cadddr p))"), "(\"In\" \"Out\")");
    EXPECT_EQ(eval("(caddr (nentselp '(118 0)))"),
              "((0.0 -2.0 0.0 120.0) (2.0 0.0 0.0 0.0) (0.0 0.0 2.0 0.0) (0.0 0.0 0.0 1.0))");
    EXPECT_EQ(eval("(cdr (assoc 2 (entget (car (setq p (nentselp '(131 1)))))))"), "\"NO\"");
    EXPECT_EQ(eval("(length p)"), "2");
    EXPECT_EQ(eval("(nentselp '(500 500))"), "nil");
    session.feed("(setq p (entsel))");
    session.feed("120,14");
    EXPECT_EQ(eval("(eq (car p) (entlast))"), "T");
}

TEST_F(CadTest, ListsEveryKind) {
    // Kinds that no list makes are listed all the same.
    for (int i = 0; i < engine::kEntityTypeCount; ++i) {
        auto made = engine::makeEntity(static_cast<engine::EntityType>(i));
        const std::string name = groupTypeName(*made);
        session.document().addEntity(std::move(made));
        EXPECT_EQ(eval("(cdr (assoc 0 (entget (entlast))))"), "\"" + name + "\"");
        EXPECT_NE(eval("(assoc 8 (entget (entlast)))"), "nil") << name;
    }
}

TEST_F(CadTest, WalksAttributesAndVertices) {
    eval(
        "(entmake '((0 . \"BLOCK\") (2 . \"Tag\") (10 0 0)))"
        "(entmake '((0 . \"ATTDEF\") (10 0 0) (40 . 1) (1 . \"\") (2 . \"NO\") (3 . \"\")))"
        "(entmake '((0 . \"ENDBLK\")))");
    EXPECT_NE(eval("(entmake '((0 . \"INSERT\") (66 . 1) (2 . \"Tag\") (10 5 5)))"), "nil");
    EXPECT_EQ(count(), 0u) << "an insert with attributes is whole with its SEQEND";
    eval(
        "(entmake '((0 . \"ATTRIB\") (10 5 5) (40 . 1.0) (1 . \"7\") (2 . \"NO\")))"
        "(entmake '((0 . \"ATTRIB\") (10 5 7) (40 . 1.0) (1 . \"x\") (2 . \"KIND\")))"
        "(entmake '((0 . \"SEQEND\")))");
    ASSERT_EQ(count(), 1u);
    const std::string walk =
        "(progn (setq out nil e (entnext)) (while e (setq out (cons (cdr (assoc 0 (entget e))) out) e (entnext e)))"
        " (reverse out))";
    EXPECT_EQ(eval(walk), "(\"INSERT\" \"ATTRIB\" \"ATTRIB\" \"SEQEND\")");
    eval("(setq a (entget (entnext (entlast))))");
    EXPECT_EQ(eval("(list (cdr (assoc 2 a)) (cdr (assoc 1 a)) (eq (cdr (assoc 330 a)) (entlast)))"),
              "(\"NO\" \"7\" T)");
    eval("(entmod (subst '(1 . \"8\") (assoc 1 a) a))");
    EXPECT_EQ(last<engine::BlockReferenceEntity>().findAttribute("no")->value, "8");
    session.document().undo();
    EXPECT_EQ(last<engine::BlockReferenceEntity>().findAttribute("no")->value, "7");

    eval(
        "(entmake '((0 . \"POLYLINE\") (70 . 8) (10 0 0 0)))"
        "(foreach p '((0 0 0) (1 0 1) (1 1 2)) (entmake (list '(0 . \"VERTEX\") (cons 10 p) '(70 . 32))))"
        "(entmake '((0 . \"SEQEND\")))");
    EXPECT_EQ(last<engine::Polyline3DEntity>().vertices.size(), 3u);
    EXPECT_EQ(eval("(cdr (assoc 10 (entget (entnext (entnext (entlast))))))"), "(1.0 0.0 1.0)");
    eval(
        "(entmake '((0 . \"POLYLINE\") (70 . 1)))(entmake '((0 . \"VERTEX\") (10 0 0) (42 . 1.0)))"
        "(entmake '((0 . \"VERTEX\") (10 2 0)))(entmake '((0 . \"SEQEND\")))");
    EXPECT_EQ(last<engine::PolylineEntity>().bulge(0), 1.0);
    EXPECT_TRUE(last<engine::PolylineEntity>().closed);
}

TEST_F(CadTest, ExtendedData) {
    eval("(regapp \"MINE\")");
    eval(
        "(entmake '((0 . \"POINT\") (10 1 1) (-3 (\"MINE\" (1000 . \"text\") (1040 . 2.5) (1070 . 3) (1010 1 2 3)) "
        "(\"OTHER\" (1000 . \"o\")))))");
    EXPECT_EQ(eval("(assoc -3 (entget (entlast)))"), "nil");
    EXPECT_EQ(eval("(assoc -3 (entget (entlast) '(\"M*\")))"),
              "(-3 (\"MINE\" (1000 . \"text\") (1040 . 2.5) (1070 . 3) (1010 1.0 2.0 3.0)))");
    eval("(entmod (list (assoc -1 (entget (entlast))) '(-3 (\"MINE\"))))");
    EXPECT_EQ(eval("(mapcar 'car (cdr (assoc -3 (entget (entlast) '(\"*\")))))"), "(\"OTHER\")");
    EXPECT_EQ(eval("(sslength (ssget \"X\" '((-3 (\"OTHER\")))))"), "1");
}

TEST_F(CadTest, SelectsByModeAndFilter) {
    eval(
        "(setq i 0) (repeat 10 (entmake (list '(0 . \"CIRCLE\") (cons 8 (if (< i 5) \"A\" \"B\")) (list 10 (* 10 i) 0)"
        " (cons 40 (1+ i)) (cons 62 (1+ (rem i 2))))) (setq i (1+ i)))");
    eval("(entmake '((0 . \"LINE\") (8 . \"A\") (10 0 50) (11 10 50)))");
    const auto number = [&](const std::string& arguments) {
        return eval("(if (setq s (ssget " + arguments + ")) (sslength s) 0)");
    };
    EXPECT_EQ(number("\"X\""), "11");
    EXPECT_EQ(number("\"_X\" '((0 . \"CIR*\") (8 . \"a\"))"), "5");
    EXPECT_EQ(number("\"X\" '((-4 . \">=\") (40 . 4.0) (-4 . \"<=\") (40 . 6.0))"), "3");
    EXPECT_EQ(number("\"X\" '((-4 . \"<OR\") (0 . \"LINE\") (-4 . \"<AND\") (8 . \"B\") (62 . 1) (-4 . \"AND>\") (-4 . "
                     "\"OR>\"))"),
              "3");
    EXPECT_EQ(number("\"X\" '((-4 . \"<NOT\") (0 . \"LINE\") (-4 . \"NOT>\"))"), "10");
    EXPECT_EQ(number("\"X\" '((-4 . \">,*,*\") (10 45 0 0))"), "5");
    EXPECT_EQ(number("\"W\" '(-2 -2) '(13 3)"), "2");
    EXPECT_EQ(number("\"C\" '(-2 -2) '(17 3)"), "3");
    EXPECT_EQ(number("\"F\" '((0 -5) (0 60))"), "2");
    EXPECT_EQ(number("\"L\""), "1");
    EXPECT_EQ(number("'(5 50)"), "1");
    EXPECT_EQ(number("\"X\" '((0 . \"NOTHING\"))"), "0");
    EXPECT_EQ(eval("(ssget \"X\" '((-4 . \"<OR\") (0 . \"LINE\")))"), "; error: SSGET: bad filter list");
    eval("(setq s (ssadd) e (entlast)) (ssadd e s) (ssadd e s)");
    EXPECT_EQ(eval("(list (sslength s) (ssmemb e s) (sslength (ssdel e s)) (ssname s 0))"),
              "(1 " + eval("e") + " 0 nil)");

    // Asked for, with the dialogue of all commands; the filter holds there too.
    session.feed("(setq s (ssget '((0 . \"CIRCLE\"))))");
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(session.currentPrompt(), "Select objects:");
    session.feed("W");
    session.feed("-2,-2");
    session.feed("13,60");
    EXPECT_THAT(lines({""}), ElementsAre("<Selection set: 2>"));
    EXPECT_TRUE(session.document().selection().empty());
    EXPECT_EQ(number("\"P\""), "2");
}

TEST_F(CadTest, CrossingWindowsStretch) {
    eval("(entmake '((0 . \"LINE\") (10 0 0 0) (11 10 0 0)))");
    eval("(setq s (ssget \"C\" '(8 -1) '(12 1)))");
    eval("(command \"STRETCH\" s \"\" \"0,0\" \"3,4\")");
    EXPECT_EQ(eval("(setq l (entget (entlast)) p (list (cdr (assoc 10 l)) (cdr (assoc 11 l))))"),
              "((0.0 0.0 0.0) (13.0 4.0 0.0))");
    eval("(ssget \"CP\" '((12 3) (14 3) (14 5) (12 5)))");
    eval("(command \"STRETCH\" \"P\" \"\" \"0,0\" \"0,-4\")");
    EXPECT_EQ(eval("(cdr (assoc 11 (entget (entlast))))"), "(13.0 0.0 0.0)");
    // Without a window it moves whole.
    eval("(command \"STRETCH\" (ssget \"X\") \"\" \"0,0\" \"0,1\")");
    EXPECT_EQ(eval("(cdr (assoc 10 (entget (entlast))))"), "(0.0 1.0 0.0)");
}

/// A walk meets what was added behind it, and steps over what went.
TEST_F(CadTest, TableWalksFollowChanges) {
    for (const char* name : {"A", "B", "C", "D"}) drawing().layers.ensure(name);
    const auto next = [&] { return eval("(cdr (assoc 2 (tblnext \"LAYER\")))"); };
    EXPECT_EQ(eval("(cdr (assoc 2 (tblnext \"LAYER\" T)))"), "\"0\"");
    EXPECT_EQ(next(), "\"Defpoints\"");
    drawing().layers.erase("Defpoints");
    drawing().layers.erase("A");
    EXPECT_EQ(next(), "\"B\"");
    drawing().layers.ensure("E");
    EXPECT_EQ(next(), "\"C\"");
    EXPECT_EQ(next(), "\"D\"");
    EXPECT_EQ(next(), "\"E\"");
    EXPECT_EQ(next(), "nil");
    drawing().layers.ensure("F");
    EXPECT_EQ(next(), "\"F\"");
    EXPECT_EQ(next(), "nil");
    EXPECT_NE(eval("(tblsearch \"LAYER\" \"c\" T)"), "nil");
    EXPECT_EQ(next(), "\"D\"");
    EXPECT_EQ(eval("(cdr (assoc 2 (tblnext \"LAYER\" T)))"), "\"0\"");
}

TEST_F(CadTest, Tables) {
    eval("(entmake '((0 . \"LAYER\") (2 . \"Steel\") (70 . 4) (62 . 3)))");
    EXPECT_EQ(eval("(tblsearch \"LAYER\" \"STEEL\")"),
              "((0 . \"LAYER\") (2 . \"Steel\") (70 . 4) (62 . 3) (6 . \"Continuous\") (290 . 1) (370 . -3))");
    EXPECT_EQ(eval("(tblsearch \"LAYER\" \"Nope\")"), "nil");
    EXPECT_EQ(eval("(progn (setq n 0 r (tblnext \"layer\" T)) (while r (setq n (1+ n) r (tblnext \"LAYER\"))) n)"),
              std::to_string(drawing().layers.size()));
    for (const char* table : {"LTYPE", "STYLE", "DIMSTYLE"})
        EXPECT_EQ(eval("(cdr (assoc 0 (tblnext \"" + std::string(table) + "\" T)))"), "\"" + std::string(table) + "\"");
    EXPECT_EQ(eval("(tblsearch \"FROB\" \"x\")"), "; error: TBLSEARCH: expected a table name, got \"FROB\"");
    drawing().objectDictionary.push_back(
        {"MINE", "DICTIONARY", 0, {}, {{"REC", "XRECORD", 0, {"1", "text", "40", "2.5"}, {}}}});
    EXPECT_EQ(eval("(cddr (dictsearch (cdr (assoc 350 (entget (namedobjdict)))) \"rec\"))"),
              "((1 . \"text\") (40 . 2.5))");
}

TEST_F(CadTest, RecordsAreMadeAndChanged) {
    eval(
        "(entmake '((0 . \"LAYER\") (2 . \"Steel\") (70 . 0) (62 . 3)))(setq e (tblobjname \"LAYER\" \"Steel\") l "
        "(entget e))");
    EXPECT_NE(eval("(entmod (subst '(62 . -5) (assoc 62 l) (subst '(70 . 4) (assoc 70 l) l)))"), "nil");
    const engine::Layer* layer = drawing().layers.find("Steel");
    EXPECT_TRUE(!layer->on && layer->locked && layer->color.bareIndex() == 5);
    EXPECT_EQ(session.document().history().undoLabel(), "LISP entmod");
    session.document().undo();
    EXPECT_TRUE(drawing().layers.find("Steel")->on);
    EXPECT_EQ(eval("(entmod (subst '(6 . \"NoLinetype\") (assoc 6 l) l))"), "nil");
    eval(
        "(entmake '((0 . \"LINE\") (8 . \"Steel\") (10 0 0) (11 1 1)))(entmod (subst '(2 . \"Iron\") '(2 . \"Steel\") "
        "l))");
    EXPECT_EQ(last<engine::LineEntity>().layer, "Iron");
    EXPECT_EQ(eval("(entmod (subst '(2 . \"0\") '(2 . \"Steel\") l))"), "nil") << "the old name is gone";
    EXPECT_NE(eval("(entmake '((0 . \"LTYPE\") (2 . \"Dots\") (70 . 0) (3 . \". .\") (49 . 0.0) (49 . -2.0)))"), "nil");
    EXPECT_EQ(drawing().linetypes.find("Dots")->pattern, (std::vector<double>{0.0, -2.0}));
    EXPECT_NE(eval("(entmake '((0 . \"DIMSTYLE\") (2 . \"Big\") (70 . 0) (140 . 7.5)))"), "nil");
    EXPECT_EQ(drawing().dimStyles.find("Big")->textHeight, 7.5);
    eval("(setq d (entget (tblobjname \"DIMSTYLE\" \"Big\")))");
    EXPECT_NE(eval("(entmod (subst '(140 . 9.0) (assoc 140 d) d))"), "nil");
    EXPECT_EQ(drawing().dimStyles.find("Big")->textHeight, 9.0);
    eval("(setq s (entget (tblobjname \"STYLE\" \"Standard\")))(entmod (subst '(41 . 0.8) (assoc 41 s) s))");
    EXPECT_EQ(drawing().textStyles.find("Standard")->widthFactor, 0.8);
}

TEST_F(CadTest, SystemVariables) {
    EXPECT_EQ(eval("(list (getvar \"CLAYER\") (getvar 'luprec) (getvar \"NOSUCH\"))"),
              "(\"0\" " + std::to_string(engine::sysVarInt(drawing(), "LUPREC")) + " nil)");
    eval("(entmake '((0 . \"LAYER\") (2 . \"Steel\") (70 . 0) (62 . 3)))");
    EXPECT_EQ(eval("(setvar \"CLAYER\" \"Steel\")"), "\"Steel\"");
    EXPECT_EQ(drawing().currentLayer, "Steel");
    eval("(setvar \"LASTPOINT\" '(1 2 0))");
    EXPECT_EQ(eval("(getvar \"LASTPOINT\")"), "(1.0 2.0 0.0)");
    EXPECT_EQ(eval("(setvar \"CLAYER\" \"None\")"), "; error: SETVAR: there is no layer None");
    EXPECT_EQ(eval("(setvar \"NOSUCH\" 1)"), "; error: SETVAR: unknown variable NOSUCH");
    EXPECT_THAT(eval("(setvar \"LUPREC\" 99)"), HasSubstr("; error: SETVAR: "));
}

TEST_F(CadTest, CommandsRunNested) {
    EXPECT_THAT(session.feed("(command \"LINE\" '(0 0) (list 10.5 (/ 1.0 3)) \"\")"),
                ElementsAre("Command: (command \"LINE\" '(0 0) (list 10.5 (/ 1.0 3)) \"\")", "Command: LINE",
                            "Specify first point: 0,0", "Specify next point or [Close/Undo]: 10.5,0.3333333333333333",
                            "Specify next point or [Close/Undo]: ", "nil"));
    EXPECT_EQ(last<engine::LineEntity>().end.y, 1.0 / 3.0);
    EXPECT_THAT(lines({"(command \"FROB\")"}), ElementsAre("Command: FROB", "; Unknown command: FROB", "nil"));
    session.feed("(setvar \"CMDECHO\" 0)");
    EXPECT_THAT(lines({"(command \"LINE\" \"1,1\" \"2,2\")"}), ElementsAre("nil"));
    EXPECT_TRUE(session.isWaiting()) << "a command that was not ended goes on";
    EXPECT_THAT(lines({"(command)"}), ElementsAre()) << "the whole line is LINE's";
    session.feed("");
    // Entity names and sets are picks.
    eval("(setq before (ssget \"X\"))");
    eval("(command \"ERASE\" (entlast) \"\")");
    EXPECT_EQ(count(), 1u);
    eval("(command \"ERASE\" before \"\")");
    EXPECT_EQ(count(), 0u);
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(eval("(progn (command \"LINE\" '(0 0)) (command))"), "nil");
    EXPECT_FALSE(session.isWaiting());
    // A failure takes the command that it left with it.
    eval("(progn (command \"LINE\" '(0 0)) (/ 1 0))");
    EXPECT_FALSE(session.isWaiting());
}

TEST_F(CadTest, PauseWaitsForALine) {
    session.feed("(setvar \"CMDECHO\" 0)");
    session.feed("(progn (command \"LINE\" '(0 0) PAUSE \"5,5\" \"\") (setq done T))");
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(session.currentPrompt(), "Specify next point or [Close/Undo]:");
    EXPECT_THAT(session.feed("3,1"), ElementsAre("Specify next point or [Close/Undo]: 3,1", "T"));
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(count(), 2u);
    EXPECT_EQ(last<engine::LineEntity>().start, math::Vector2(3, 1));
    // Cancelled in the middle, it runs no further.
    session.feed("(progn (setq done nil) (command \"LINE\" '(0 0) PAUSE \"\") (setq done T))");
    session.cancel();
    EXPECT_FALSE(session.isWaiting());
    EXPECT_THAT(session.takeOutput(), ElementsAre("*Cancel*", "; error: Function cancelled"));
    EXPECT_EQ(eval("done"), "nil");
}

TEST_F(CadTest, AsksAndGoesOn) {
    EXPECT_THAT(session.feed("(setq r (* 2 (getreal)))"), ElementsAre("Command: (setq r (* 2 (getreal)))"));
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(session.currentPrompt(), "Enter real:");
    EXPECT_THAT(session.feed("abc"), ElementsAre("Enter real: abc", "Invalid value."));
    EXPECT_THAT(session.feed("2.5"), ElementsAre("Enter real: 2.5", "5.0"));
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"(getint)", "Enter integer:", "7", "7"},
        {"(getint)", "Enter integer:", "", "nil"},
        {"(getstring)", "Enter string:", "two words", "\"two words\""},
        {"(getpoint)", "Pick point:", "3,4", "(3.0 4.0 0.0)"},
        {"(getpoint '(1 1))", "Pick point:", "@2,0", "(3.0 1.0 0.0)"},
        {"(getpoint \"\\nWhere? \")", "Where?", "3,4,5", "(3.0 4.0 5.0)"},
        {"(getangle)", "Enter angle:", "90", "1.5708"},
        {"(getdist)", "Enter distance:", "12.5", "12.5"},
        {"(getdist '(0 0) \"How far: \")", "How far:", "3,4", "5.0"},
        {"(getcorner '(0 0))", "Pick corner:", "3,4", "(3.0 4.0 0.0)"},
        {"(progn (initget \"Yes No eXit\") (getkword))", "Enter keyword:", "x", "\"eXit\""},
        {"(progn (initget \"Yes No eXit\") (getkword))", "Enter keyword:", "ye", "\"Yes\""},
        {"(progn (initget \"Layer LType\") (getkword))", "Enter keyword:", "LT", "\"LType\""},
        {"(progn (initget 1 \"All\") (getpoint))", "Pick point:", "a", "\"All\""},
        {"(progn (initget 128) (getpoint))", "Pick point:", "anything", "\"anything\""},
        {"(mapcar '(lambda (q) (getint q)) '(\"One:\"))", "One:", "4", "(4)"},
    };
    for (const auto& [text, prompt, answer, value] : cases) {
        session.feed(text);
        EXPECT_EQ(session.currentPrompt(), prompt) << text;
        EXPECT_THAT(lines({answer}), ElementsAre(value)) << text;
        EXPECT_FALSE(session.isWaiting()) << text;
    }
    // INITGET's rules hold for one question.
    session.feed("(progn (initget 7) (list (getint) (getint)))");
    EXPECT_THAT(lines({"", "0", "-1"}),
                ElementsAre("Invalid input.", "Value must not be zero.", "Value must not be negative."));
    session.feed("5");
    EXPECT_THAT(lines({"-1"}), ElementsAre("(5 -1)"));
    // Two points make a distance.
    session.feed("(getdist)");
    session.feed("1,1");
    EXPECT_EQ(session.currentPrompt(), "Specify second point:");
    EXPECT_THAT(lines({"4,5"}), ElementsAre("5.0"));
    EXPECT_THAT(lines({"(vl-catch-all-error-message (vl-catch-all-apply 'getfiled '(\"t\" \"\" \"\" 0)))"}),
                Contains(HasSubstr("needs its dialog")));
}

TEST_F(CadTest, ObjectSnaps) {
    session.feed("LINE 0,0 100,0 100,40");
    session.feed("");
    session.takeOutput();
    EXPECT_EQ(eval("(osnap '(2 0) \"_end\")"), "(0.0 0.0 0.0)");
    EXPECT_EQ(eval("(osnap '(2 0 0) \"mid,int\")"), "(50.0 0.0 0.0)");
    EXPECT_EQ(eval("(osnap '(50 30) \"end\")"), "nil");
    EXPECT_EQ(eval("(osnap '(2 0) \"what\")"), "nil");
    session.feed("(getpoint)");
    EXPECT_THAT(lines({"END 99,1"}), ElementsAre("(100.0 0.0 0.0)"));
    session.feed("(getdist '(0 0))");
    session.feed("MID");
    EXPECT_EQ(session.currentPrompt(), "of");
    EXPECT_THAT(lines({"50,30"}), ElementsAre("No midpoint found for specified point."));
    EXPECT_EQ(session.currentPrompt(), "Enter distance:");
    EXPECT_THAT(lines({"MID of 30,0"}), ElementsAre("50.0"));
}

TEST_F(CadTest, CancelRunsTheErrorFunction) {
    session.feed(
        "(defun c:ask (/ *error* p) (defun *error* (m) (setq why m) (princ \"tidied up\") (princ)) (setq p "
        "(getpoint)))");
    session.feed("ask");
    EXPECT_TRUE(session.isWaiting());
    session.cancel();
    EXPECT_THAT(session.takeOutput(), ElementsAre("*Cancel*", "tidied up"));
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(eval("why"), "\"Function cancelled\"");
    session.cancel();
    EXPECT_THAT(session.takeOutput(), IsEmpty());
    // A new drawing ends what waits.
    session.feed("ask");
    session.newDrawing();
    EXPECT_FALSE(session.isWaiting());
}

TEST_F(CadTest, DefinedCommandsRunByName) {
    session.feed(
        "(defun c:twice () (entmake '((0 . \"POINT\") (10 1 1))) (entmake '((0 . \"POINT\") (10 2 2))) (princ))");
    EXPECT_THAT(session.feed("Twice"), ElementsAre("Command: Twice"));
    EXPECT_EQ(count(), 2u);
    EXPECT_THAT(session.feed("thrice"), ElementsAre("Command: thrice", "Unknown command: thrice"));
    session.feed("(setq c:v 5)");
    EXPECT_THAT(session.feed("v5"), Contains("Unknown command: v5"));
    std::ofstream(path("a.scr")) << "twice\n(setq from-script (getint))\n42\n";
    session.feed("SCRIPT \"" + path("a.scr") + "\"");
    EXPECT_EQ(count(), 4u);
    EXPECT_EQ(eval("from-script"), "42");
}

TEST_F(CadTest, LoadsAndReloadsFiles) {
    std::ofstream(path("one.lsp")) << "\xEF\xBB\xBF; a comment\n(setq version 1)\n(defun c:hello () \"hello\")\n";
    EXPECT_EQ(eval("(load \"" + path("one") + "\")"), "C:HELLO");
    EXPECT_THAT(lines({"hello"}), ElementsAre("\"hello\""));
    std::ofstream(path("one.lsp")) << "(setq version 2)\n(setq after (/ 1 0))";
    EXPECT_THAT(lines({"LISPRELOAD"}),
                ElementsAre("Could not load " + path("one.lsp") + ": /: divide by zero", "0 LISP files reloaded."));
    EXPECT_EQ(eval("version"), "2");
    EXPECT_EQ(eval("(load \"" + path("none") + "\")"), "; error: LOAD: cannot read " + path("none"));
    EXPECT_EQ(eval("(load \"" + path("none") + "\" 'missing)"), "MISSING");
    std::ofstream(path("bad.lsp")) << "(setq early 1)\n(list 1";
    EXPECT_EQ(eval("(load \"" + path("bad") + "\")"), "; error: Parser error: expected ')'");
    EXPECT_EQ(eval("early"), "1") << "what stands before the mistake has been evaluated";
    EXPECT_EQ(eval("(progn (setq f (open \"" + path("t.txt") +
                   "\" \"w\")) (write-line \"one\" f) (princ \"two\" f) (close f)"
                   " (setq f (open \"" +
                   path("t.txt") + "\" \"r\") l (list (read-line f) (read-line f) (read-line f))) (close f) l)"),
              "(\"one\" \"two\" nil)");
    EXPECT_EQ(eval("(write-line \"x\" f)"), "; error: WRITE-LINE: the file is closed");
}

TEST_F(CadTest, StartUpFile) {
    std::ofstream(path("start.lsp")) << "(setq started 1) (defun s::startup () (setq started 2))";
    ASSERT_EQ(::setenv("KOVACAD_LISP", path("start.lsp").c_str(), 1), 0);
    headless::Session other;
    ::unsetenv("KOVACAD_LISP");
    EXPECT_THAT(other.feed("started"), Contains("Unknown command: started"));
    EXPECT_THAT(other.feed("(list started)"), Contains("(2)"));
}

// The programs of the examples folder ------------------------------------------------------------------------------

struct ExamplesTest : CadTest {
    void load(const std::string& name) {
        const std::string result = eval("(load \"" KOVA_SOURCE_DIR "/examples/" + name + "\")");
        ASSERT_FALSE(result.starts_with("; error")) << result;
    }
};

TEST_F(ExamplesTest, Bolt) {
    load("bolt");
    session.feed("bolt");
    session.feed("100,100");
    session.feed("16");
    EXPECT_THAT(session.feed("60"), ElementsAre("Length: 60", "M16 x 60"));
    EXPECT_EQ(eval("(sslength (ssget \"X\" '((0 . \"LWPOLYLINE\") (8 . \"Bolt\"))))"), "3");
    const math::Bounds2 box = drawing().extents(drawing().modelSpace());
    EXPECT_NEAR(box.max.x, 163.0, 1e-9);
    EXPECT_EQ(count(), 8u);
}

TEST_F(ExamplesTest, Numbering) {
    load("numbering");
    eval(
        "(foreach x '(30 10 20) (entmake (list '(0 . \"CIRCLE\") (list 10 x 0) '(40 . 2.0))))"
        "(entmake '((0 . \"LINE\") (10 0 0) (11 5 0)))");
    session.feed("numbering");
    session.feed("ALL");
    session.feed("");
    EXPECT_THAT(lines({"5"}), ElementsAre("3 circles numbered."));
    EXPECT_EQ(last<engine::TextEntity>().content, "7");
    EXPECT_GT(last<engine::TextEntity>().position.x, 30.0);
}

TEST_F(ExamplesTest, LayerReport) {
    load("layer-report");
    eval(
        "(entmake '((0 . \"LAYER\") (2 . \"Steel\") (70 . 4) (62 . 3)))(entmake '((0 . \"POINT\") (8 . \"Steel\") (10 "
        "0 0)))");
    EXPECT_THAT(eval("(layer-report \"" + path("layers.txt") + "\")"), HasSubstr(" layers written to "));
    std::ifstream in(path("layers.txt"));
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    EXPECT_THAT(text, HasSubstr("Steel               3       Continuous    locked    1\n"));
}

TEST_F(ExamplesTest, Stairs) {
    load("stairs");
    session.feed("stairs");
    session.feed("0,0");
    EXPECT_THAT(lines({"@2900,1750"}), Contains("10 steps, rise 175, run 290, rule 640"));
    ASSERT_EQ(count(), 1u);
    EXPECT_EQ(last<engine::PolylineEntity>().vertices.size(), 21u);
    // Its *ERROR* puts the setting back and speaks for the error.
    session.feed("stairs");
    session.feed("0,0");
    EXPECT_THAT(lines({"0,-5"}), ElementsAre("The head must lie above the foot.", "Stairs: quit / exit abort"));
    EXPECT_EQ(eval("(getvar \"CMDECHO\")"), "1");
}

TEST_F(ExamplesTest, Renumber) {
    load("renumber");
    eval(
        "(entmake '((0 . \"BLOCK\") (2 . \"Door\") (10 0 0)))"
        "(entmake '((0 . \"ATTDEF\") (10 0 0) (40 . 1) (1 . \"\") (2 . \"NO\") (3 . \"\")))(entmake '((0 . "
        "\"ENDBLK\")))"
        "(foreach x '(30 10 20) (entmake (list '(0 . \"INSERT\") '(66 . 1) '(2 . \"Door\") (list 10 x 0)))"
        " (entmake (list '(0 . \"ATTRIB\") (list 10 x 0) '(40 . 1.0) '(1 . \"?\") '(2 . \"NO\"))) (entmake '((0 . "
        "\"SEQEND\"))))");
    EXPECT_EQ(eval("(renumber \"Door\" \"no\" 101)"), "3");
    std::vector<std::string> values;
    for (engine::Entity& e : drawing().modelSpace())
        values.push_back(dynamic_cast<engine::BlockReferenceEntity&>(e).findAttribute("NO")->value);
    EXPECT_THAT(values, ElementsAre("103", "101", "102"));
}

}  // namespace
}  // namespace kova::script::lisp
