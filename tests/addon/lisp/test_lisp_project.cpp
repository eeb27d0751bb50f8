// The add-on's project, global value and variable functions, called through ovedInvoke as
// other modules call them, and GBL_wd_prj following the active project in every document.
#include "AddonTest.h"

#include "zelpm/ZelMDIGblManager.h"

namespace {

class LispProject : public AddonTest {
protected:
    void SetUp() override {
        AddonTest::SetUp();
        startHost();
    }
    void activate(OvApDocument* doc) {
        ASSERT_EQ(ovDocManagerPtr()->activateDocument(doc), Orvex::eOk);
    }
};

TEST_F(LispProject, OpenAndCloseThroughLispOrOutsideKeepEveryDocumentInStep) {
    OvApDocument* first = openWithAddon();
    OvApDocument* second = openWithAddon();
    const QString project = writeFile("test.zpj", R"({"format": "zel-project", "version": 1,
                      "drawings": ["a.dwg", "sub/b.dwg"], "settings": {"33": "Insulation,Size"}})");
    EXPECT_EQ(symbol(L"GBL_wd_prj"), "nil");

    EXPECT_EQ(call(L"zel_project_open", RTSTR, wide(project).c_str()), "T");
    EXPECT_EQ(call(L"zel_project_active"), quoted(project));
    EXPECT_EQ(call(L"zel_project_setting", RTSHORT, 33), R"("Insulation,Size")");
    EXPECT_EQ(call(L"zel_project_setting", RTSHORT, 34), "nil");
    EXPECT_EQ(call(L"zel_project_drawings"),
              QStringLiteral("(%1 %2)").arg(quoted(path("a.dwg")), quoted(path("sub/b.dwg"))));
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"GBL_wd_prj"), quoted(project));
    // Set in the document that asked and in the other one, which ran nothing.
    EXPECT_EQ(symbol(L"GBL_wd_prj"), quoted(project));
    activate(first);
    EXPECT_EQ(symbol(L"GBL_wd_prj"), quoted(project));

    EXPECT_EQ(call(L"zel_project_close"), "T");
    EXPECT_EQ(call(L"zel_project_active"), "nil");
    EXPECT_EQ(call(L"zel_project_setting", RTSHORT, 33), "nil");
    EXPECT_EQ(symbol(L"GBL_wd_prj"), "nil");
    activate(second);
    EXPECT_EQ(symbol(L"GBL_wd_prj"), "nil");

    // A file that is no project answers nil with the reason and leaves no project.
    ASSERT_TRUE(GetProjectManager()->openProject(project));
    EXPECT_EQ(call(L"zel_project_open", RTSTR, wide(writeFile("bad.zpj", "not json")).c_str()),
              "nil");
    EXPECT_TRUE(output().contains("zel_project_open: Cannot open the project"))
        << output().toStdString();
    EXPECT_EQ(symbol(L"GBL_wd_prj"), "nil");
    EXPECT_EQ(call(L"zel_project_active"), "nil");

    // A project opened outside LISP reaches a document opened afterwards from its
    // drawing-load message, and one that was open all along when it becomes current again.
    ASSERT_TRUE(GetProjectManager()->openProject(project));
    OvApDocument* third = openWithAddon();
    EXPECT_EQ(symbol(L"GBL_wd_prj"), quoted(project));
    activate(first);
    EXPECT_EQ(symbol(L"GBL_wd_prj"), quoted(project));
    GetProjectManager()->closeProject();
    activate(third);
    EXPECT_EQ(symbol(L"GBL_wd_prj"), "nil");
}

TEST_F(LispProject, GlobalValuesAndVariables) {
    ASSERT_TRUE(openWithAddon());
    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"ZEL_TEST", RTLB, RTSTR, L"a", RTSHORT, 7, RTLE), "T");
    EXPECT_EQ(call(L"zel_gbl_get", RTSTR, L"zel_test"), R"(("a" 7))");
    // Nil forgets the value; the project file cannot be set.
    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"ZEL_TEST", RTNIL), "T");
    EXPECT_EQ(GblPm_GetGblValue(L"ZEL_TEST"), nullptr);
    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"GBL_wd_prj", RTSTR, L"x"), "nil");
    EXPECT_TRUE(output().contains("cannot be set")) << output().toStdString();

    // The user folder is made when asked for.
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"GBL_wd_usr"), quoted(path("data/Zel/User/")));
    EXPECT_TRUE(QFileInfo(path("data/Zel/User/")).isDir());
    // Other names: the document's variable, else the add-on's global value, else nil; a
    // function is no variable.
    ASSERT_TRUE(ovcore::lisp::evalString("(setq WD_TEST_VAR 42)").ok);
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"WD_TEST_VAR"), "42");
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"zel_get_var"), "nil");
    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"GBL_wd_test", RTSTR, L"global"), "T");
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"GBL_wd_test"), R"("global")");
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"NO_SUCH_VARIABLE"), "nil");
    GblPm_SetGblValue(L"GBL_wd_test", nullptr);
}

TEST_F(LispProject, BadArgumentsAnswerNilWithAMessageAndNoError) {
    ASSERT_TRUE(openWithAddon());
    const std::pair<const char*, resbuf*> cases[] = {
        {"zel_project_open", ovutBuildList(RTSTR, L"zel_project_open", RTSHORT, 12, 0)},
        {"zel_project_setting", ovutBuildList(RTSTR, L"zel_project_setting", RTSTR, L"33", 0)},
        {"zel_gbl_get", ovutBuildList(RTSTR, L"zel_gbl_get", RTNIL, 0)},
        {"zel_gbl_set", ovutBuildList(RTSTR, L"zel_gbl_set", RTSTR, L"X", 0)},
        {"zel_get_var", ovutBuildList(RTSTR, L"zel_get_var", RTSHORT, 3, 0)},
        {"zel_dwg_lock_info", ovutBuildList(RTSTR, L"zel_dwg_lock_info", RTSTR, L"", 0)},
        {"zel_wd_m_attributes", ovutBuildList(RTSTR, L"zel_wd_m_attributes", RTSHORT, 1, 0)},
        {" wdupda_chkdwglockstatus",
         ovutBuildList(RTSTR, L" wdupda_chkdwglockstatus", RTLB, RTSTR, L"a.dwg", RTSHORT, 5, RTLE,
                       RTSHORT, 2, RTNIL, 0)},
        {"c:zel_upd_unlock_dwgs",
         ovutBuildList(RTSTR, L"c:zel_upd_unlock_dwgs", RTSHORT, 5, RTSHORT, 1, 0)},
    };
    for (const auto& [function, chain] : cases) {
        m_output.clear();
        EXPECT_EQ(invoke(chain), "nil") << function;
        EXPECT_TRUE(output().contains(QString::fromLatin1(function) + u':'))
            << output().toStdString();
        EXPECT_FALSE(output().contains("; error")) << output().toStdString();
    }
}

} // namespace
