#include "settings/save.h"

#include "settings/failure.h"

save_t::~save_t() {
    try {
        close();
    } catch (const settings_failure&) { // NOLINT(bugprone-empty-catch): nobody is left to be told
    }
}

bool save_t::select(std::int32_t kind) {
    return Guarded([&] { return m_backEnd.Select(kind); });
}

bool save_t::open_file(const std::wstring& section, const std::wstring& file) {
    return select(settings_kind::kXml) && m_backEnd->open_file(section, file);
}

bool save_t::open_key(const std::wstring& section, HKEY root) {
    const bool ready = kind() != settings_kind::kNone || select(settings_kind::kRegistry);
    return ready && m_backEnd->open_key(section, root);
}

void save_t::close() {
    m_backEnd.Close();
}

bool save_t::delete_section(const std::wstring& section) {
    return m_backEnd->delete_section(section);
}

bool save_t::save(const std::wstring& key, std::int32_t value) {
    return m_backEnd->save(key, value);
}

bool save_t::save(const std::wstring& key, std::uint32_t value) {
    return m_backEnd->save(key, value);
}

bool save_t::save_int32(const std::wstring& key, std::int32_t value) {
    return m_backEnd->save_int32(key, value);
}

bool save_t::save_double(const std::wstring& key, double value) {
    return m_backEnd->save_double(key, value);
}

bool save_t::save_int64(const std::wstring& key, std::int64_t value) {
    return m_backEnd->save_int64(key, value);
}

bool save_t::save_binary(const std::wstring& key, const void* data, std::uint32_t size) {
    return m_backEnd->save_binary(key, data, size);
}

bool save_t::save_string(const std::wstring& key, const std::wstring& value) {
    return m_backEnd->save_string(key, value);
}
