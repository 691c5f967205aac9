#include "win/owned_bytes.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

class RememberingHome final : public win::ByteHome {
  public:
    void TakeBack(BYTE* bytes) noexcept override { returned.push_back(bytes); }

    std::vector<BYTE*> returned;
};

TEST(OwnedBytesTest, BytesGoBackToTheirHomeOnce) {
    RememberingHome home;
    BYTE bytes[4] = {};
    {
        win::OwnedBytes first(bytes, win::ByteReturn(home));
        const win::OwnedBytes second = std::move(first);
        EXPECT_EQ(nullptr, first);
        EXPECT_TRUE(home.returned.empty());
    }
    EXPECT_EQ(std::vector<BYTE*>{bytes}, home.returned);
}

TEST(OwnedBytesTest, WhatTheHeapGaveTakesThePlaceOfWhatAHomeGave) {
    RememberingHome home;
    BYTE bytes[4] = {};
    win::OwnedBytes owned(bytes, win::ByteReturn(home));
    owned = std::make_unique<BYTE[]>(4);
    EXPECT_EQ(std::vector<BYTE*>{bytes}, home.returned);
    owned.reset(); // to the heap: a sanitizer sees to it
    EXPECT_EQ(1u, home.returned.size());
}

} // namespace
