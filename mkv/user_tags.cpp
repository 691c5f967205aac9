#include "mkv/user_tags.h"

#include <algorithm>
#include <optional>

#include <matroska/KaxSemantic.h>

#include "mkv/element_values.h"
#include "records/language_tags.h"

namespace mkv {

namespace {

using namespace libmatroska;
using records::Tag;

constexpr UINT64 kWholeTargetType = 50; // of a film, of an album

bool HaveOneTarget(const Tag& a, const Tag& b) {
    return a.track == b.track && a.targetType == b.targetType && a.target == b.target;
}

// The target's type is told, though it may be the usual one: the element would be empty else.
void FillTargets(KaxTag& element, const Tag& tag, std::optional<UINT64> trackUid) {
    auto& targets = libebml::GetChild<KaxTagTargets>(element);
    SetToldChild<KaxTagTargetTypeValue>(targets, tag.targetType == 0 ? kWholeTargetType : UINT64{tag.targetType});
    if (!tag.target.empty()) {
        SetChild<KaxTagTargetType>(targets, win::Utf8FromWide(tag.target));
    }
    if (trackUid) {
        SetChild<KaxTagTrackUID>(targets, *trackUid);
    }
}

void FillSimple(KaxTagSimple& simple, const Tag& tag, bool isWebM) {
    SetUtf8Child<KaxTagName>(simple, win::Utf8FromWide(tag.name));
    if (!tag.value.empty()) {
        SetUtf8Child<KaxTagString>(simple, win::Utf8FromWide(tag.value));
    }
    const auto language = records::FindLanguageCodes(tag.language);
    if (tag.language.empty() || !language) {
        return; // which says that it is not known
    }
    SetToldChild<KaxTagLangue>(simple, language->bibliographic);
    if (!isWebM) {
        SetChild<KaxTagLanguageIETF>(simple, language->tag);
    }
}

class TagWriter {
  public:
    TagWriter(KaxTags& element, const TrackUids& uids, bool isWebM)
        : m_element(element), m_uids(uids), m_isWebM(isWebM) {}

    void add(const Tag& tag) {
        if (tag.IsTop()) {
            addTop(tag);
        } else if (!m_simples.empty() && !m_isWebM) {
            // One that is deeper than it can be says more of the one before all the same.
            m_simples.resize(std::min(m_simples.size(), static_cast<size_t>(tag.level)));
            addSimple(*m_simples.back(), tag);
        }
    }

  private:
    void addTop(const Tag& tag) {
        m_simples.clear();
        const auto uid = m_uids.find(tag.track);
        const bool isOfTrack = tag.track != MuxTagTrack_All;
        if (isOfTrack && uid == m_uids.end()) {
            return;
        }
        if (m_last == nullptr || !HaveOneTarget(*m_last, tag)) {
            m_tag = &libebml::AddNewChild<KaxTag>(m_element);
            FillTargets(*m_tag, tag, isOfTrack ? std::optional(uid->second) : std::nullopt);
        }
        m_last = &tag;
        addSimple(*m_tag, tag);
    }
    void addSimple(libebml::EbmlMaster& parent, const Tag& tag) {
        auto& simple = libebml::AddNewChild<KaxTagSimple>(parent);
        FillSimple(simple, tag, m_isWebM);
        m_simples.push_back(&simple);
    }

    KaxTags& m_element;
    const TrackUids& m_uids;
    const bool m_isWebM;
    KaxTag* m_tag = nullptr;
    const Tag* m_last = nullptr;          // of the top
    std::vector<KaxTagSimple*> m_simples; // the last one of each level
};

} // namespace

void AddUserTags(KaxTags& element, const std::vector<Tag>& tags, const TrackUids& uids, bool isWebM) {
    TagWriter writer(element, uids, isWebM);
    for (const Tag& tag : tags) {
        writer.add(tag);
    }
}

} // namespace mkv
