#include "mkv/head_element.h"

#include <utility>

#include <ebml/EbmlVoid.h>

namespace mkv {

void CHeadElement::write(std::unique_ptr<libebml::EbmlMaster> element) {
    if (!element) {
        return;
    }
    const CGatheringIO::Place place = m_io.place();
    element->Render(m_io);
    m_io.flush();
    if (m_io.takeLost()) {
        m_io.returnTo(place); // what comes next takes its place
        return;
    }
    m_element = std::move(element);
}

void CHeadElement::keep() {
    if (m_element) {
        m_seekHead.list(*m_element);
    }
}

void CHeadElement::replaceBy(std::unique_ptr<libebml::EbmlMaster> element) {
    if (element && !m_patcher.append(*element)) {
        keep();
        return;
    }
    if (element) {
        m_seekHead.list(*element);
    }
    m_isReplaced = true;
}

void CHeadElement::clearPlace() {
    if (!m_element || !m_isReplaced) {
        return;
    }
    (void)m_patcher.arrives([this] {
        libebml::EbmlVoid place;
        place.Overwrite(*m_element, m_io, false);
    });
}

} // namespace mkv
