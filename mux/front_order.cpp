#include "mux/front_order.h"

#include <algorithm>

#include "mux/mux_result.h"

// With room for every stream in either list, moving one never allocates.
void CFrontOrder::Add(CMuxInterStream& stream) {
    const size_t count = m_fronts.size() + m_empty.size() + 1;
    m_fronts.reserve(count);
    m_empty.reserve(count);
    m_empty.push_back(&stream);
}

void CFrontOrder::Clear() {
    m_fronts.clear();
    m_empty.clear();
    m_missing = nullptr;
}

// The last look found nothing new, so at its beginning the streams were as they are known here.
int CFrontOrder::Choose() {
    while (LookAtEmptyStreams()) {
    }
    if (m_missing != nullptr) {
        return kMuxFailed;
    }
    if (!m_fronts.empty()) {
        return kMuxOk;
    }
    return m_mayGoOn ? kMuxFailed : kMuxAllEnded;
}

bool CFrontOrder::LookAtEmptyStreams() {
    m_missing = nullptr;
    m_mayGoOn = false;
    const size_t before = m_empty.size();
    for (size_t i = 0; i < m_empty.size();) {
        CMuxInterStream& stream = *m_empty[i];
        if (!stream.IsActive()) {
            ++i;
        } else if (stream.HasFront()) {
            m_empty[i] = m_empty.back();
            m_empty.pop_back();
            if (!stream.HasEnded()) {
                m_fronts.push_back({stream.OldestStart(), &stream});
                std::push_heap(m_fronts.begin(), m_fronts.end(), IsLater);
            }
        } else {
            m_mayGoOn = true;
            if (stream.IsInterleaved()) {
                m_missing = &stream;
            }
            ++i;
        }
    }
    return m_empty.size() != before && !m_empty.empty();
}

std::unique_ptr<CMuxInterPacket> CFrontOrder::TakeChosen() {
    CMuxInterStream& stream = Chosen();
    auto packet = stream.TakeFront();
    const bool hasFront = stream.HasFront(); // asked once: it may change
    if (hasFront && !stream.HasEnded()) {
        Replace({stream.OldestStart(), &stream});
        return packet;
    }
    std::pop_heap(m_fronts.begin(), m_fronts.end(), IsLater);
    m_fronts.pop_back();
    if (!hasFront) {
        m_empty.push_back(&stream);
    }
    return packet;
}

void CFrontOrder::Replace(const Front& front) {
    if (IsStillFirst(front)) {
        m_fronts.front() = front;
        return;
    }
    std::pop_heap(m_fronts.begin(), m_fronts.end(), IsLater);
    m_fronts.back() = front;
    std::push_heap(m_fronts.begin(), m_fronts.end(), IsLater);
}

// The second in a heap is one of the two behind the first.
bool CFrontOrder::IsStillFirst(const Front& front) const {
    const size_t end = std::min<size_t>(m_fronts.size(), 3);
    for (size_t i = 1; i < end; ++i) {
        if (IsLater(front, m_fronts[i])) {
            return false;
        }
    }
    return true;
}
