// On Linux the libraries are Debian's, which keep their assertions: what we hand them wrongly ends a test. Here is one
// of each library, broken on purpose. Those of our own are in tests/win/thread_rules_test.cpp.
#include <gtest/gtest.h>

#include <matroska/KaxCluster.h>
#include <matroska/KaxTracks.h>

GTEST_DECLARE_bool_(death_test_use_fork); // GoogleTest defines it without declaring it to users

#ifdef NDEBUG
#error "this lane is for assertions"
#endif

namespace {

class LibraryAssertionsDeathTest : public testing::Test {
  protected:
    // In processes of their own, started afresh; by fork, since clone needs a stack that GoogleTest cannot find under a
    // sanitizer.
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        GTEST_FLAG_SET(death_test_use_fork, true);
    }
};

TEST_F(LibraryAssertionsDeathTest, ALockedElementIsNotDeleted) {
    EXPECT_DEATH(
        {
            libmatroska::KaxTracks tracks;
            tracks.Lock();
        },
        "EbmlMaster.*!IsLocked");
}

TEST_F(LibraryAssertionsDeathTest, AClusterIsAskedForNoTimeBeforeItHasOne) {
    EXPECT_DEATH(
        {
            const libmatroska::KaxCluster cluster;
            (void)cluster.GlobalTimecode();
        },
        "KaxCluster.*bPreviousTimecodeIsSet");
}

} // namespace
