// The command WireTypeSel1 as CAD LISP users run it, (command "WireTypeSel1"), in batch runs
// of orvex over a copy of the demo drawing; what the dialog did is read back from the file
// the run saved.

#include "OrvexProcess.h"

#include <gtest/gtest.h>

namespace {

class WireTypeCommand : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        m_drawing = m_folder.filePath("demo.dwg");
        ASSERT_TRUE(QFile::copy(ZEL_DEMO_DIR "/drawings/demo.dwg", m_drawing));
        m_process.setAddonFolder(ZEL_ADDON_DIR);
    }

    OrvexProcess::Result run(const QString& expression, bool save = true) {
        QStringList arguments{"--batch",
                              "--project",
                              ZEL_DEMO_DIR "/demo.zpj",
                              "--module",
                              OrvexProcess::testModule(),
                              "--eval",
                              expression};
        if (save)
            arguments << "--save";
        return m_process.run(arguments << m_drawing);
    }

    QTemporaryDir m_folder;
    QString m_drawing;
    OrvexProcess m_process;
};

TEST_F(WireTypeCommand, ADrivenDialogAddsAWireTypeAndAnUndrivenOneChangesNothing) {
    const auto added = run(R"((progn
      (orvex-dialog-queue
        (lambda ()
          (let ((blank (orvex-grid-rows 1002)))
            (princ (orvex-dialog-title))
            (orvex-grid-type 1002 blank 3 "PK")
            (orvex-grid-key 1002 "Tab")
            (orvex-grid-type 1002 blank 4 "2")
            (orvex-grid-key 1002 "Tab")
            (princ (strcat "|" (orvex-grid-cell 1002 blank 5) "|"))
            (orvex-grid-click 1002 1 5)
            (orvex-dialog-click 1))))
      (command "WireTypeSel1")
      (zel_get_active_dwg_wiretype)))");
    ASSERT_EQ(added.exitCode, 0) << added.out.toStdString() << added.err.toStdString();
    EXPECT_TRUE(added.out.startsWith("Create/Edit Wire Types|PK_2|")) << added.out.toStdString();

    // A run of its own reads the saved drawing.
    const auto reread = run("(zel_get_active_dwg_wiretype)", false);
    EXPECT_TRUE(reread.out.contains("\"PK_2\"")) << reread.out.toStdString();

    const auto undriven = run("(command \"WireTypeSel1\")");
    EXPECT_EQ(undriven.exitCode, 0);
    EXPECT_TRUE(undriven.out.contains("dialog \"Create/Edit Wire Types\" not driven: cancelled"))
        << undriven.out.toStdString();
    EXPECT_EQ(run("(zel_get_active_dwg_wiretype)", false).out, reread.out);
}

} // namespace
