// CReturnStack: where any thread puts back what one thread took out; that thread fetches all of it at once.
//
// Node has a member `next`, which is the stack's while the node lies here. Nothing is ever taken from the middle, so a
// node that comes back while another thread pushes cannot be mistaken for what was there before.
// Owner: a pool. Threads: Push on any; TakeAll and Close on one at a time. Errors: none.
#pragma once

#include <atomic>

template <typename Node>
class CReturnStack {
  public:
    CReturnStack() = default;
    CReturnStack(const CReturnStack&) = delete;
    CReturnStack& operator=(const CReturnStack&) = delete;

    // False once the stack is closed; the node is then still the caller's.
    [[nodiscard]] bool Push(Node& node) noexcept {
        Node* head = m_head.load(std::memory_order_acquire);
        do {
            if (head == Closed()) {
                return false;
            }
            node.next = head;
        } while (!m_head.compare_exchange_weak(head, &node, std::memory_order_release, std::memory_order_acquire));
        return true;
    }
    // The newest first; null when there is none. Not after Close.
    [[nodiscard]] Node* TakeAll() noexcept {
        // Looked at first: an exchange takes the cache line away from whoever pushes.
        return m_head.load(std::memory_order_relaxed) == nullptr ? nullptr
                                                                 : m_head.exchange(nullptr, std::memory_order_acquire);
    }
    [[nodiscard]] Node* Close() noexcept { return m_head.exchange(Closed(), std::memory_order_acq_rel); }

  private:
    // An address that no node has; never followed.
    Node* Closed() noexcept { return reinterpret_cast<Node*>(this); }

    std::atomic<Node*> m_head{nullptr};
};
