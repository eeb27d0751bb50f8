// The CAD LISP drawing functions: building a drawing from group codes and reading it back.
#include "OvcoreTest.h"

#include <QDir>
#include <QTemporaryDir>

namespace {

class CadDrawing : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        m_document = newDocument();
    }
    OvDbDatabase* db() const { return m_document->database(); }

    // Values of an entity's groups, e.g. groups("ln", "0 8") gives ("LINE" "0").
    QString groups(const char* entity, const char* codes) {
        return eval(QStringLiteral("(mapcar (lambda (c) (cdr (assoc c (entget %1)))) '(%2))")
                        .arg(entity, codes));
    }

    OvApDocument* m_document = nullptr;

    // Enough to tell whether a refused request changed anything.
    struct Snapshot {
        std::uint64_t handseed;
        int dbmod;
    };
    Snapshot snapshot() const { return {db()->handseed().value(), db()->dbmod()}; }
    void expectUnchanged(const Snapshot& before) const {
        EXPECT_EQ(db()->handseed().value(), before.handseed);
        EXPECT_EQ(db()->dbmod(), before.dbmod);
    }
};

TEST_F(CadDrawing, LayersAndLinesReadBackAsTheyWereMadeAndInTableOrder) {
    eval("(setvar \"DBMOD\" 0)");
    EXPECT_EQ(eval("(entmake '((0 . \"LAYER\") (2 . \"RED_1.5\") (62 . 1) (6 . \"DASHED\") "
                   "(370 . 50)))"),
              "((0 . \"LAYER\") (2 . \"RED_1.5\") (62 . 1) (6 . \"DASHED\") (370 . 50))");
    // A negative colour makes the layer off.
    eval("(entmake '((0 . \"LAYER\") (2 . \"HIDDEN\") (62 . -3) (70 . 4)))");
    EXPECT_EQ(eval("(tblsearch \"layer\" \"red_1.5\")"),
              "((0 . \"LAYER\") (2 . \"RED_1.5\") (70 . 0) (62 . 1) (6 . \"DASHED\") (370 . 50))");
    EXPECT_EQ(eval("(cdr (assoc 62 (tblsearch \"LAYER\" \"HIDDEN\")))"), "-3");

    // Integers in a point are taken as CAD LISP scripts write them; an unknown layer is made.
    eval("(setq ln (entmakex '((0 . \"LINE\") (8 . \"WIRES\") (10 0 0 0) (11 10.5 2.0) "
         "(62 . 5))))");
    EXPECT_EQ(eval("(equal (entlast) ln)"), "T");
    const QString data = eval("(cdr (entget ln))");
    for (const char* group :
         {"(0 . \"LINE\")", "(8 . \"WIRES\")", "(62 . 5)", "(10 0.0 0.0 0.0) (11 10.5 2.0 0.0)"})
        EXPECT_TRUE(data.contains(group)) << data.toStdString();
    // A line on the current layer, by layer, carries no colour group.
    eval("(entmake '((0 . \"LINE\") (10 1.0 1.0 0.0) (11 2.0 2.0 0.0)))");
    EXPECT_EQ(eval("(cdr (assoc 8 (entget (entlast))))"), "\"0\"");
    EXPECT_EQ(eval("(assoc 62 (entget (entlast)))"), "nil");
    EXPECT_NE(eval("(getvar \"DBMOD\")"), "0");

    // layer-list and the walks follow the tables. tblsearch with its third argument sets where
    // the walk goes on; past the end the walk gives nil until T starts it again.
    EXPECT_EQ(eval("(layer-list)"), "(\"0\" \"RED_1.5\" \"HIDDEN\" \"WIRES\")");
    eval("(tblsearch \"LAYER\" \"HIDDEN\" T)");
    EXPECT_EQ(eval("(cdr (assoc 2 (tblnext \"LAYER\")))"), "\"WIRES\"");
    EXPECT_EQ(eval("(tblnext \"LAYER\")"), "nil");
    EXPECT_EQ(eval("(cdr (assoc 2 (tblnext \"LAYER\" T)))"), "\"0\"");
    // Each table keeps its own place; the spaces are not blocks of the walk.
    EXPECT_EQ(eval("(cdr (assoc 2 (tblnext \"LTYPE\" T)))"), "\"ByBlock\"");
    EXPECT_EQ(eval("(tblnext \"BLOCK\" T)"), "nil");
    eval("(entmake '((0 . \"INSERT\") (2 . \"FRAME\") (10 0.0 0.0 0.0)))");
    EXPECT_EQ(eval("(cdr (assoc 2 (tblnext \"BLOCK\" T)))"), "\"FRAME\"");
    EXPECT_EQ(eval("(tblsearch \"BLOCK\" \"*Model_Space\")"), "nil");
    const QString dashed = eval("(tblsearch \"LTYPE\" \"DASHED\")");
    EXPECT_TRUE(dashed.contains("(73 . 2)") && dashed.contains("(49 . ")) << dashed.toStdString();
}

TEST_F(CadDrawing, InsertWithAttributesIsCollectedUntilSeqendAndErasedWithThem) {
    eval("(entmake '((0 . \"LINE\") (10 0.0 0.0 0.0) (11 1.0 0.0 0.0)))");
    eval("(setq before (entlast))");
    EXPECT_EQ(eval("(entmake '((0 . \"INSERT\") (2 . \"WD_M\") (8 . \"TITLE\") (66 . 1) "
                   "(10 5.0 6.0 0.0)))"),
              "((0 . \"INSERT\") (2 . \"WD_M\") (8 . \"TITLE\") (66 . 1) (10 5.0 6.0 0.0))");
    // Nothing is in the drawing before SEQEND.
    EXPECT_EQ(eval("(equal (entlast) before)"), "T");
    EXPECT_EQ(eval("(tblsearch \"BLOCK\" \"WD_M\")"), "nil");
    eval("(entmake '((0 . \"ATTRIB\") (2 . \"WIRELAYS\") (1 . \"RED*,BLU*\")))");
    eval("(entmake '((0 . \"ATTRIB\") (2 . \"DWGNO\") (1 . \"7\") (8 . \"TEXT\") "
         "(10 1.0 1.0 0.0)))");
    EXPECT_EQ(eval("(entmake '((0 . \"SEQEND\")))"), "((0 . \"SEQEND\"))");

    eval("(setq ins (entlast))");
    EXPECT_EQ(groups("ins", "0 66 2 10"), "(\"INSERT\" 1 \"WD_M\" (5.0 6.0 0.0))");
    // An unknown block name got a definition of its own.
    EXPECT_EQ(eval("(cdr (assoc 2 (tblsearch \"BLOCK\" \"wd_m\")))"), "\"WD_M\"");

    // The walk goes through the attributes and SEQEND, then on past the INSERT.
    eval("(setq e (entnext) seen nil)"
         "(while e (setq seen (cons (cdr (assoc 0 (entget e))) seen) e (entnext e)))");
    EXPECT_EQ(eval("(reverse seen)"), "(\"LINE\" \"INSERT\" \"ATTRIB\" \"ATTRIB\" \"SEQEND\")");
    // An attribute without a layer or point of its own takes the INSERT's.
    eval("(setq a1 (entnext ins) a2 (entnext a1))");
    EXPECT_EQ(groups("a1", "1 8 10"), "(\"RED*,BLU*\" \"TITLE\" (5.0 6.0 0.0))");
    EXPECT_EQ(groups("a2", "2 1 8 10"), "(\"DWGNO\" \"7\" \"TEXT\" (1.0 1.0 0.0))");
    eval("(setq se (entnext a2))");
    EXPECT_EQ(eval("(equal (cdr (assoc -2 (entget se))) ins)"), "T");

    // entdel erases the INSERT with its attributes; a second entdel brings them all back.
    EXPECT_EQ(eval("(equal (entdel ins) ins)"), "T");
    EXPECT_EQ(eval("(equal (entlast) before)"), "T");
    EXPECT_EQ(eval("(entnext before)"), "nil");
    EXPECT_TRUE(printed("(entget ins)").contains("is erased"));
    EXPECT_EQ(eval("(entget a1)"), "nil");
    eval("(entdel ins)");
    EXPECT_EQ(eval("(equal (entlast) ins)"), "T");
    EXPECT_EQ(groups("a1", "1"), "(\"RED*,BLU*\")");
    eval("(entdel before)");
    EXPECT_EQ(eval("(equal (entnext) ins)"), "T");
    expectRefused({{"(entdel a1)", "an ATTRIB goes with its INSERT"},
                   {"(entdel se)", "a SEQEND goes with its INSERT"},
                   {"(entdel (namedobjdict))", "is not an entity"}});
}

TEST_F(CadDrawing, XrecordInALayersExtensionDictionary) {
    eval("(entmake '((0 . \"LAYER\") (2 . \"RED\")))");
    eval("(setq xr (entmakex '((0 . \"XRECORD\") (1 . \"RED\") (2 . \"1.5\") (90 . 7) "
         "(290 . 1))))");
    EXPECT_EQ(groups("xr", "0 330"), "(\"XRECORD\" nil)") << "unowned until added somewhere";

    eval("(setq rec (entmakex '((0 . \"DICTIONARY\"))))");
    eval("(setq nod (namedobjdict))");
    EXPECT_EQ(eval("(equal (dictadd nod \"ZEL_WIRETYPE\" rec) rec)"), "T");
    EXPECT_EQ(eval("(cdr (assoc 0 (dictsearch nod \"zel_wiretype\")))"), "\"DICTIONARY\"");

    // The layer's extension dictionary, made on request.
    eval("(setq lay (tblobjname \"LAYER\" \"red\"))");
    EXPECT_EQ(eval("(orvex-xdictionary lay)"), "nil");
    eval("(setq xd (orvex-xdictionary lay T))");
    EXPECT_EQ(eval("(equal (orvex-xdictionary lay T) xd)"), "T");
    eval("(dictadd xd \"ZEL_WIRETYPE\" xr)");

    EXPECT_EQ(eval("(member '(90 . 7) (dictsearch xd \"ZEL_WIRETYPE\"))"), "((90 . 7) (290 . 1))");

    // entget's list of an xrecord makes the same data again through entmakex.
    eval("(setq copy (entmakex (entget xr)))");
    EXPECT_EQ(eval("(equal (member '(1 . \"RED\") (entget copy)) "
                   "(member '(1 . \"RED\") (entget xr)))"),
              "T");
    // entmod takes entget's list back, with the data after its marker.
    eval("(entmod (subst '(1 . \"BLUE\") '(1 . \"RED\") (entget copy)))");
    EXPECT_EQ(eval("(cdr (assoc 1 (entget copy)))"), "\"BLUE\"");

    // dictnext walks the entries, dictremove takes one out without erasing it.
    eval("(dictadd xd \"SECOND\" copy)");
    EXPECT_EQ(eval("(cdr (assoc 1 (dictnext xd T)))"), "\"RED\"");
    EXPECT_EQ(eval("(equal (cdr (assoc -1 (dictnext xd))) copy)"), "T");
    EXPECT_EQ(eval("(dictnext xd)"), "nil");
    EXPECT_EQ(eval("(equal (dictremove xd \"SECOND\") copy)"), "T");
    EXPECT_EQ(eval("(dictremove xd \"SECOND\")"), "nil");
    EXPECT_EQ(groups("copy", "0 330"), "(\"XRECORD\" nil)");

    // Saved and opened again, the record is back in its place; the copy, owned by nothing
    // since dictremove, does not stop the save.
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("built.dwg"));
    ASSERT_EQ(ovDocManagerPtr()->saveDocumentAs(m_document, path), Orvex::eOk)
        << ovDocManagerPtr()->lastErrorMessage().toStdString();
    ASSERT_EQ(ovDocManagerPtr()->closeDocument(m_document), Orvex::eOk);
    ASSERT_EQ(ovDocManagerPtr()->openDocument(path, &m_document), Orvex::eOk)
        << ovDocManagerPtr()->lastErrorMessage().toStdString();
    EXPECT_EQ(eval("(cdr (assoc 90 (dictsearch (orvex-xdictionary (tblobjname \"LAYER\" "
                   "\"RED\")) \"ZEL_WIRETYPE\")))"),
              "7");
    EXPECT_EQ(eval("(getvar \"DBMOD\")"), "0");
}

TEST_F(CadDrawing, SystemVariables) {
    eval("(entmake '((0 . \"LAYER\") (2 . \"WIRES\")))");
    EXPECT_EQ(eval("(setvar \"clayer\" \"wires\")"), "\"wires\"");
    EXPECT_EQ(eval("(getvar \"CLAYER\")"), "\"WIRES\"");
    eval("(entmake '((0 . \"LINE\") (10 0.0 0.0 0.0) (11 1.0 0.0 0.0)))");
    EXPECT_EQ(groups("(entlast)", "8"), "(\"WIRES\")");
    eval("(entmake '((0 . \"LAYER\") (2 . \"ICE\") (70 . 1)))");
    expectRefused({{"(setvar \"CLAYER\" \"ICE\")", "frozen"},
                   {"(setvar \"CLAYER\" \"NONE\")", "there is no layer \"NONE\""},
                   {"(setvar \"CLAYER\" 5)", "CLAYER takes a layer name"}});
    EXPECT_EQ(eval("(getvar \"CLAYER\")"), "\"WIRES\"");

    EXPECT_NE(eval("(getvar \"DBMOD\")"), "0");
    EXPECT_EQ(eval("(setvar \"DBMOD\" 0)"), "0");
    EXPECT_FALSE(db()->isModified());
    expectRefused("(setvar \"DBMOD\" 1)", "DBMOD can only be set to 0");

    EXPECT_EQ(eval("(getvar \"DWGNAME\")"), u'"' + m_document->docTitle() + u'"');
    EXPECT_EQ(eval("(getvar \"DWGPREFIX\")"), u'"' + QDir::currentPath() + "/\"");
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("plan.dwg"));
    ASSERT_EQ(ovDocManagerPtr()->saveDocumentAs(m_document, path), Orvex::eOk);
    EXPECT_EQ(eval("(getvar \"DWGNAME\")"), "\"plan.dwg\"");
    EXPECT_EQ(eval("(getvar \"dwgprefix\")"), u'"' + dir.path() + "/\"");
    expectRefused({{"(setvar \"DWGNAME\" \"x.dwg\")", "DWGNAME is read-only"},
                   {"(getvar \"NOSUCHVAR\")", "there is no system variable \"NOSUCHVAR\""}});
}

TEST_F(CadDrawing, BadDataNamesAndArgumentsAreRefusedAndChangeNothing) {
    const Snapshot before = snapshot();
    expectRefused({
        {"(entmake '((0 . \"LINE\") (10 0.0 0.0 0.0)))", "(11 x y z) is missing"},
        {"(entmake '((0 . \"LINE\") (8 . \"A<B\") (10 0 0 0) (11 1 1 1)))", "not a valid layer"},
        {"(entmake '((0 . \"LINE\") (62 . 300) (10 0 0 0) (11 1 1 1)))", "colour 300 is not"},
        {"(entmake '((0 . \"LINE\") (8 . 5) (10 0 0 0) (11 1 1 1)))", "(8 . 5) is not a group of"},
        {"(entmake '((0 . \"CIRCLE\") (10 0 0 0) (40 . 1.0)))", "\"CIRCLE\" is not one the host"},
        {"(entmake '((8 . \"0\")))", "(0 . type) is missing"},
        {"(entmake \"LINE\")", "a list of groups is needed"},
        {"(entmake '((0 . \"LAYER\") (2 . \"0\")))", "layer \"0\" exists already"},
        {"(entmake '((0 . \"LAYER\") (2 . \"X\") (6 . \"NOLINE\")))", "no linetype \"NOLINE\""},
        {"(entmake '((0 . \"LAYER\") (2 . \"X\") (370 . 33)))", "33 is not a lineweight"},
        {"(entmake '((0 . \"LAYER\") (2 . \"X\") (62 . 256)))", "a layer's colour is from 1"},
        {"(entmake '((0 . \"INSERT\") (2 . \"*Model_Space\") (10 0 0 0)))", "a space cannot be"},
        {"(entmake '((0 . \"ATTRIB\") (2 . \"T\") (1 . \"x\")))", "ATTRIB without an INSERT"},
        {"(entmake '((0 . \"SEQEND\")))", "SEQEND without an INSERT"},
        {"(entmake '((0 . \"XRECORD\")))", "a XRECORD is made with entmakex"},
        {"(entmakex '((0 . \"INSERT\") (2 . \"B\") (66 . 1) (10 0 0 0)))",
         "with attributes is made"},
    });

    // A collected INSERT is dropped by a bad ATTRIB, or by another entity.
    eval("(entmake '((0 . \"INSERT\") (2 . \"WD_M\") (66 . 1) (10 0.0 0.0 0.0)))");
    expectRefused("(entmake '((0 . \"ATTRIB\") (2 . \"TWO WORDS\") (1 . \"x\")))",
                  "the INSERT it belongs to is dropped");
    expectRefused("(entmake '((0 . \"SEQEND\")))", "SEQEND without an INSERT");
    eval("(entmake '((0 . \"INSERT\") (2 . \"WD_M\") (66 . 1) (10 0.0 0.0 0.0)))");
    eval("(entmake)");
    expectRefused("(entmake '((0 . \"SEQEND\")))", "SEQEND without an INSERT");
    expectUnchanged(before);

    eval("(entmake '((0 . \"INSERT\") (2 . \"WD_M\") (66 . 1) (10 0.0 0.0 0.0)))");
    const QString out = printed("(entmake '((0 . \"LINE\") (10 0 0 0) (11 1 1 1)))");
    EXPECT_TRUE(out.contains("the INSERT of block \"WD_M\" is dropped")) << out.toStdString();
    EXPECT_EQ(eval("(cdr (assoc 0 (entget (entlast))))"), "\"LINE\"");
    EXPECT_EQ(eval("(tblsearch \"BLOCK\" \"WD_M\")"), "nil");

    // Bad names and arguments answer nil and say why; that line serves as a good name.
    eval("(setq ln (entlast))");
    // A name of a drawing that is gone, and one of no object.
    eval("(setq ghost (make-entity-name 999999 42) stray (make-entity-name "
         "(entity-name-word0 ln) 999999))");
    for (const char* f : {"entget", "entdel", "entnext", "orvex-xdictionary", "dictnext"})
        expectRefused(QStringLiteral("(%1 ghost)").arg(f), "names no object of an open drawing");
    expectRefused({
        {"(entget stray)", "names no object of an open drawing"},
        {"(entget \"ln\")", "entget: bad argument type: \"ln\""},
        {"(tblsearch \"STYLE\" \"Standard\")", "there is no table \"STYLE\""},
        {"(dictsearch ln \"X\")", "is not a dictionary"},
        {"(dictadd (namedobjdict) \"L\" ln)", "is not a DICTIONARY or XRECORD"},
        {"(dictadd (namedobjdict) \"\" ln)", "an entry needs a name"},
    });
    // An object that has an owner stays where it is.
    eval("(setq d (entmakex '((0 . \"DICTIONARY\"))) x (entmakex '((0 . \"XRECORD\"))))");
    eval("(dictadd d \"X\" x)");
    expectRefused({{"(dictadd (namedobjdict) \"X\" x)", "has an owner already"},
                   {"(dictadd d \"X\" (entmakex '((0 . \"XRECORD\"))))", "has an entry \"X\""}});
    // Owners may not go round in a ring.
    eval("(setq inner (entmakex '((0 . \"DICTIONARY\"))))");
    eval("(dictadd d \"INNER\" inner)");
    expectRefused("(dictadd inner \"D\" d)", "holds the dictionary itself");

    // An INSERT collected in one drawing takes no ATTRIB made while another is current.
    eval("(entmake '((0 . \"INSERT\") (2 . \"WD_M\") (66 . 1) (10 0.0 0.0 0.0)))");
    OvApDocument* next = newDocument();
    ASSERT_EQ(OvDbHostApplicationServices::getRefPtr()->workingDatabase(), next->database());
    const QString other = printed("(entmake '((0 . \"ATTRIB\") (2 . \"T\") (1 . \"x\")))");
    EXPECT_TRUE(other.contains("another drawing is current") &&
                other.contains("ATTRIB without an INSERT"))
        << other.toStdString();
    EXPECT_EQ(eval("(entlast)"), "nil");
}

TEST_F(CadDrawing, ATextHoldingANulIsRefusedNotCutShort) {
    eval("(setq nul (string (integer->char 0)))");
    eval("(entmake '((0 . \"LAYER\") (2 . \"BU\")))");
    const Snapshot before = snapshot();
    const char* const nulText = "a text holding a NUL character";
    expectRefused({
        {"(entmake (list '(0 . \"LAYER\") (cons 2 (string-append \"BU\" nul \"x\"))))", nulText},
        {"(entmake (list '(0 . \"LINE\") (cons 8 (string-append \"BU\" nul)) '(10 0 0 0) "
         "'(11 1 1 1)))",
         nulText},
        {"(setvar (string-append \"CLAYER\" nul \"junk\") \"BU\")", "setvar: bad argument"},
        {"(setvar \"CLAYER\" (string-append \"BU\" nul))", nulText},
        {"(tblsearch \"LAYER\" (string-append \"BU\" nul \"junk\"))", nulText},
        {"(dictremove (namedobjdict) (string-append \"ZEL\" nul))", nulText},
    });
    expectUnchanged(before);
    EXPECT_EQ(eval("(getvar \"CLAYER\")"), "\"0\"");
}

} // namespace
