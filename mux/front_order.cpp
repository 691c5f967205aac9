#include "mux/front_order.h"

#include <algorithm>

#include "mux/cache_line.h"
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
        } else if (const CMuxInterPacket* const front = stream.Front()) {
            m_empty[i] = m_empty.back();
            m_empty.pop_back();
            if (!front->endOfStream) {
                m_fronts.push_back(FrontOf(stream, *front));
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
    const CMuxInterPacket* const next = stream.Front(); // asked once: it may change
    if (next != nullptr && !next->endOfStream) {
        FetchCacheLine(next->data.get());
        Replace(FrontOf(stream, *next));
        return packet;
    }
    std::pop_heap(m_fronts.begin(), m_fronts.end(), IsLater);
    m_fronts.pop_back();
    if (next == nullptr) {
        m_empty.push_back(&stream);
    }
    return packet;
}

// Sinks from the top, past whatever comes earlier, to its place; as a rule it stays at the top.
void CFrontOrder::Replace(const Front& front) {
    const size_t count = m_fronts.size();
    size_t place = 0;
    for (size_t child = 1; child < count; child = 2 * place + 1) {
        if (child + 1 < count && IsLater(m_fronts[child], m_fronts[child + 1])) {
            ++child;
        }
        if (!IsLater(front, m_fronts[child])) {
            break;
        }
        m_fronts[place] = m_fronts[child];
        place = child;
    }
    m_fronts[place] = front;
}
