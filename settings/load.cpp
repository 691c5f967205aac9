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
    return select(settings_kind::kXml) && m_backEnd.Get()->open_file(section, file);
}

bool load_t::open_key(const std::wstring& section, HKEY root) {
    const bool ready = m_backEnd.Get() != nullptr || select(settings_kind::kRegistry);
    return ready && m_backEnd.Get()->open_key(section, root);
}

void load_t::close() {
    m_backEnd.Close();
}

std::uint32_t load_t::child_count() {
    return m_backEnd.Get() == nullptr ? 0 : m_backEnd.Get()->child_count();
}

std::wstring load_t::child_name(std::uint32_t index) {
    return m_backEnd.Get() == nullptr ? std::wstring() : m_backEnd.Get()->child_name(index);
}

std::uint32_t load_t::value_size(const std::wstring& key) {
    return m_backEnd.Get() == nullptr ? kAbsentValue : m_backEnd.Get()->value_size(key);
}

std::int32_t load_t::load(const std::wstring& key, std::int32_t fallback) {
    return m_backEnd.Get() == nullptr ? fallback : m_backEnd.Get()->load(key, fallback);
}

std::uint32_t load_t::load(const std::wstring& key, std::uint32_t fallback) {
    return m_backEnd.Get() == nullptr ? fallback : m_backEnd.Get()->load(key, fallback);
}

std::int32_t load_t::load_int32(const std::wstring& key, std::int32_t fallback) {
    return m_backEnd.Get() == nullptr ? fallback : m_backEnd.Get()->load_int32(key, fallback);
}

double load_t::load_double(const std::wstring& key, double fallback) {
    return m_backEnd.Get() == nullptr ? fallback : m_backEnd.Get()->load_double(key, fallback);
}

std::int64_t load_t::load_int64(const std::wstring& key, std::int64_t fallback) {
    return m_backEnd.Get() == nullptr ? fallback : m_backEnd.Get()->load_int64(key, fallback);
}

bool load_t::load_binary(const std::wstring& key, void* buffer, std::uint32_t& size) {
    if (m_backEnd.Get() == nullptr) {
        size = 0;
        return false;
    }
    return m_backEnd.Get()->load_binary(key, buffer, size);
}

std::wstring load_t::load_string(const std::wstring& key, const std::wstring& fallback) {
    return m_backEnd.Get() == nullptr ? fallback : m_backEnd.Get()->load_string(key, fallback);
}
