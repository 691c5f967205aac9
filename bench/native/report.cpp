#include "bench/native/report.h"

#include <fstream>
#include <stdexcept>

namespace bench {

void Report::Describe(const std::string& row, const std::string& what, const nlohmann::json& value) {
    m_rows[row][what] = value;
}

void Report::Add(const std::string& row, const std::string& run, const Usage& usage) {
    Add(row, run, "wall", usage.wall);
    Add(row, run, "cpu", usage.cpu);
}

void Report::Add(const std::string& row, const std::string& run, const std::string& what, double value) {
    m_rows[row]["runs"][run][what].push_back(value);
}

void Report::Save(const std::string& path) const {
    std::ofstream file(path);
    file << m_rows.dump(1) << '\n';
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

} // namespace bench
