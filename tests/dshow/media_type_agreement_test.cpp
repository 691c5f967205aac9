#include <gtest/gtest.h>

#include "tests/dshow/connection_fixture.h"

namespace {

using dshow_test::TagOf;
using dshow_test::TypeWithTag;

// How two pins find the type of their connection.
class MediaTypeAgreementTest : public dshow_test::ConnectionTest {};

TEST_F(MediaTypeAgreementTest, WithoutAnyProposalThereIsNoAcceptableType) {
    EXPECT_EQ(output.Connect(&input, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    output.script.types = {TypeWithTag(1)};
    input.script.checkMediaType = Only({});
    EXPECT_EQ(output.Connect(&input, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
}

TEST_F(MediaTypeAgreementTest, ReceiverProposesFirst) {
    output.script.types = {TypeWithTag(1), TypeWithTag(2)};
    input.script.types = {TypeWithTag(3), TypeWithTag(4)};
    ASSERT_EQ(output.Connect(&input, nullptr), S_OK);
    EXPECT_EQ(ConnectedTag(), 3);
}

TEST_F(MediaTypeAgreementTest, PinThatWantsItProposesFirst) {
    output.script.types = {TypeWithTag(1), TypeWithTag(2)};
    input.script.types = {TypeWithTag(3), TypeWithTag(4)};
    output.TryMyTypesFirst();
    ASSERT_EQ(output.Connect(&input, nullptr), S_OK);
    EXPECT_EQ(ConnectedTag(), 1);
}

TEST_F(MediaTypeAgreementTest, ProposalsAreTriedUntilOneSuits) {
    output.script.types = {TypeWithTag(1), TypeWithTag(2)};
    input.script.types = {TypeWithTag(3), TypeWithTag(4)};
    input.script.checkMediaType = Only({2, 4});
    output.script.checkMediaType = Only({2, 3});
    ASSERT_EQ(output.Connect(&input, nullptr), S_OK);
    EXPECT_EQ(ConnectedTag(), 2);
}

TEST_F(MediaTypeAgreementTest, PartialTypeSelectsAmongTheProposals) {
    CMediaType audio = TypeWithTag(1);
    audio.SetType(&MEDIATYPE_Audio);
    input.script.types = {audio, TypeWithTag(2)};
    CMediaType partial(&MEDIATYPE_Video);
    ASSERT_EQ(output.Connect(&input, &partial), S_OK);
    EXPECT_EQ(ConnectedTag(), 2);
    EXPECT_EQ(*output.CurrentMediaType().Type(), MEDIATYPE_Video);
    Disconnect();
    partial.SetSubtype(&MEDIASUBTYPE_RGB32);
    EXPECT_EQ(output.Connect(&input, &partial), VFW_E_NO_ACCEPTABLE_TYPES);
}

TEST_F(MediaTypeAgreementTest, TellingFailureOfAProposalIsReported) {
    input.script.types = {TypeWithTag(1), TypeWithTag(2)};
    input.script.checkMediaType = [](const CMediaType& type) { return TagOf(type) == 1 ? VFW_E_NO_TRANSPORT : E_FAIL; };
    EXPECT_EQ(output.Connect(&input, nullptr), VFW_E_NO_TRANSPORT);
}

TEST_F(MediaTypeAgreementTest, FullySpecifiedTypeIsTheOnlyOneTried) {
    input.script.types = {TypeWithTag(1)};
    input.script.checkMediaType = Only({1});
    EXPECT_EQ(Connect(TypeWithTag(2)), VFW_E_TYPE_NOT_ACCEPTED);
}

} // namespace
