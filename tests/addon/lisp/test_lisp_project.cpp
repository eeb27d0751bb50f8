// The add-on's project, global value and variable functions, called through ovedInvoke as
// other modules call them, and GBL_wd_prj following the active project.
#include "AddonLispHost.h"

#include "zelpm/ZelMDIGblManager.h"

namespace {

class LispProject : public AddonLispHost {
protected:
    // A project of two drawings with setting 33.
    QString writeProject(const QString& name, const QByteArray& text = {}) {
        QFile out(path(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(!text.isEmpty() ? text : R"({"format": "zel-project", "version": 1,
                      "drawings": ["a.dwg", "sub/b.dwg"], "settings": {"33": "Insulation,Size"}})");
        return out.fileName();
    }
    void activate(OvApDocument* doc) {
        ASSERT_EQ(ovDocManagerPtr()->activateDocument(doc), Orvex::eOk);
    }
};

TEST_F(LispProject, OpenAndCloseThroughLispKeepEveryDocumentInStep) {
    OvApDocument* first = openWithAddon();
    OvApDocument* second = openWithAddon();
    ASSERT_TRUE(first && second);
    const QString project = writeProject(QStringLiteral("test.zpj"));
    EXPECT_EQ(symbol(L"GBL_wd_prj"), QStringLiteral("nil"));

    EXPECT_EQ(call(L"zel_project_open", RTSTR, wide(project).c_str()), QStringLiteral("T"));
    EXPECT_EQ(call(L"zel_project_active"), quoted(project));
    EXPECT_EQ(call(L"zel_project_setting", RTSHORT, 33), QStringLiteral(R"("Insulation,Size")"));
    EXPECT_EQ(call(L"zel_project_setting", RTSHORT, 34), QStringLiteral("nil"));
    EXPECT_EQ(call(L"zel_project_drawings"),
              QStringLiteral("(%1 %2)").arg(quoted(path(QStringLiteral("a.dwg"))),
                                            quoted(path(QStringLiteral("sub/b.dwg")))));
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"GBL_wd_prj"), quoted(project));
    // Set in the document that asked and in the other one, which ran nothing.
    EXPECT_EQ(symbol(L"GBL_wd_prj"), quoted(project));
    activate(first);
    EXPECT_EQ(symbol(L"GBL_wd_prj"), quoted(project));

    EXPECT_EQ(call(L"zel_project_close"), QStringLiteral("T"));
    EXPECT_EQ(call(L"zel_project_active"), QStringLiteral("nil"));
    EXPECT_EQ(call(L"zel_project_setting", RTSHORT, 33), QStringLiteral("nil"));
    EXPECT_EQ(symbol(L"GBL_wd_prj"), QStringLiteral("nil"));
    activate(second);
    EXPECT_EQ(symbol(L"GBL_wd_prj"), QStringLiteral("nil"));
}

TEST_F(LispProject, UnreadableProjectAnswersNilWithTheReasonAndLeavesNoProject) {
    ASSERT_TRUE(openWithAddon());
    ASSERT_TRUE(GetProjectManager()->openProject(writeProject(QStringLiteral("good.zpj"))));
    const QString bad = writeProject(QStringLiteral("bad.zpj"), "not json");

    EXPECT_EQ(call(L"zel_project_open", RTSTR, wide(bad).c_str()), QStringLiteral("nil"));
    EXPECT_TRUE(output().contains(QStringLiteral("zel_project_open: Cannot open the project")))
        << output().toStdString();
    EXPECT_EQ(symbol(L"GBL_wd_prj"), QStringLiteral("nil"));
    EXPECT_EQ(call(L"zel_project_active"), QStringLiteral("nil"));
}

TEST_F(LispProject, ProjectOpenedOutsideLispReachesDocumentsWhenTheyComeUp) {
    OvApDocument* first = openWithAddon();
    const QString project = writeProject(QStringLiteral("test.zpj"));
    ASSERT_TRUE(GetProjectManager()->openProject(project));

    // A document opened afterwards has it from its drawing-load message...
    OvApDocument* second = openWithAddon();
    EXPECT_EQ(symbol(L"GBL_wd_prj"), quoted(project));
    // ...and one that was open all along when it becomes current again.
    activate(first);
    EXPECT_EQ(symbol(L"GBL_wd_prj"), quoted(project));
    GetProjectManager()->closeProject();
    activate(second);
    EXPECT_EQ(symbol(L"GBL_wd_prj"), QStringLiteral("nil"));
}

TEST_F(LispProject, GlobalValuesRoundTripAndTheProjectCannotBeSet) {
    ASSERT_TRUE(openWithAddon());
    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"ZEL_TEST", RTLB, RTSTR, L"a", RTSHORT, 7, RTLE),
              QStringLiteral("T"));
    EXPECT_EQ(call(L"zel_gbl_get", RTSTR, L"zel_test"), QStringLiteral(R"(("a" 7))"));
    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"ZEL_TEST", RTSTR, L"one"), QStringLiteral("T"));
    EXPECT_EQ(call(L"zel_gbl_get", RTSTR, L"ZEL_TEST"), QStringLiteral(R"("one")"));
    // Nil forgets the value.
    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"ZEL_TEST", RTNIL), QStringLiteral("T"));
    EXPECT_EQ(GblPm_GetGblValue(L"ZEL_TEST"), nullptr);

    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"GBL_wd_prj", RTSTR, L"x"), QStringLiteral("nil"));
    EXPECT_TRUE(output().contains(QStringLiteral("cannot be set"))) << output().toStdString();
}

TEST_F(LispProject, GetVarMakesTheUserFolderAndFallsBackOnVariablesAndGlobals) {
    ASSERT_TRUE(openWithAddon());
    const QString folder = path(QStringLiteral("data/Zel/User/"));
    QDir(folder).removeRecursively();
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"GBL_wd_usr"), quoted(folder));
    EXPECT_TRUE(QFileInfo(folder).isDir());

    ASSERT_TRUE(ovcore::lisp::evalString(QStringLiteral("(setq WD_TEST_VAR 42)")).ok);
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"WD_TEST_VAR"), QStringLiteral("42"));
    // A function is no variable: the add-on's global of that name, none here.
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"zel_get_var"), QStringLiteral("nil"));
    EXPECT_EQ(call(L"zel_gbl_set", RTSTR, L"GBL_wd_test", RTSTR, L"global"), QStringLiteral("T"));
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"GBL_wd_test"), QStringLiteral(R"("global")"));
    EXPECT_EQ(call(L"zel_get_var", RTSTR, L"NO_SUCH_VARIABLE"), QStringLiteral("nil"));
    GblPm_SetGblValue(L"GBL_wd_test", nullptr);
}

TEST_F(LispProject, BadArgumentsAnswerNilWithAMessageAndNoError) {
    ASSERT_TRUE(openWithAddon());
    const std::pair<const char*, resbuf*> cases[] = {
        {"zel_project_open", ovutBuildList(RTSTR, L"zel_project_open", RTSHORT, 12, 0)},
        {"zel_project_open", ovutBuildList(RTSTR, L"zel_project_open", 0)},
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
        clearOutput();
        int status = 0;
        EXPECT_EQ(invoke(chain, &status), QStringLiteral("nil")) << function;
        EXPECT_EQ(status, RTNORM) << function;
        EXPECT_TRUE(output().contains(QString::fromLatin1(function) + u':'))
            << output().toStdString();
        EXPECT_FALSE(output().contains(QStringLiteral("; error"))) << output().toStdString();
    }
}

} // namespace
