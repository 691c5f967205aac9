// What stands on the disk while a configuration is saved, and after a save that fails.
#include "mkvmux/muxer_settings.h"

#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "dshow/base_filter.h"
#include "mkvmux/failure.h"
#include "tests/client/unimplemented_module_config.h"
#include "tests/mkvmux/com_test.h"
#include "tests/settings/scratch_folder.h"
#include "win/handle.h"

namespace mkvmux {
namespace {

using Names = std::vector<std::wstring>;

// A muxer that calls the test back when it is to save its configuration, and saves one byte.
class SavingMuxer final : public CBaseFilter, public test_client::UnimplementedModuleConfig {
  public:
    using WhileSaving = std::function<HRESULT()>;
    SavingMuxer(WhileSaving whileSaving, HRESULT* phr)
        : CBaseFilter(L"SavingMuxer", nullptr, &m_lock, CLSID_MatroskaMuxer, phr),
          m_whileSaving(std::move(whileSaving)) {}

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** object) override {
        return iid == IID_IModuleConfig ? GetInterface(static_cast<IModuleConfig*>(this), object)
                                        : CBaseFilter::NonDelegatingQueryInterface(iid, object);
    }
    int GetPinCount() override { return 0; }
    CBasePin* GetPin(int) override { return nullptr; }

    STDMETHODIMP GetClassID(CLSID* id) noexcept override { return CBaseFilter::GetClassID(id); }
    STDMETHODIMP IsDirty() override { return S_OK; }
    STDMETHODIMP Save(IStream* stream, BOOL) override {
        const HRESULT hr = stream->Write("s", 1, nullptr);
        return FAILED(hr) ? hr : m_whileSaving();
    }

  private:
    CCritSec m_lock;
    WhileSaving m_whileSaving;
};

class MuxerSettingsTest : public test_mkvmux::ComTest {
  protected:
    void Save(SavingMuxer::WhileSaving whileSaving, bool overwrite) {
        HRESULT hr = S_OK;
        const win::ComPtr<IBaseFilter> muxer(new SavingMuxer(std::move(whileSaving), &hr));
        ASSERT_EQ(hr, S_OK);
        MuxerSettings(muxer).SaveTo(m_file, overwrite);
    }

    // What stands in the folder besides the configuration.
    [[nodiscard]] Names Others() const {
        Names names = m_folder.FileNames();
        std::erase(names, L"muxer.cfg");
        return names;
    }

    [[nodiscard]] static win::FileHandle Open(const std::wstring& file, DWORD share) {
        return win::FileHandle(
            CreateFileW(file.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    ScratchFolder m_folder;
    std::wstring m_file = m_folder.File(L"muxer.cfg");
};

TEST_F(MuxerSettingsTest, AConfigurationIsWrittenUnderAnotherNameEachTimeThatNobodyElseCanOpen) {
    Names seen;
    const auto look = [this, &seen] {
        const Names others = Others();
        EXPECT_EQ(others.size(), 1u);
        for (const std::wstring& name : others) {
            EXPECT_FALSE(Open(m_folder.File(name), FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE));
            EXPECT_GE(name.size(), 32u) << "128 random bits";
            seen.push_back(name);
        }
        return S_OK;
    };
    Save(look, false);
    Save(look, true);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_NE(seen[0], seen[1]);
    EXPECT_EQ(Others(), Names());
    EXPECT_EQ(FileText(m_file).size(), sizeof(CLSID) + 1);
}

TEST_F(MuxerSettingsTest, ASaveThatFailsLeavesTheOldConfigurationAndNothingBesideIt) {
    WriteFileText(m_file, "old");
    EXPECT_THROW(Save([] { return E_FAIL; }, true), Failure);
    {
        const win::FileHandle reader = Open(m_file, FILE_SHARE_READ);
        EXPECT_THROW(Save([] { return S_OK; }, true), Failure);
    }
    EXPECT_EQ(FileText(m_file), "old");
    EXPECT_EQ(Others(), Names());
}

TEST_F(MuxerSettingsTest, WhatAnotherMakesUnderTheNameInTheMeantimeStaysWithoutLeaveToOverwrite) {
    const auto intrude = [this] {
        WriteFileText(m_file, "somebody else's");
        return S_OK;
    };
    EXPECT_THROW(Save(intrude, false), Failure);
    EXPECT_EQ(FileText(m_file), "somebody else's");
    EXPECT_EQ(Others(), Names());
}

} // namespace
} // namespace mkvmux
