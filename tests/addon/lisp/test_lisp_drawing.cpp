// The add-on's drawing functions called through ovedInvoke as the wire type module calls
// them: the WD_M parameters and the drawing locks.
#include "AddonTest.h"

#include "ovcore/OvDrawingLock.h"
#include "zeldefun/ZelQvxBlockRef.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSysInfo>

namespace {

class LispDrawing : public AddonTest {
protected:
    void SetUp() override {
        AddonTest::SetUp();
        startHost();
    }
    void writeLock(const QString& drawing, const QString& machine, qint64 pid) {
        const QJsonObject lock{{"user", "ann"},
                               {"machine", machine},
                               {"pid", static_cast<double>(pid)},
                               {"time", "2024-05-06T09:30:00.000Z"}};
        QFile file(ovDrawingLockPath(drawing));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(lock).toJson());
    }
    // As the module sends them: " wdupda_chkdwglockstatus" (drawing...) 2 nil, and
    // "c:zel_upd_unlock_dwgs" (drawing) 1.
    QString lockStatus(const QString& first, const QString& second = {}) {
        resbuf* drawings = ovutBuildList(RTLB, RTSTR, wide(first).c_str(), 0);
        if (!second.isEmpty())
            drawings->rbnext->rbnext = ovutBuildList(RTSTR, wide(second).c_str(), 0);
        return call(L" wdupda_chkdwglockstatus", RTRESBUF, drawings, RTLE, RTSHORT, 2, RTNIL);
    }
    QString unlock(const QString& drawing) {
        return call(L"c:zel_upd_unlock_dwgs", RTLB, RTSTR, wide(drawing).c_str(), RTLE, RTSHORT, 1);
    }
};

TEST_F(LispDrawing, DwgParamsComeFromTheWdmBlockAndARereadSeesAChangedWirelays) {
    // A drawing without WD_M reads as nil; others are read by path.
    ASSERT_TRUE(openWithAddon());
    EXPECT_EQ(call(L"wd_cfg_read_dwg_params"), "nil");
    EXPECT_EQ(symbol(L"GBL_wd_m"), "nil");
    EXPECT_EQ(symbol(L"GBL_wd_wirelays"), "nil");
    EXPECT_EQ(call(L"zel_wd_m_attributes", RTSTR, wide(copyDemo("import.dwg")).c_str()),
              R"((("WIRELAYS" . "BK*,BN*,GY*,OG*,WH*") ("SHEET" . "2") ("UNIT_SCL" . "1.0")))");
    EXPECT_EQ(call(L"zel_wd_m_attributes", RTSTR, L"/no/such/drawing.dwg"), "nil");
    EXPECT_TRUE(output().contains("zel_wd_m_attributes:")) << output().toStdString();

    const QString drawing = copyDemo("demo.dwg");
    ASSERT_TRUE(openWithAddon(drawing));
    EXPECT_EQ(call(L"wd_cfg_read_dwg_params"), "T");
    EXPECT_EQ(symbol(L"GBL_wd_wirelays"), R"("BK*,BU*,GNYE*,RD*")");
    EXPECT_EQ(symbol(L"GBL_wd_m"),
              R"((("WIRELAYS" . "BK*,BU*,GNYE*,RD*") ("SHEET" . "1") ("UNIT_SCL" . "1.0")))");

    // The wire type module writes the live drawing, then asks for the reread.
    ZelQvxBlockRef wdm;
    ASSERT_TRUE(wdm.open(drawing, 32, false) && wdm.find("WD_M", 0, 0));
    ASSERT_TRUE(wdm.setAttributeTextString("WIRELAYS", "BK*,WIR*", true));
    EXPECT_EQ(call(L"c:wd_reread_dwg_params"), "T");
    EXPECT_EQ(symbol(L"GBL_wd_wirelays"), R"("BK*,WIR*")");
}

TEST_F(LispDrawing, OnlyLocksOfOtherLiveProcessesHoldADrawingAndAreRemovedOnRequest) {
    const QString mine = copyDemo("demo.dwg");
    ASSERT_TRUE(openWithAddon(mine));
    const QString free = path("free.dwg");
    const QString held = path("held.dwg");
    const QString machine = QSysInfo::machineHostName();
    QProcess holder;
    holder.start("sleep", {"30"});
    ASSERT_TRUE(holder.waitForStarted());
    writeLock(held, machine, holder.processId());

    EXPECT_EQ(lockStatus(free), "nil");
    // The first drawing that another process holds is named with its holder.
    EXPECT_EQ(
        lockStatus(free, held),
        QStringLiteral(R"(("ann" "%1" %2 "%3"))").arg(machine).arg(holder.processId()).arg(held));
    EXPECT_EQ(call(L"zel_dwg_lock_info", RTSTR, wide(held).c_str()),
              QStringLiteral(R"(("ann" "%1" %2 "live" "2024-05-06T09:30:00Z"))")
                  .arg(machine)
                  .arg(holder.processId()));
    EXPECT_EQ(unlock(held), "T");
    EXPECT_FALSE(QFile::exists(ovDrawingLockPath(held)));
    EXPECT_EQ(lockStatus(free, held), "nil");

    // A process of another machine cannot be looked at: its lock stands.
    writeLock(free, "elsewhere", 1);
    EXPECT_EQ(lockStatus(free), QStringLiteral(R"(("ann" "elsewhere" 1 "%1"))").arg(free));
    holder.kill();
    holder.waitForFinished();

    // Stale locks and our own hold nothing against us.
    ASSERT_TRUE(QFile::exists(ovDrawingLockPath(mine)));
    EXPECT_EQ(lockStatus(mine), "nil");
    // Our own lock of an open drawing stays: the host takes it away on close.
    EXPECT_EQ(unlock(mine), "T");
    EXPECT_TRUE(QFile::exists(ovDrawingLockPath(mine)));

    QProcess gone;
    gone.start("true", {});
    ASSERT_TRUE(gone.waitForFinished());
    const QString stale = path("stale.dwg");
    writeLock(stale, QSysInfo::machineHostName(), gone.processId());
    EXPECT_EQ(lockStatus(stale), "nil");
    EXPECT_TRUE(call(L"zel_dwg_lock_info", RTSTR, wide(stale).c_str()).contains("\"stale\""));
    EXPECT_EQ(unlock(stale), "T");
    EXPECT_FALSE(QFile::exists(ovDrawingLockPath(stale)));
}

} // namespace
