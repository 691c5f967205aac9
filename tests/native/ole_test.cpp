// BSTRs, VARIANTs, the task allocator and identifiers answer as documented. Built for both lanes.
#include <gtest/gtest.h>

#include "win/bstr.h"
#include "win/wide_string.h"

namespace {

// {01020304-0506-0708-090A-0B0C0D0E0F10}: nobody registers it
constexpr GUID kUnknownClass{0x01020304, 0x0506, 0x0708, {0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f, 0x10}};

TEST(BstrContract, KeepsZeroCharactersAndTerminatesAfterThem) {
    const WCHAR text[] = {'a', 0, 'b'};
    const BSTR copy = SysAllocStringLen(text, 3);
    EXPECT_EQ(SysStringLen(copy), 3U);
    EXPECT_EQ(SysStringByteLen(copy), 6U);
    EXPECT_EQ(WideString(copy, 3), WideString(text, 3));
    EXPECT_EQ(copy[3], 0);
    SysFreeString(copy);
}

TEST(BstrContract, NullIsAnEmptyText) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    SysFreeString(nullptr);
}

TEST(BstrContract, ByteLengthMayBeOdd) {
    const BSTR bytes = SysAllocStringByteLen("abc", 3);
    EXPECT_EQ(SysStringByteLen(bytes), 3U);
    EXPECT_EQ(SysStringLen(bytes), 1U);
    SysFreeString(bytes);
}

TEST(BstrContract, ReallocationReplacesTheText) {
    BSTR text = SysAllocString(OLESTR("old"));
    EXPECT_TRUE(SysReAllocString(&text, OLESTR("longer than before")));
    EXPECT_EQ(WideString(text), OLESTR("longer than before"));
    SysFreeString(text);
}

TEST(VariantContract, ClearFreesTheTextAndIsEmptyAfterwards) {
    VARIANT variant;
    VariantInit(&variant);
    EXPECT_EQ(V_VT(&variant), VT_EMPTY);
    V_VT(&variant) = VT_BSTR;
    V_BSTR(&variant) = SysAllocString(OLESTR("text"));
    EXPECT_EQ(VariantClear(&variant), S_OK);
    EXPECT_EQ(V_VT(&variant), VT_EMPTY);
}

TEST(VariantContract, ClearLeavesWhatIsReferredTo) {
    BSTR text = SysAllocString(OLESTR("text"));
    VARIANT variant;
    V_VT(&variant) = VT_BSTR | VT_BYREF;
    V_BSTRREF(&variant) = &text;
    EXPECT_EQ(VariantClear(&variant), S_OK);
    EXPECT_EQ(SysStringLen(text), 4U);
    SysFreeString(text);
}

TEST(VariantContract, CopyHasATextOfItsOwn) {
    VARIANT source;
    V_VT(&source) = VT_BSTR;
    V_BSTR(&source) = SysAllocString(OLESTR("text"));
    VARIANT copy;
    VariantInit(&copy);
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_NE(V_BSTR(&copy), V_BSTR(&source));
    VariantClear(&source);
    EXPECT_EQ(WideString(V_BSTR(&copy)), OLESTR("text"));
    VariantClear(&copy);
}

TEST(VariantContract, UnknownTypeIsRefused) {
    VARIANT variant = {};
    V_VT(&variant) = 0x0fff;
    EXPECT_EQ(VariantClear(&variant), DISP_E_BADVARTYPE);
}

TEST(TaskMemory, GrowsAndKeepsTheContent) {
    auto* block = static_cast<char*>(CoTaskMemAlloc(2));
    block[0] = 'a';
    block = static_cast<char*>(CoTaskMemRealloc(block, 5000));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block[0], 'a');
    CoTaskMemFree(block);
    CoTaskMemFree(nullptr);
}

TEST(TaskMemory, ImpossibleSizeGivesNone) {
    volatile SIZE_T size = ~SIZE_T{0} - 100; // the compiler would refuse a constant
    EXPECT_EQ(CoTaskMemAlloc(size), nullptr);
}

TEST(Com, ClassThatNobodyRegisteredIsUnknown) {
    ASSERT_GE(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    void* object = &object;
    EXPECT_EQ(CoCreateInstance(kUnknownClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
    CoUninitialize();
}

TEST(Com, SecondInitialisationIsAllowedInTheSameModelOnly) {
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
    CoUninitialize();
}

TEST(Guid, TextIsInRegistryForm) {
    OLECHAR text[39];
    EXPECT_EQ(StringFromGUID2(kUnknownClass, text, 39), 39);
    EXPECT_EQ(WideString(text), OLESTR("{01020304-0506-0708-090A-0B0C0D0E0F10}"));
    EXPECT_EQ(StringFromGUID2(kUnknownClass, text, 38), 0);
}

TEST(Guid, PlatformIdentifiersHaveTheirPublishedValues) {
    const auto text = [](REFGUID guid) {
        OLECHAR buffer[39] = {};
        StringFromGUID2(guid, buffer, 39);
        return WideString(buffer);
    };
    EXPECT_EQ(text(IID_IUnknown), OLESTR("{00000000-0000-0000-C000-000000000046}"));
    EXPECT_EQ(text(IID_IStream), OLESTR("{0000000C-0000-0000-C000-000000000046}"));
    EXPECT_EQ(text(MEDIATYPE_Video), OLESTR("{73646976-0000-0010-8000-00AA00389B71}"));
    EXPECT_EQ(text(FORMAT_WaveFormatEx), OLESTR("{05589F81-C356-11CE-BF01-00AA0055595A}"));
    EXPECT_EQ(text(GUID_NULL), OLESTR("{00000000-0000-0000-0000-000000000000}"));
}

} // namespace
