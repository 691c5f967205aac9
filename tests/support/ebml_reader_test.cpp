#include "tests/support/ebml_reader.h"

#include <gtest/gtest.h>

#include "tests/support/byte_builder.h"

namespace test_support {
namespace {

using namespace ebml_id;

TEST(EbmlNumbers, IdentifiersKeepTheirMarker) {
    const RawBytes bytes{0x1a, 0x45, 0xdf, 0xa3};
    const std::optional<EbmlNumber> id = ReadEbmlId(bytes);
    ASSERT_TRUE(id);
    EXPECT_EQ(id->value, kHead);
    EXPECT_EQ(id->length, 4u);
}

TEST(EbmlNumbers, IdentifiersThatAreTooLongOrReservedAreRefused) {
    EXPECT_FALSE(ReadEbmlId(RawBytes{}));
    EXPECT_FALSE(ReadEbmlId(RawBytes{0x00}));
    EXPECT_FALSE(ReadEbmlId(RawBytes{0x08, 1, 2, 3, 4})) << "five bytes";
    EXPECT_FALSE(ReadEbmlId(RawBytes{0x1a, 0x45, 0xdf})) << "its end is missing";
    EXPECT_FALSE(ReadEbmlId(RawBytes{0xff})) << "all ones";
    EXPECT_FALSE(ReadEbmlId(RawBytes{0x40, 0x00})) << "all zeros";
    EXPECT_TRUE(ReadEbmlId(RawBytes{0x80})) << "ChapterDisplay";
    EXPECT_FALSE(ReadEbmlId(RawBytes{0x40, 0x6c})) << "0xEC in two bytes";
    EXPECT_TRUE(ReadEbmlId(RawBytes{0x40, 0x7f})) << "all ones in one byte, so two are the shortest";
}

TEST(EbmlNumbers, SizesLoseTheirMarker) {
    const std::optional<EbmlNumber> one = ReadEbmlSize(RawBytes{0x85});
    ASSERT_TRUE(one);
    EXPECT_EQ(one->value, 5u);
    EXPECT_FALSE(one->allOnes);
    const std::optional<EbmlNumber> five = ReadEbmlSize(RawBytes{0x08, 0, 0, 1, 2});
    ASSERT_TRUE(five);
    EXPECT_EQ(five->value, 258u);
    EXPECT_EQ(five->length, 5u);
    const std::optional<EbmlNumber> eight = ReadEbmlSize(RawBytes{0x01, 0, 0, 0, 0, 0, 0, 9});
    ASSERT_TRUE(eight);
    EXPECT_EQ(eight->value, 9u);
}

TEST(EbmlNumbers, AllOnesIsTheUnknownSizeInEveryLength) {
    for (uint32_t length = 1; length <= 8; ++length) {
        RawBytes bytes = RawSize((uint64_t{1} << (7 * length)) - 1, length);
        const std::optional<EbmlNumber> size = ReadEbmlSize(bytes);
        ASSERT_TRUE(size) << length;
        EXPECT_TRUE(size->allOnes) << length;
        bytes.back() ^= 1;
        EXPECT_FALSE(ReadEbmlSize(bytes)->allOnes) << length;
    }
}

TEST(EbmlValues, IntegersOfEveryLength) {
    const RawBytes bytes =
        Concatenate({RawElement(kTimestamp, {}), RawElement(kTimestamp, {0x01, 0x00}),
                     RawElement(kReferenceBlock, {0xff}), RawElement(kReferenceBlock, {0x80, 0x00}),
                     RawElement(kReferenceBlock, RawBytes(8, 0xff)), RawElement(kTimestamp, RawBytes(9, 1))});
    const EbmlTree tree = ReadEbml(bytes);
    ASSERT_EQ(tree.elements.size(), 6u);
    EXPECT_EQ(UnsignedOf(bytes, tree.elements[0]), 0u);
    EXPECT_EQ(UnsignedOf(bytes, tree.elements[1]), 256u);
    EXPECT_EQ(SignedOf(bytes, tree.elements[2]), -1);
    EXPECT_EQ(SignedOf(bytes, tree.elements[3]), -32768);
    EXPECT_EQ(SignedOf(bytes, tree.elements[4]), -1);
    EXPECT_EQ(UnsignedOf(bytes, tree.elements[5]), std::nullopt) << "nine bytes are no integer";
}

TEST(EbmlValues, FloatsAndTexts) {
    const RawBytes bytes = Concatenate({RawElement(kDuration, {0x40, 0x49, 0x0f, 0xdb}),
                                        RawElement(kDuration, {0x3f, 0xf8, 0, 0, 0, 0, 0, 0}),
                                        RawElement(kDuration, {1, 2, 3}), RawElement(kCodecId, {'V', '_', 0, 'x'})});
    const EbmlTree tree = ReadEbml(bytes);
    ASSERT_EQ(tree.elements.size(), 4u);
    EXPECT_FLOAT_EQ(static_cast<float>(FloatOf(bytes, tree.elements[0]).value_or(0)), 3.14159265f);
    EXPECT_EQ(FloatOf(bytes, tree.elements[1]), 1.5);
    EXPECT_EQ(FloatOf(bytes, tree.elements[2]), std::nullopt);
    EXPECT_EQ(TextOf(bytes, tree.elements[3]), "V_");
}

TEST(EbmlTreeReading, OffsetsAndSizesOfNestedElements) {
    const RawBytes bytes =
        RawElement(kInfo, Concatenate({RawUnsigned(kTimestampScale, 1000000), RawText(kMuxingApp, "x")}), 5);
    const EbmlTree tree = ReadEbml(Concatenate({RawElement(kVoid, {0, 0}), RawElement(kSegment, bytes, 8)}));
    ASSERT_EQ(tree.problems, std::vector<std::string>());
    const EbmlElement* const segment = tree.Child(kSegment);
    ASSERT_NE(segment, nullptr);
    EXPECT_EQ(segment->offset, 4u);
    EXPECT_EQ(segment->idLength, 4u);
    EXPECT_EQ(segment->sizeLength, 8u);
    const EbmlElement* const info = segment->Child(kInfo);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->offset, 16u);
    EXPECT_EQ(info->DataOffset(), 25u);
    EXPECT_EQ(info->dataSize, 11u);
    EXPECT_EQ(info->children.size(), 2u);
    EXPECT_EQ(info->children[1].offset, 32u);
    EXPECT_EQ(info->children[1].End(), segment->End());
}

TEST(EbmlTreeReading, UnknownSizesEndWhereAnElementCannotStand) {
    const RawBytes cluster = RawUnsigned(kTimestamp, 7);
    const RawBytes unknown{0xff};
    const RawBytes bytes = Concatenate({RawId(kSegment), unknown, RawId(kCluster), unknown, cluster, RawId(kCluster),
                                        unknown, cluster, RawElement(kTags, {})});
    const EbmlTree tree = ReadEbml(bytes);
    EXPECT_EQ(tree.problems, std::vector<std::string>());
    EXPECT_EQ(tree.cuts, std::vector<std::string>());
    const EbmlElement* const segment = tree.Child(kSegment);
    ASSERT_NE(segment, nullptr);
    EXPECT_TRUE(segment->unknownSize);
    EXPECT_EQ(segment->End(), bytes.size());
    ASSERT_EQ(segment->children.size(), 3u);
    EXPECT_EQ(segment->children[0].dataSize, cluster.size());
    EXPECT_EQ(segment->children[1].dataSize, cluster.size());
    EXPECT_EQ(segment->children[2].id, kTags);
}

TEST(EbmlTreeReading, AnUnknownSizeElsewhereIsAProblem) {
    const EbmlTree tree = ReadEbml(Concatenate({RawId(kInfo), {0xff}, RawText(kMuxingApp, "x")}));
    ASSERT_EQ(tree.problems.size(), 1u);
    EXPECT_NE(tree.problems[0].find("Info has an unknown size"), std::string::npos);
}

TEST(EbmlTreeReading, AChildThatReachesBeyondItsParentIsAProblem) {
    const RawBytes info =
        Concatenate({RawId(kInfo), RawSize(4), RawId(kMuxingApp), RawSize(100), {'x'}, RawBytes(200, 0)});
    const EbmlTree tree = ReadEbml(RawElement(kSegment, info, 2));
    ASSERT_FALSE(tree.problems.empty());
    EXPECT_NE(tree.problems[0].find("MuxingApp of 100 bytes reaches beyond the 1 that are there"), std::string::npos)
        << tree.problems[0];
    EXPECT_TRUE(tree.cuts.empty()) << "the file goes on";
}

TEST(EbmlTreeReading, UnknownAndMisplacedElementsAreProblems) {
    const EbmlTree tree =
        ReadEbml(RawElement(kSegment, Concatenate({RawUnsigned(kTrackNumber, 1), RawElement(0x4fff, {1})})));
    ASSERT_EQ(tree.problems.size(), 2u);
    EXPECT_NE(tree.problems[0].find("TrackNumber cannot stand in Segment"), std::string::npos);
    EXPECT_NE(tree.problems[1].find("unknown element 0x4FFF"), std::string::npos);
}

TEST(EbmlTreeReading, EndlessNestingEnds) {
    constexpr uint32_t kSimpleTag = 0x67c8;
    RawBytes bytes;
    for (int depth = 0; depth < 200; ++depth) {
        bytes = RawElement(kSimpleTag, bytes, 4);
    }
    const EbmlTree tree = ReadEbml(bytes);
    ASSERT_FALSE(tree.problems.empty());
    EXPECT_NE(tree.problems.back().find("nested too deeply"), std::string::npos);
}

TEST(EbmlTreeReading, ComplaintsAreBounded) {
    RawBytes bytes;
    for (int i = 0; i < 5000; ++i) {
        const RawBytes misplaced = RawUnsigned(kTrackNumber, 1);
        bytes.insert(bytes.end(), misplaced.begin(), misplaced.end());
    }
    EXPECT_EQ(ReadEbml(bytes).problems.size(), 1000u);
}

} // namespace
} // namespace test_support
