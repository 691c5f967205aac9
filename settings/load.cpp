#include "settings/load.h"

#include "settings/failure.h"

load_t::~load_t() {
    try {
        close();
    } catch (const settings_failure&) { // NOLINT(bugprone-empty-catch): nobody is left to be told
    }
}

bool load_t::select(std::int32_t kind) {
    return Guarded([&] { return m_backEnd.Select(kind); });
}

bool load_t::open_file(const std::wstring& section, const std::wstring& file) {
    return select(settings_kind::kXml) && m_backEnd->open_file(section, file);
}

bool load_t::open_key(const std::wstring& section, HKEY root) {
    const bool ready = kind() != settings_kind::kNone || select(settings_kind::kRegistry);
    return ready && m_backEnd->open_key(section, root);
}

void load_t::close() {
    m_backEnd.Close();
}

std::uint32_t load_t::child_count() {
    return m_backEnd->child_count();
}

std::wstring load_t::child_name(std::uint32_t index) {
    return m_backEnd->child_name(index);
}

std::uint32_t load_t::value_size(const std::wstring& key) {
    return m_backEnd->value_size(key);
}

std::int32_t load_t::load(const std::wstring& key, std::int32_t fallback) {
    return m_backEnd->load(key, fallback);
}

std::uint32_t load_t::load(const std::wstring& key, std::uint32_t fallback) {
    return m_backEnd->load(key, fallback);
}

std::int32_t load_t::load_int32(const std::wstring& key, std::int32_t fallback) {
    return m_backEnd->load_int32(key, fallback);
}

double load_t::load_double(const std::wstring& key, double fallback) {
    return m_backEnd->load_double(key, fallback);
}

std::int64_t load_t::load_int64(const std::wstring& key, std::int64_t fallback) {
    return m_backEnd->load_int64(key, fallback);
}

bool load_t::load_binary(const std::wstring& key, void* buffer, std::uint32_t& size) {
    return m_backEnd->load_binary(key, buffer, size);
}

std::wstring load_t::load_string(const std::wstring& key, const std::wstring& fallback) {
    return m_backEnd->load_string(key, fallback);
}
