// Entity names of the LISP bridge: good for the session, refused once their drawing is gone.

#include "OvdbTest.h"

namespace {

using namespace Orvex;

using EntityName = OvdbTest;

TEST_F(EntityName, NameLeadsBackToItsObject) {
    OvDbDatabase second;
    const OvDbObjectId a = addLine(db);
    const OvDbObjectId b = addLine(second);
    EXPECT_EQ(a.handle(), b.handle()) << "same handle, different drawings";

    ov_name name = {0, 0};
    ASSERT_EQ(ovdbGetOvName(name, b), RTNORM);
    EXPECT_EQ(name[0], second.sessionNumber());
    OvDbObjectId id;
    ASSERT_EQ(ovdbGetObjectId(id, name), RTNORM);
    EXPECT_EQ(id, b);

    // An erased entity keeps its name, so that it can be brought back.
    setErased(b);
    ASSERT_EQ(ovdbGetObjectId(id, name), RTNORM);
    EXPECT_TRUE(id.isErased());
}

TEST_F(EntityName, NamesOfNothingAreRefused) {
    ov_name name = {7, 7};
    EXPECT_EQ(ovdbGetOvName(name, OvDbObjectId::kNull), RTERROR);
    EXPECT_EQ(name[0], 0);

    auto* doomed = new OvDbDatabase();
    ASSERT_EQ(ovdbGetOvName(name, addLine(*doomed)), RTNORM);
    const std::int64_t session = name[0];
    EXPECT_EQ(ovdbDatabaseOfSession(session), doomed);
    delete doomed;
    EXPECT_EQ(ovdbDatabaseOfSession(session), nullptr);
    OvDbObjectId id = OvDbObjectId::kNull;
    EXPECT_EQ(ovdbGetObjectId(id, name), RTERROR);
    EXPECT_TRUE(id.isNull());
    OvDbDatabase laterDatabase;
    EXPECT_GT(laterDatabase.sessionNumber(), db.sessionNumber()) << "never reused";
}

} // namespace
