#include "win/temporary_file.h"

#include <gtest/gtest.h>

namespace {

TEST(TemporaryFile, LiesInTheFolderOfTheOneThatItStandsInFor) {
    EXPECT_EQ(win::FolderOf(L"name"), L"");
    EXPECT_EQ(win::FolderOf(L"C:name"), L"C:"); // the current folder of that drive
    EXPECT_EQ(win::FolderOf(L"C:\\name"), L"C:\\");
    EXPECT_EQ(win::FolderOf(L"up/to\\this/name"), L"up/to\\this/");
}

} // namespace
