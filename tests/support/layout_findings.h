// The list that the checks of a layout write to, and the checks that have files of their own.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/matroska_layout.h"

namespace test_support {

class Findings {
  public:
    explicit Findings(std::vector<std::string> known) : m_findings(std::move(known)) {}
    void Add(uint64_t offset, const std::string& what) {
        m_findings.push_back("@" + std::to_string(offset) + ": " + what);
    }
    void Append(const std::vector<std::string>& more) { m_findings.insert(m_findings.end(), more.begin(), more.end()); }
    [[nodiscard]] std::vector<std::string> Take() { return std::move(m_findings); }

  private:
    std::vector<std::string> m_findings;
};

// Every entry points at an element of its kind, and every top-level element that readers look for has an entry.
void CheckSeekHead(const MatroskaLayout& layout, const EbmlElement& segment, Findings& findings);
// Clusters have times in order, blocks belong to known tracks and lie at or after 0.
void CheckClusters(const MatroskaLayout& layout, const EbmlElement& segment, bool mayGoBack, Findings& findings);
// Every cue leads to a cluster that holds a block of its track and time, at the place that it names. Unless `exact`,
// the block may be a tick later where both are rounded down.
void CheckCues(const MatroskaLayout& layout, const EbmlElement& segment, bool exact, Findings& findings);
// What the strict profile asks of clusters, cues and the order of the head besides. Nothing of a file that was cut off
// is asked that is written when a file is finished.
void CheckStrictLayout(const MatroskaLayout& layout, const EbmlElement& segment, bool cut, Findings& findings);

} // namespace test_support
