#include "dshow/am_event.h"

CAMEvent::CAMEvent(HRESULT* phr) : CAMEvent(FALSE, phr) {}

CAMEvent::CAMEvent(BOOL fManualReset, HRESULT* phr) : m_hEvent(CreateEventW(nullptr, fManualReset, FALSE, nullptr)) {
    if (!m_hEvent && phr != nullptr && SUCCEEDED(*phr)) {
        *phr = HRESULT_FROM_WIN32(GetLastError());
    }
}
