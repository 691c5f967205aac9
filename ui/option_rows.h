// COptionRows: the rows of the settings page for what strict files are told: profile, title, statistics and index of
// the file, and the flags of each track. A filter that does not know an option has no row for it.
//
// Owner: the page; tree and filter stay the page's. Threads: the one that shows the page. Errors: HRESULTs of the
// filter; std::bad_alloc.
#pragma once

#include <string>

#include "client/module_config.h"
#include "ui/prop_tree.h"

class COptionRows {
  public:
    // Forgets the rows of an earlier tree.
    void AddOfFile(CPropTree& tree, HTREEITEM parent, const client::ModuleConfig& config);
    static void AddFlags(CPropTree& tree, HTREEITEM parent, const client::ModuleConfig& config, INT32 index);
    void Forget();

    // What is shown, changed or not, but for title and index, which are set only when they were edited, so that what a
    // program has set meanwhile stays. An index that is no number of minutes or bytes is E_INVALIDARG. All are tried;
    // the first failure is told.
    HRESULT ApplyOfFile(const CPropTree& tree, const client::ModuleConfig& config);
    // Of the rows below that item.
    static HRESULT ApplyFlags(const CPropTree& tree, HTREEITEM parent, const client::ModuleConfig& config, INT32 index);

  private:
    HRESULT ApplyTitle(const CPropTree& tree, const client::ModuleConfig& config);
    HRESULT ApplyIndex(const CPropTree& tree, const client::ModuleConfig& config);

    HTREEITEM m_profile = nullptr; // this and those below: null when the filter does not know them
    HTREEITEM m_title = nullptr;
    HTREEITEM m_statistics = nullptr;
    HTREEITEM m_index = nullptr;
    std::wstring m_knownTitle; // as it was read or set
    std::wstring m_knownIndex;
};
