// A place in a track entry that is filled while the file is written: what stands there then, and what becomes of it and
// of all behind it when calls of the output fail.
#include "mkv/reserved_place.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <matroska/KaxTrackVideo.h>
#include <matroska/KaxTracks.h>

#include "mkv/mkv_io.h"
#include "tests/support/memory_stream.h"

namespace {

using Bytes = std::vector<BYTE>;
using test_support::MemoryStream;
using test_support::StreamOperation;

constexpr size_t kPlacePosition = 3; // behind an identifier of two bytes and a size of one

class ReservedPlaceTest : public testing::Test {
  protected:
    ReservedPlaceTest() { m_io.setStream(&m_stream); }

    // An element that has nothing but the place.
    void WriteParent(UINT64 placeBytes) {
        m_place = std::make_unique<mkv::CReservedPlace>(m_parent, placeBytes);
        m_gathering.moveTo(0);
        m_parent.Render(m_gathering, false, false, true);
        m_patcher.flushHeadPart();
    }
    // A CodecPrivate with so many bytes.
    bool Fill(size_t dataBytes) {
        const Bytes data(dataBytes, 'x');
        libmatroska::KaxCodecPrivate element;
        element.CopyBuffer(data.data(), static_cast<uint32>(data.size()));
        return m_place->fill(element, m_patcher);
    }
    // As clusters are written: what a failed write lost leaves its place to the next.
    void WriteCluster(const std::string& text) {
        const auto place = m_gathering.place();
        m_gathering.write(text.data(), text.size());
        m_gathering.flush();
        if (m_gathering.takeLost()) {
            m_gathering.returnTo(place);
        }
    }
    void FinishFile() {
        m_gathering.flush();
        m_patcher.begin();
        m_patcher.writeLostHeadParts();
    }
    [[nodiscard]] Bytes FromPlace() const {
        const Bytes bytes = m_stream.Bytes();
        return {bytes.begin() + kPlacePosition, bytes.end()};
    }
    static Bytes Joined(Bytes bytes, const std::string& text) {
        bytes.insert(bytes.end(), text.begin(), text.end());
        return bytes;
    }

    static inline const Bytes kEmptyPlace{0xec, 0x86, 0, 0, 0, 0, 0, 0};               // of 8 bytes
    static inline const Bytes kFilledPlace{0x63, 0xa2, 0x82, 'x', 'x', 0xec, 0x81, 0}; // by two

    MemoryStream m_stream;
    CMkvIO m_io;
    mkv::CGatheringIO m_gathering{m_io};
    mkv::CFilePatcher m_patcher{m_gathering};
    libmatroska::KaxVideoColour m_parent; // the library gives others children of their own
    std::unique_ptr<mkv::CReservedPlace> m_place;
};

TEST_F(ReservedPlaceTest, IsAVoidAsLongAsAsked) {
    WriteParent(8);
    EXPECT_EQ(FromPlace(), kEmptyPlace);
    EXPECT_FALSE(m_place->isFilled());
}

TEST_F(ReservedPlaceTest, TakesTheLengthsThatNeedALongerSize) {
    for (const UINT64 bytes : {UINT64{128}, UINT64{129}, UINT64{130}, mkv::CReservedPlace::kMaxBytes}) {
        libmatroska::KaxVideoColour parent;
        const mkv::CReservedPlace place(parent, bytes);
        EXPECT_EQ(parent.UpdateSize(false, true), bytes);
    }
}

TEST_F(ReservedPlaceTest, IsFilledAtOnceAndTheRestStaysAVoid) {
    WriteParent(8);
    WriteCluster("first");
    EXPECT_TRUE(Fill(2));
    EXPECT_TRUE(m_place->isFilled());
    EXPECT_EQ(FromPlace(), Joined(kFilledPlace, "first"));
    WriteCluster("second");
    EXPECT_EQ(FromPlace(), Joined(kFilledPlace, "firstsecond"));
}

TEST_F(ReservedPlaceTest, AnElementThatIsAsLongLeavesNothing) {
    WriteParent(8);
    EXPECT_TRUE(Fill(5));
    EXPECT_EQ(FromPlace(), (Bytes{0x63, 0xa2, 0x85, 'x', 'x', 'x', 'x', 'x'}));
}

TEST_F(ReservedPlaceTest, OneByteThatIsLeftGoesIntoTheSizeOfTheElement) {
    WriteParent(8);
    EXPECT_TRUE(Fill(4));
    EXPECT_EQ(FromPlace(), (Bytes{0x63, 0xa2, 0x40, 0x04, 'x', 'x', 'x', 'x'}));
}

TEST_F(ReservedPlaceTest, WhatDoesNotFitIsNotWrittenAndMovesNothing) {
    WriteParent(8);
    m_stream.ClearCalls();
    EXPECT_FALSE(Fill(6));
    EXPECT_FALSE(m_place->isFilled());
    EXPECT_TRUE(m_stream.Calls().empty());
    WriteCluster("first");
    EXPECT_EQ(FromPlace(), Joined(kEmptyPlace, "first"));
}

TEST_F(ReservedPlaceTest, IsFilledOnce) {
    WriteParent(8);
    EXPECT_TRUE(Fill(2));
    EXPECT_FALSE(Fill(3));
    EXPECT_EQ(FromPlace(), kFilledPlace);
}

TEST_F(ReservedPlaceTest, AWriteThatFailsIsMadeAgainWhenTheFileIsFinished) {
    WriteParent(8);
    WriteCluster("first");
    m_stream.FailNth(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    EXPECT_TRUE(Fill(2));
    EXPECT_TRUE(m_gathering.takeUntoldLoss());
    WriteCluster("second");
    EXPECT_EQ(FromPlace(), Joined(kEmptyPlace, "firstsecond"));
    FinishFile();
    EXPECT_EQ(FromPlace(), Joined(kFilledPlace, "firstsecond"));
}

TEST_F(ReservedPlaceTest, NothingIsWrittenByAnOutputThatDoesNotGoThere) {
    WriteParent(8);
    WriteCluster("first");
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    m_stream.FailNth(StreamOperation::Seek, 2, STG_E_SEEKERROR);
    EXPECT_TRUE(Fill(2));
    EXPECT_EQ(FromPlace(), Joined(kEmptyPlace, "first"));
    WriteCluster("second");
    FinishFile();
    EXPECT_EQ(FromPlace(), Joined(kFilledPlace, "firstsecond"));
}

TEST_F(ReservedPlaceTest, AnOutputThatDoesNotComeBackLosesClustersRatherThanTheHead) {
    WriteParent(8);
    WriteCluster("first");
    EXPECT_TRUE(Fill(2));
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    m_stream.FailNth(StreamOperation::Seek, 2, STG_E_SEEKERROR);
    WriteCluster("second");
    EXPECT_TRUE(m_gathering.takeUntoldLoss());
    EXPECT_EQ(FromPlace(), Joined(kFilledPlace, "first"));
    WriteCluster("third");
    EXPECT_EQ(FromPlace(), Joined(kFilledPlace, "firstthird"));
    EXPECT_TRUE(m_gathering.isPositionSure());
}

TEST_F(ReservedPlaceTest, AParentThatWasLostIsWrittenAgainWithWhatFilledItsPlace) {
    m_stream.FailNth(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    WriteParent(8);
    WriteCluster("first");
    EXPECT_TRUE(Fill(2));
    FinishFile();
    EXPECT_EQ(FromPlace(), Joined(kFilledPlace, "first"));
}

} // namespace
