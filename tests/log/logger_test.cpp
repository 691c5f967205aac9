// The trace log through the calls that the module makes, and the bytes that reach the disk.
#include "log/logger.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/log/log_directory.h"

namespace {

const std::string kOpenBanner = std::string(35, '~') + "CLogger::CreateLog" + std::string(37, '~') + "\r\n";
const std::string kCloseBanner = std::string(33, '~') + "CLogger::CloseLog" + std::string(39, '~') + "\r\n";

class LoggerTest : public ::testing::Test {
  protected:
    // What the setter of the log directory does with a directory that is not empty.
    static int Enable(CLogger& logger, const WideString& directory) {
        logger.SetEnabled(true);
        return logger.OpenNamedLog(directory.c_str(), OLESTR("QRX_MKVMuxer"), false);
    }

    [[nodiscard]] WideString LogPath() const { return m_directory.Path() + OLESTR("\\QRX_MKVMuxer.log"); }
    [[nodiscard]] std::string LogText() const { return ReadWholeFile(LogPath()); }

    LogDirectory m_directory;
};

TEST_F(LoggerTest, WritesNothingAndOpensNothingUntilItIsEnabled) {
    CLogger logger;
    EXPECT_FALSE(logger.IsEnabled());
    logger << OLESTR("lost") << INT32{1} << INT64{2};
    EXPECT_EQ(1, logger.CreateLog(m_directory.Path().c_str(), OLESTR("x.log"), false));
    EXPECT_EQ(m_directory.Path(), logger.Directory());
    EXPECT_FALSE(FileExists(m_directory.Path() + OLESTR("\\x.log")));
    EXPECT_EQ(1, logger.CloseLog());
}

TEST_F(LoggerTest, WritesBannersAndInsertionsExactlyAsGiven) {
    {
        CLogger logger;
        EXPECT_EQ(1, Enable(logger, m_directory.Path()));
        logger << OLESTR("stream=") << INT32{-7} << OLESTR(" start=") << INT64{-9223372036854775807LL - 1}
               << OLESTR("\r\n");
        logger << INT64{9223372036854775807LL} << INT32{2147483647} << OLESTR("");
    }
    EXPECT_EQ(kOpenBanner + "stream=-7 start=-9223372036854775808\r\n92233720368547758072147483647" + kCloseBanner,
              LogText());
}

TEST_F(LoggerTest, AnEmptyDirectoryCreatesNoDirectoryAndSwitchingOffClosesTheFile) {
    CLogger logger;
    Enable(logger, m_directory.Path());
    logger.CloseLog();
    logger.SetEnabled(false);
    logger << OLESTR("lost");
    EXPECT_EQ(kOpenBanner + kCloseBanner, LogText());
    CreateDirectoryPath(WideStringView());
}

TEST_F(LoggerTest, ADirectoryPathOfSeveralLevelsIsCreatedLevelByLevel) {
    const WideString deep = m_directory.Path() + OLESTR("\\a/b\\c");
    {
        CLogger logger;
        EXPECT_EQ(1, Enable(logger, deep));
        logger << OLESTR("deep");
    }
    EXPECT_EQ(kOpenBanner + "deep" + kCloseBanner, ReadWholeFile(deep + OLESTR("\\QRX_MKVMuxer.log")));
    m_directory.AlsoRemove({OLESTR("\\a\\b\\c\\QRX_MKVMuxer.log")},
                           {OLESTR("\\a\\b\\c"), OLESTR("\\a\\b"), OLESTR("\\a")});
}

TEST_F(LoggerTest, ADirectoryThatEndsInASeparatorIsAccepted) {
    {
        CLogger logger;
        EXPECT_EQ(1, Enable(logger, m_directory.Path() + OLESTR("\\")));
    }
    EXPECT_EQ(kOpenBanner + kCloseBanner, LogText());
}

TEST_F(LoggerTest, ASecondRunAppendsAfterThePreviousCloseBanner) {
    for (const WCHAR* text : {OLESTR("one"), OLESTR("two")}) {
        CLogger logger;
        Enable(logger, m_directory.Path());
        logger << text;
    }
    EXPECT_EQ(kOpenBanner + "one" + kCloseBanner + kOpenBanner + "two" + kCloseBanner, LogText());
}

TEST_F(LoggerTest, OverwritingStartsTheFileAnew) {
    CLogger logger;
    Enable(logger, m_directory.Path());
    logger << OLESTR("old");
    EXPECT_EQ(1, logger.OpenNamedLog(m_directory.Path().c_str(), OLESTR("QRX_MKVMuxer"), true));
    logger << OLESTR("new");
    logger.CloseLog();
    EXPECT_EQ(kOpenBanner + "new" + kCloseBanner, LogText());
}

TEST_F(LoggerTest, SettingTheSameDirectoryAgainWritesBothBannersIntoTheSameFile) {
    CLogger logger;
    Enable(logger, m_directory.Path());
    logger << OLESTR("one");
    Enable(logger, m_directory.Path());
    logger << OLESTR("two");
    logger.CloseLog();
    EXPECT_EQ(kOpenBanner + "one" + kCloseBanner + kOpenBanner + "two" + kCloseBanner, LogText());
}

TEST_F(LoggerTest, SettingAnotherDirectoryClosesTheOldFileAndOpensTheNew) {
    CLogger logger;
    Enable(logger, m_directory.Path());
    logger << OLESTR("one");
    const WideString other = m_directory.Path() + OLESTR("\\other");
    Enable(logger, other);
    logger << OLESTR("two");
    logger.CloseLog();
    EXPECT_EQ(kOpenBanner + "one" + kCloseBanner, LogText());
    EXPECT_EQ(kOpenBanner + "two" + kCloseBanner, ReadWholeFile(other + OLESTR("\\QRX_MKVMuxer.log")));
    m_directory.AlsoRemove({OLESTR("\\other\\QRX_MKVMuxer.log")}, {OLESTR("\\other")});
}

TEST_F(LoggerTest, ClosingTheLogLeavesItEnabledAndLaterTextIsDropped) {
    CLogger logger;
    Enable(logger, m_directory.Path());
    EXPECT_EQ(1, logger.CloseLog());
    EXPECT_TRUE(logger.IsEnabled());
    logger << OLESTR("dropped");
    EXPECT_EQ(1, logger.CloseLog());
    EXPECT_EQ(kOpenBanner + kCloseBanner, LogText());
}

TEST_F(LoggerTest, ALogThatCannotBeOpenedStaysEnabledAndDropsEveryInsertion) {
    CLogger logger;
    // The directory's name is taken by a file, so it can neither be created nor entered.
    Enable(logger, m_directory.Path());
    EXPECT_EQ(0, Enable(logger, LogPath()));
    EXPECT_TRUE(logger.IsEnabled());
    logger << OLESTR("dropped") << INT32{1};
    logger.CloseLog();
    EXPECT_EQ(kOpenBanner + kCloseBanner, LogText());
}

TEST_F(LoggerTest, AnotherReaderMayOpenTheLogButASecondWriterMayNot) {
    CLogger logger;
    Enable(logger, m_directory.Path());
    logger << OLESTR("shared");
    EXPECT_EQ(kOpenBanner + "shared", LogText());
    CLogger second;
    EXPECT_EQ(0, Enable(second, m_directory.Path()));
}

TEST_F(LoggerTest, CharactersThatTheCodePageLacksBecomeItsDefaultCharacter) {
    {
        CLogger logger;
        Enable(logger, m_directory.Path());
        logger << OLESTR("Volap\u00fck \u4e2d");
    }
    EXPECT_EQ(kOpenBanner + "Volap\xfck ?" + kCloseBanner, LogText());
}

TEST_F(LoggerTest, NullTextAndUnknownResourceIdentifiersWriteNothing) {
    {
        CLogger logger;
        Enable(logger, m_directory.Path());
        logger << static_cast<const WCHAR*>(nullptr);
        logger << reinterpret_cast<const WCHAR*>(static_cast<ULONG_PTR>(0xfff0));
    }
    EXPECT_EQ(kOpenBanner + kCloseBanner, LogText());
}

TEST_F(LoggerTest, StringTableIdentifiersStandForTheirText) {
    const auto id = StringResource(101, OLESTR("from the string table"));
    {
        CLogger logger;
        Enable(logger, m_directory.Path());
        logger << id;
    }
    EXPECT_EQ(kOpenBanner + "from the string table" + kCloseBanner, LogText());
}

TEST_F(LoggerTest, InsertionsOfManyThreadsArriveWhole) {
    constexpr int kThreads = 4;
    constexpr int kInsertions = 200;
    {
        CLogger logger;
        Enable(logger, m_directory.Path());
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&logger] {
                for (int i = 0; i < kInsertions; ++i) {
                    logger << OLESTR("[piece]");
                }
            });
        }
        for (auto& thread : threads) {
            thread.join();
        }
    }
    std::string expected;
    for (int i = 0; i < kThreads * kInsertions; ++i) {
        expected += "[piece]";
    }
    EXPECT_EQ(kOpenBanner + expected + kCloseBanner, LogText());
}

// What is inserted while another thread closes and opens the log is between two banners or nowhere: never behind the
// end, never in a file that is no longer ours.
TEST_F(LoggerTest, InsertionsBesideAThreadThatClosesTheLogStayBetweenTheBanners) {
    constexpr int kRounds = 60;
    {
        CLogger logger;
        Enable(logger, m_directory.Path());
        std::atomic<bool> done{false};
        std::vector<std::thread> writers;
        for (int i = 0; i < 3; ++i) {
            writers.emplace_back([&] {
                while (!done) {
                    logger << OLESTR("[piece]");
                }
            });
        }
        for (int round = 0; round < kRounds; ++round) {
            logger.CloseLog();
            std::this_thread::yield();
            Enable(logger, m_directory.Path());
        }
        done = true;
        for (auto& writer : writers) {
            writer.join();
        }
    }
    const std::string text = LogText();
    size_t at = 0;
    const auto take = [&](const std::string& what) {
        const bool there = text.compare(at, what.size(), what) == 0;
        at += there ? what.size() : 0;
        return there;
    };
    for (int round = 0; round <= kRounds; ++round) {
        ASSERT_TRUE(take(kOpenBanner)) << "round " << round << ", at " << text.substr(at, 100);
        while (take("[piece]")) {
        }
        ASSERT_TRUE(take(kCloseBanner)) << "round " << round << ", at " << text.substr(at, 100);
    }
    EXPECT_EQ(text.size(), at);
}

TEST(GlobalLogger, IsOffWhenTheModuleLoads) {
    EXPECT_FALSE(g_Logger.IsEnabled());
    EXPECT_TRUE(g_Logger.Directory().empty());
}

} // namespace
