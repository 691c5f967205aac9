#include "bench/import_table.h"

#include <cstring>
#include <stdexcept>

namespace bench {

namespace {

const BYTE* ImageBase() {
    return reinterpret_cast<const BYTE*>(GetModuleHandleW(nullptr));
}

template <typename Structure>
Structure* AtOffset(DWORD offset) {
    return reinterpret_cast<Structure*>(const_cast<BYTE*>(ImageBase()) + offset);
}

const IMAGE_IMPORT_DESCRIPTOR* FirstModule() {
    const auto* const dosHeader = AtOffset<IMAGE_DOS_HEADER>(0);
    const auto* const headers = AtOffset<IMAGE_NT_HEADERS>(static_cast<DWORD>(dosHeader->e_lfanew));
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    return AtOffset<IMAGE_IMPORT_DESCRIPTOR>(directory.VirtualAddress);
}

const Replacement* Find(std::span<const Replacement> replacements, const char* name) {
    for (const auto& replacement : replacements) {
        if (std::strcmp(replacement.name, name) == 0) {
            return &replacement;
        }
    }
    return nullptr;
}

} // namespace

ImportTable::ImportTable(std::span<const Replacement> replacements) {
    for (const auto* module = FirstModule(); module->Name != 0; ++module) {
        ReplaceIn(*module, replacements);
    }
}

ImportTable::~ImportTable() {
    for (const auto& replaced : m_replaced) {
        DWORD before = 0;
        VirtualProtect(replaced.entry, sizeof(void*), PAGE_READWRITE, &before);
        *replaced.entry = replaced.original;
        VirtualProtect(replaced.entry, sizeof(void*), before, &before);
    }
}

void ImportTable::ReplaceIn(const IMAGE_IMPORT_DESCRIPTOR& module, std::span<const Replacement> replacements) {
    const auto* name = AtOffset<IMAGE_THUNK_DATA>(module.OriginalFirstThunk);
    auto* entry = AtOffset<void*>(module.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++entry) {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
            continue;
        }
        const auto* const byName = AtOffset<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(name->u1.AddressOfData));
        const auto* const replacement = Find(replacements, reinterpret_cast<const char*>(byName->Name));
        if (replacement != nullptr) {
            m_replaced.push_back({entry, *entry});
            *replacement->original = *entry;
            Write(entry, replacement->function);
        }
    }
}

void ImportTable::Write(void** entry, void* function) {
    DWORD before = 0;
    if (VirtualProtect(entry, sizeof(void*), PAGE_READWRITE, &before) == FALSE) {
        throw std::runtime_error("the import table cannot be written");
    }
    *entry = function;
    VirtualProtect(entry, sizeof(void*), before, &before);
}

} // namespace bench
