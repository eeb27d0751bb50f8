// The per-document data manager: an entry goes with its own document only, and the
// manager outlives the host's document manager.

#include "shell/ZelDocDataManager.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvHost.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

OvApDocument* newDocument() {
    OvApDocument* doc = nullptr;
    EXPECT_EQ(ovDocManagerPtr()->newDocument(QString(), &doc), Orvex::eOk);
    return doc;
}

TEST(DocDataManagerTest, DropsAnEntryWithItsDocumentAndOutlivesTheHost) {
    OvHost host;
    ASSERT_TRUE(host.init());
    auto manager = std::make_unique<ZelDocDataManager>();
    OvApDocument* kept = newDocument();
    OvApDocument* closed = newDocument();
    OvApDocument* withoutData = newDocument();
    manager->docData(kept);
    manager->docData(closed);

    // Locks and activation are no reason to drop anything.
    ASSERT_EQ(ovDocManagerPtr()->lockDocument(kept, OvAp::kWrite), Orvex::eOk);
    ASSERT_EQ(ovDocManagerPtr()->unlockDocument(kept), Orvex::eOk);
    ASSERT_EQ(ovDocManagerPtr()->activateDocument(kept), Orvex::eOk);
    ASSERT_EQ(ovDocManagerPtr()->closeDocument(closed), Orvex::eOk);
    EXPECT_FALSE(manager->hasDocData(closed));
    EXPECT_TRUE(manager->hasDocData(kept));
    // A document that never had an entry goes: nothing happens.
    ASSERT_EQ(ovDocManagerPtr()->closeDocument(withoutData), Orvex::eOk);
    EXPECT_EQ(manager->docDataCount(), 1u);

    // Shutdown closes the last document, then the document manager goes before the module.
    host.shutdown();
    ASSERT_EQ(ovDocManagerPtr(), nullptr);
    EXPECT_EQ(manager->docDataCount(), 0u);
    manager.reset();
    // A host started afresh does not know the manager that is gone.
    ASSERT_TRUE(host.init());
    ASSERT_NE(newDocument(), nullptr);
    host.shutdown();
}

} // namespace
