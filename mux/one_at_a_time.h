// COneAtATime: lets one thread in and turns others away, who then do without; nobody ever waits.
//
// Owner: what is to be used by one thread at a time. Threads: any. Errors: none.
#pragma once

#include <atomic>

class COneAtATime {
  public:
    class Entry {
      public:
        explicit Entry(COneAtATime& place)
            : m_place(place), m_entered(!place.m_taken.exchange(true, std::memory_order_acquire)) {}
        ~Entry() {
            if (m_entered) {
                m_place.m_taken.store(false, std::memory_order_release);
            }
        }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        [[nodiscard]] bool IsInside() const { return m_entered; }

      private:
        COneAtATime& m_place;
        const bool m_entered;
    };

  private:
    std::atomic<bool> m_taken{false};
};
