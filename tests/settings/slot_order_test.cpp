// The order of the interfaces' slots, which is part of their contract.
#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "settings/base_load.h"
#include "settings/base_save.h"

namespace {

// Counted from 1. In the ABI of this compiler a pointer to a virtual member holds its table offset plus one.
template <typename Member>
size_t SlotOf(Member member) {
    size_t offset = 0;
    std::memcpy(&offset, &member, sizeof(offset));
    return (offset - 1) / sizeof(void*) + 1;
}

using Key = const std::wstring&;

TEST(SlotOrder, OfTheReadingInterface) {
    EXPECT_EQ(1U, SlotOf(&base_load_t::open_file));
    EXPECT_EQ(2U, SlotOf(&base_load_t::open_key));
    EXPECT_EQ(3U, SlotOf(&base_load_t::close));
    EXPECT_EQ(4U, SlotOf(&base_load_t::child_count));
    EXPECT_EQ(5U, SlotOf(&base_load_t::child_name));
    EXPECT_EQ(6U, SlotOf(&base_load_t::value_size));
    EXPECT_EQ(7U, SlotOf(static_cast<std::int32_t (base_load_t::*)(Key, std::int32_t)>(&base_load_t::load)));
    EXPECT_EQ(8U, SlotOf(static_cast<std::uint32_t (base_load_t::*)(Key, std::uint32_t)>(&base_load_t::load)));
    EXPECT_EQ(9U, SlotOf(&base_load_t::load_int32));
    EXPECT_EQ(10U, SlotOf(&base_load_t::load_double));
    EXPECT_EQ(11U, SlotOf(&base_load_t::load_int64));
    EXPECT_EQ(12U, SlotOf(&base_load_t::load_binary));
    EXPECT_EQ(13U, SlotOf(&base_load_t::load_string));
}

TEST(SlotOrder, OfTheWritingInterface) {
    EXPECT_EQ(1U, SlotOf(&base_save_t::open_file));
    EXPECT_EQ(2U, SlotOf(&base_save_t::open_key));
    EXPECT_EQ(3U, SlotOf(&base_save_t::close));
    EXPECT_EQ(4U, SlotOf(&base_save_t::delete_section));
    EXPECT_EQ(5U, SlotOf(static_cast<bool (base_save_t::*)(Key, std::int32_t)>(&base_save_t::save)));
    EXPECT_EQ(6U, SlotOf(static_cast<bool (base_save_t::*)(Key, std::uint32_t)>(&base_save_t::save)));
    EXPECT_EQ(7U, SlotOf(&base_save_t::save_int32));
    EXPECT_EQ(8U, SlotOf(&base_save_t::save_double));
    EXPECT_EQ(9U, SlotOf(&base_save_t::save_int64));
    EXPECT_EQ(10U, SlotOf(&base_save_t::save_binary));
    EXPECT_EQ(11U, SlotOf(&base_save_t::save_string));
}

TEST(SlotOrder, NeitherInterfaceHasAVirtualDestructor) {
    EXPECT_FALSE(std::has_virtual_destructor_v<base_load_t>);
    EXPECT_FALSE(std::has_virtual_destructor_v<base_save_t>);
}

} // namespace
