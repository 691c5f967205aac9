// CRecordList: chapters or tags in the order that they were added in, for the files to come and for the one that is
// being recorded. It has bounds, so that neither an application nor a configuration fills the memory.
//
// Units: UTF-16 code units. Owner: the writer; values are copied in and out. Threads: any, one lock.
// Errors: std::bad_alloc.
#pragma once

#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "win/critical_section.h"

namespace records {

enum class ListChange { Done, Refused, NoFile };

template <typename Record>
class CRecordList {
  public:
    static constexpr size_t kMaxCount = 10000;
    static constexpr size_t kMaxTextLength = size_t{1} << 20; // of all together

    // NoFile for the mark of a file while none is open. Refused for one that is too much, or needs one before it.
    [[nodiscard]] ListChange Add(Record record) {
        const win::LockGuard lock(m_lock);
        if (record.isMark && !m_isFileOpen) {
            return ListChange::NoFile;
        }
        if (m_records.size() >= kMaxCount || !Fits(record, 0) || (m_records.empty() && record.NeedsOneBefore())) {
            return ListChange::Refused;
        }
        m_records.push_back(std::move(record));
        return ListChange::Done;
    }
    [[nodiscard]] ListChange Replace(size_t i, Record record) {
        const win::LockGuard lock(m_lock);
        if (i >= m_records.size() || !Fits(record, m_records[i].TextLength()) || (i == 0 && record.NeedsOneBefore())) {
            return ListChange::Refused;
        }
        m_records[i] = std::move(record);
        return ListChange::Done;
    }
    [[nodiscard]] ListChange ReplaceAll(std::vector<Record> records) {
        const win::LockGuard lock(m_lock);
        const bool isOrphan = !records.empty() && records.front().NeedsOneBefore();
        if (records.size() > kMaxCount || TextLengthOf(records) > kMaxTextLength || isOrphan) {
            return ListChange::Refused;
        }
        m_records = std::move(records);
        return ListChange::Done;
    }
    void Clear() {
        const win::LockGuard lock(m_lock);
        m_records.clear();
    }

    [[nodiscard]] std::optional<Record> At(size_t i) const {
        const win::LockGuard lock(m_lock);
        return i < m_records.size() ? std::optional(m_records[i]) : std::nullopt;
    }
    [[nodiscard]] std::vector<Record> All() const {
        const win::LockGuard lock(m_lock);
        return m_records;
    }
    // Without the marks of a file, and what belongs to them.
    [[nodiscard]] std::vector<Record> Lasting() const {
        const win::LockGuard lock(m_lock);
        return WithoutMarks(m_records);
    }

    // A file begins with these; the marks of the one before are gone.
    [[nodiscard]] std::vector<Record> BeginFile() {
        const win::LockGuard lock(m_lock);
        m_records = WithoutMarks(std::move(m_records));
        m_isFileOpen = true;
        return m_records;
    }
    // It ends with these; no mark is added to it any more.
    [[nodiscard]] std::vector<Record> EndFile() {
        const win::LockGuard lock(m_lock);
        m_isFileOpen = false;
        return m_records;
    }
    // The same, where memory may have run out.
    void CloseFile() noexcept {
        const win::LockGuard lock(m_lock);
        m_isFileOpen = false;
    }

    [[nodiscard]] static size_t TextLengthOf(const std::vector<Record>& records) {
        return std::accumulate(records.begin(), records.end(), size_t{0},
                               [](size_t sum, const Record& record) { return sum + record.TextLength(); });
    }

  private:
    // In place of one that has so much text.
    [[nodiscard]] bool Fits(const Record& record, size_t replaced) const QRX_REQUIRES(m_lock) {
        return TextLengthOf(m_records) - replaced + record.TextLength() <= kMaxTextLength;
    }

    [[nodiscard]] static std::vector<Record> WithoutMarks(std::vector<Record> records) {
        bool isOfMark = false;
        std::erase_if(records, [&isOfMark](const Record& record) {
            isOfMark = record.isMark || (isOfMark && !record.IsTop());
            return isOfMark;
        });
        return records;
    }

    mutable win::CriticalSection m_lock;
    std::vector<Record> m_records QRX_GUARDED_BY(m_lock);
    bool m_isFileOpen QRX_GUARDED_BY(m_lock) = false;
};

} // namespace records
