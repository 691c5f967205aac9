// BackEnd: the registry or the XML back end of one direction, or the one that answers when there is none of these.
//
// Owner: the back end, which it destroys as the class it made. Threads: one at a time. Errors: false; std::bad_alloc.
#pragma once

#include <cstdint>
#include <memory>

#include "win/platform.h"

namespace settings_kind {
inline constexpr std::int32_t kRegistry = 0;
inline constexpr std::int32_t kXml = 1;
inline constexpr std::int32_t kNone = 2;
} // namespace settings_kind

inline constexpr wchar_t kSettingsPathPrefix[] = L"/preferences/RegistrySettings";

template <typename Base, typename Null, typename Registry, typename Xml>
class BackEnd {
  public:
    // Makes the back end of a kind; one of the same kind stays. Any other kind closes what there is, and fails.
    [[nodiscard]] bool Select(std::int32_t kind) {
        if (m_made && kind == m_kind) {
            return true;
        }
        Close();
        if (kind == settings_kind::kRegistry) {
            Take(new Registry(HKEY_CURRENT_USER));
        } else if (kind == settings_kind::kXml) {
            Take(new Xml(kSettingsPathPrefix));
        } else {
            return false;
        }
        m_kind = kind;
        return true;
    }
    void Close() {
        m_kind = settings_kind::kNone;
        if (const auto closing = std::move(m_made)) {
            closing->close();
        }
    }

    [[nodiscard]] std::int32_t Kind() const { return m_kind; }
    // Never null, so that nobody asks whether there is one.
    Base* operator->() { return m_made ? m_made.get() : &m_null; }

  private:
    template <typename Kind>
    void Take(Kind* backEnd) {
        m_made = {backEnd, [](Base* owned) { delete static_cast<Kind*>(owned); }};
    }

    Null m_null;
    std::unique_ptr<Base, void (*)(Base*)> m_made{nullptr, [](Base*) {}};
    std::int32_t m_kind = settings_kind::kNone;
};
