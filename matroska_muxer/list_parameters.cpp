#include "matroska_muxer/list_parameters.h"

#include <optional>
#include <utility>

#include "dshow/ref_time.h"
#include "matroska_muxer/muxer_parameters.h"
#include "mkv/mkv_writer.h"
#include "records/language_tags.h"
#include "records/record_list.h"
#include "records/record_text.h"

namespace {

using records::ListChange;

HRESULT ResultOf(ListChange change) {
    switch (change) {
    case ListChange::Done:
        return S_OK;
    case ListChange::NoFile:
        return VFW_E_WRONG_STATE;
    case ListChange::Refused:
        break;
    }
    return E_INVALIDARG;
}

// What is saved of a list changes with all but marks.
template <typename Record>
HRESULT SetInList(records::CRecordList<Record>& list, INT32 index, Record record, bool& changed) {
    const bool isSaved = !record.isMark;
    const ListChange change = index == MuxListIndex_Add ? list.Add(std::move(record))
                              : index >= 0              ? list.Replace(static_cast<size_t>(index), std::move(record))
                                                        : ListChange::Refused;
    changed = change == ListChange::Done && isSaved;
    return ResultOf(change);
}

template <typename Record>
HRESULT ClearList(records::CRecordList<Record>& list, bool& changed) {
    changed = !list.Lasting().empty();
    list.Clear();
    return S_OK;
}

template <typename PublicRecord, typename Record>
HRESULT GetFromList(const records::CRecordList<Record>& list, VARIANT& value) {
    auto* const record = static_cast<PublicRecord*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    const auto found = record->index < 0 ? std::nullopt : list.At(static_cast<size_t>(record->index));
    if (!found) {
        return E_INVALIDARG;
    }
    CopyTo(*found, *record);
    return S_OK;
}

bool IsLanguage(const WideString& language) {
    return language.size() <= records::kMaxLanguageLength && records::FindLanguageCodes(language).has_value();
}

// What is written so far; the worker goes on meanwhile.
INT64 PositionOf(const CMkvWriter& writer) {
    return static_cast<INT64>(writer.duration() / double{kNsPerReferenceTime});
}

} // namespace

HRESULT SetChapter(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const auto* const record = static_cast<const MuxChapter*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    const INT32 index = record->index;
    if (index == MuxListIndex_Clear) {
        return ClearList(targets.writer.chapters(), changed);
    }
    records::Chapter chapter = records::ChapterOf(*record);
    if (chapter.isMark) {
        chapter.start = PositionOf(targets.writer);
        if (index != MuxListIndex_Add || !chapter.IsTop()) {
            return E_INVALIDARG;
        }
    }
    if (!records::HasChapterFlags(*record) || !records::IsChapter(chapter) || !IsLanguage(chapter.language)) {
        return E_INVALIDARG;
    }
    return SetInList(targets.writer.chapters(), index, std::move(chapter), changed);
}

HRESULT GetChapter(const ParameterTargets& targets, VARIANT& value) {
    return GetFromList<MuxChapter>(targets.writer.chapters(), value);
}

HRESULT SetTag(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const auto* const record = static_cast<const MuxTag*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    const INT32 index = record->index;
    if (index == MuxListIndex_Clear) {
        return ClearList(targets.writer.tags(), changed);
    }
    records::Tag tag = records::TagOf(*record);
    if (!records::IsTag(tag) || !IsLanguage(tag.language)) {
        return E_INVALIDARG;
    }
    return SetInList(targets.writer.tags(), index, std::move(tag), changed);
}

HRESULT GetTag(const ParameterTargets& targets, VARIANT& value) {
    return GetFromList<MuxTag>(targets.writer.tags(), value);
}
