// Golden: the bytes of saved configurations, written out by hand, field by field.
#pragma once

#include <cstring>
#include <vector>

#include "win/platform.h"

namespace golden {

using Bytes = std::vector<BYTE>;

class Golden {
  public:
    Golden& Number(UINT64 value, size_t size) {
        for (size_t i = 0; i < size; ++i) {
            m_bytes.push_back(static_cast<BYTE>(value >> (8 * i)));
        }
        return *this;
    }
    Golden& Text(const char* ascii) {
        for (; *ascii != 0; ++ascii) {
            Number(static_cast<BYTE>(*ascii), 2);
        }
        return *this;
    }
    Golden& Header() { return Text("00000000000 "); }
    // Of a configuration with a block of options.
    Golden& HeaderOfOptions() { return Text("00000000001 "); }
    Golden& Row(UINT32 index, BYTE enabled, BYTE isDefault, BYTE reserved, INT32 type, const char* language,
                const char* name) {
        Number(enabled, 1).Number(isDefault, 1).Number(reserved, 1);
        Number(index, 4).Number(static_cast<UINT32>(type), 4);
        Number(std::strlen(language), 4).Text(language);
        return Number(std::strlen(name), 4).Text(name);
    }
    Golden& Raw(const char* bytes) {
        m_bytes.insert(m_bytes.end(), bytes, bytes + std::strlen(bytes));
        return *this;
    }
    Golden& Append(const Bytes& bytes) {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return *this;
    }
    [[nodiscard]] const Bytes& Get() const { return m_bytes; }

  private:
    Bytes m_bytes;
};

// What stands behind the header of a filter that nobody has told anything.
inline Bytes FreshBody() {
    Golden golden;
    golden.Number(100, 8);
    for (UINT32 i = 0; i < 100; ++i) {
        golden.Row(i, 1, 0, 0, -1, "English", "");
    }
    return golden.Number(0, 4).Number(0, 4).Get();
}

inline Bytes FreshFilter() {
    return Golden().Header().Append(FreshBody()).Get();
}

} // namespace golden
