// ImportTable: this program's own table of imported functions, in which functions are replaced by others.
//
// Owner: a scope; when it ends, the functions are as they were. Threads: one; calls go on meanwhile.
// Errors: std::runtime_error when the table cannot be written.
#pragma once

#include <span>
#include <vector>

#include "win/platform.h"

namespace bench {

struct Replacement {
    const char* name;
    void* function;  // what is called from now on
    void** original; // where the replaced one is kept
};

class ImportTable {
  public:
    // Functions that the program does not import are passed over.
    explicit ImportTable(std::span<const Replacement> replacements);
    ~ImportTable();
    ImportTable(const ImportTable&) = delete;
    ImportTable& operator=(const ImportTable&) = delete;

  private:
    struct Replaced {
        void** entry;
        void* original;
    };

    void ReplaceIn(const IMAGE_IMPORT_DESCRIPTOR& module, std::span<const Replacement> replacements);
    static void Write(void** entry, void* function);

    std::vector<Replaced> m_replaced;
};

} // namespace bench
