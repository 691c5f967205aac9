// Report: what was measured, as JSON; who reads it takes medians and judges.
//
//   {"row": {"packets": 41698, "bytes": 555000000, "runs": {"ours": {"wall": [0.3, …], "cpu": [0.4, …]}, …}}, …}
//
// The nth numbers of all runs of a row come from the same round. Units: seconds. Owner: the program. Threads: one.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "bench/native/usage.h"

namespace bench {

class Report {
  public:
    void Describe(const std::string& row, const std::string& what, const nlohmann::json& value);
    void Add(const std::string& row, const std::string& run, const Usage& usage);
    // Any other number of a run.
    void Add(const std::string& row, const std::string& run, const std::string& what, double value);
    void Save(const std::string& path) const;

  private:
    nlohmann::json m_rows = nlohmann::json::object();
};

} // namespace bench
