// CMuxerParameters: the parameters of the filter: a table says of each how it is set, got and saved.
//
// Owner: the filter; what the parameters reach outlives it. Threads: any. None takes the filter lock or the writer
// lock: the stream that is written to may ask for them on the worker, which Stop joins.
// Errors: HRESULTs; std::bad_alloc.
#pragma once

#include "records/file_options.h"
#include "records/track_settings_table.h"
#include "win/platform.h"

class CMkvWriter;
class CConnectedInputs;
class CMuxStatistics;
namespace mkv {
class CWriteFigures;
}

class CNextOutput;

// What the parameters reach. Of the writer only what any thread may ask: document type, attachments, chapters, tags,
// duration, clusters.
struct ParameterTargets {
    records::CTrackSettingsTable& rows;
    records::CFileOptions& options;
    CMkvWriter& writer;
    CNextOutput& nextOutput;
    const CConnectedInputs& inputs;
    const CMuxStatistics& statistics;
    const mkv::CWriteFigures& writes;
};

class CMuxerParameters {
  public:
    // The same without the rows, which are its own.
    struct Reach {
        records::CFileOptions& options;
        CMkvWriter& writer;
        CNextOutput& nextOutput;
        const CConnectedInputs& inputs;
        const CMuxStatistics& statistics;
        const mkv::CWriteFigures& writes;
    };
    explicit CMuxerParameters(const Reach& reach);
    CMuxerParameters(const CMuxerParameters&) = delete;
    CMuxerParameters& operator=(const CMuxerParameters&) = delete;

    // E_FAIL for a key that is unknown, cannot be set, or cannot be got. Tells whether what is saved has changed.
    [[nodiscard]] HRESULT Set(const GUID& key, const VARIANT& value, bool& changed);
    // Only the key's own field of the value is written, its type tag is not.
    [[nodiscard]] HRESULT Get(const GUID& key, VARIANT& value) const;

    // The number in the version header of the filter's persisted stream tells whether the options' block follows the
    // fields that every stream has; a reader of those alone does not look at it.
    static constexpr DWORD kPlainFormat = 0;
    static constexpr DWORD kFormatWithOptions = 1;
    [[nodiscard]] DWORD FormatToSave() const;
    // The saved parameters as bytes, the body behind that header.
    [[nodiscard]] HRESULT Save(IStream& stream, DWORD format) const;
    // Replaces rows and options, sets the document type and adds the attachments. Rows that were read before an error
    // stay; the options change all or none.
    [[nodiscard]] HRESULT Load(IStream& stream, DWORD format);

    // One for each of the first 100 inputs.
    [[nodiscard]] const records::CTrackSettingsTable& Rows() const { return m_rows; }

  private:
    // What the options' block holds.
    [[nodiscard]] records::AllOptions AllOptions() const;

    records::CTrackSettingsTable m_rows;
    records::CFileOptions& m_options;
    const ParameterTargets m_targets;
};
