// Callers that cannot be trusted: every method of both property pages with nothing, with rubbish, and out of turn.
#include <gtest/gtest.h>

#include <qrx_mkvmuxer.h>

#include "tests/client/fake_module_config.h"
#include "tests/support/interface_table.h"
#include "tests/support/known_interfaces.h"
#include "tests/ui/page_rig.h"

using namespace ui_test;
using namespace test_support;
using test_client::FakeModuleConfig;

namespace {

constexpr RECT kInsideOut{100, 100, -100, -100};

// A parent that is no window.
HWND NoWindow() {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): it is to be none
    return reinterpret_cast<HWND>(static_cast<UINT_PTR>(0x5b5b5b5a));
}

HRESULT ActivateOn(IPropertyPage& page, HWND parent) {
    return page.Activate(parent, &kInsideOut, 77);
}

// Objects: a page is fresh, or has its site and object, or is shown as well.
InterfaceTable<IPropertyPage> PageTable() {
    const Answers shown(E_UNEXPECTED, E_UNEXPECTED, S_OK);
    InterfaceTable<IPropertyPage> table("IPropertyPage");
    table.Nulls("SetPageSite", &IPropertyPage::SetPageSite, {E_UNEXPECTED, S_OK, S_OK})
        .Nulls("Activate", &IPropertyPage::Activate, E_POINTER)
        .With("Activate on no window", &IPropertyPage::Activate,
              [](IPropertyPage& p) { return ActivateOn(p, NoWindow()); },
              {E_UNEXPECTED, HRESULT_FROM_WIN32(ERROR_INVALID_WINDOW_HANDLE), E_UNEXPECTED})
        .Nulls("Deactivate", &IPropertyPage::Deactivate, shown)
        .Nulls("GetPageInfo", &IPropertyPage::GetPageInfo, E_POINTER)
        .Nulls("SetObjects", &IPropertyPage::SetObjects, S_OK) // none is an answer
        .With(
            "SetObjects without objects", &IPropertyPage::SetObjects,
            [](IPropertyPage& p) { return p.SetObjects(1, nullptr); }, E_POINTER)
        .With(
            "SetObjects of no object", &IPropertyPage::SetObjects,
            [](IPropertyPage& p) {
                IUnknown* none = nullptr;
                return p.SetObjects(1, &none);
            },
            E_POINTER)
        .With(
            "SetObjects of more than there can be", &IPropertyPage::SetObjects,
            [](IPropertyPage& p) { return p.SetObjects(0xffffffff, nullptr); }, E_UNEXPECTED)
        .With("Show of a wild value", &IPropertyPage::Show, [](IPropertyPage& p) { return p.Show(0x5b5b5b5b); },
              {E_UNEXPECTED, E_UNEXPECTED, E_INVALIDARG})
        .Nulls("Show", &IPropertyPage::Show, shown) // hides
        .Nulls("Move", &IPropertyPage::Move, E_POINTER)
        .With(
            "Move inside out", &IPropertyPage::Move, [](IPropertyPage& p) { return p.Move(&kInsideOut); }, shown)
        .Nulls("IsPageDirty", &IPropertyPage::IsPageDirty, S_FALSE)
        .Nulls("Apply", &IPropertyPage::Apply, {E_UNEXPECTED, S_OK, S_OK})
        .Nulls("Help", &IPropertyPage::Help, E_NOTIMPL)
        .Nulls("TranslateAccelerator", &IPropertyPage::TranslateAccelerator, E_NOTIMPL);
    return table;
}

InterfaceTable<IPropertyPage>::Bring PageOf(REFCLSID clsid) {
    return [clsid](CallState state, const std::function<void(IPropertyPage&)>& call) {
        FakeModuleConfig object;
        PageRig rig(clsid);
        EXPECT_EQ(std::set<std::string>({"IPropertyPage", "IUnknown"}), InterfacesOf(rig.Page()));
        if (state != CallState::Fresh) {
            ASSERT_EQ(S_OK, rig.Page().SetPageSite(&rig.Site()));
            ASSERT_EQ(S_OK, rig.SetObject(&object));
        }
        if (state == CallState::Streaming) {
            ASSERT_EQ(S_OK, rig.Activate());
        }
        call(rig.Page());
        (void)rig.Page().Deactivate();
    };
}

TEST(PageCallers, EveryMethodOfTheAboutPageAnswersWhateverItIsGiven) {
    PageTable().Walk(PageOf(CLSID_MKVMuxerAboutPage));
}

TEST(PageCallers, EveryMethodOfTheSettingsPageAnswersWhateverItIsGiven) {
    PageTable().Walk(PageOf(CLSID_MKVMuxerPropertyPage));
}

} // namespace
