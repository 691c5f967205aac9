#include "repair/finish_recording.h"

#include <memory>
#include <new>

#include "mkv/matroska_file.h"
#include "mkv/mkv_io.h"
#include "repair/stream_source.h"
#include "sources/base/buffered_source.h"

namespace repair {

namespace {

// A cluster's head and what its first block begins with lie well inside.
constexpr size_t kWindowBytes = 4096;

} // namespace

Recording SurveyRecording(IStream& stream, Progress progress) {
    const source::BufferedSource source(std::make_unique<StreamSource>(stream), kWindowBytes);
    return RecordingSurvey(source, std::move(progress)).Read();
}

void FinishRecording(IStream& stream, const Recording& recording) {
    if (recording.isFinished) {
        return;
    }
    CMkvIO io;
    io.setStream(&stream);
    io.cutOffAt(recording.cut.end); // first: nothing may lie behind a Segment once its size is known
    records::FileOptions options;
    options.profile = recording.cut.profile;
    mkv::CMatroskaFile file(io, options);
    file.resume(recording.cut);
    file.finalise(static_cast<double>(recording.cut.endNs));
    if (!file.isFinished()) {
        throw std::bad_alloc();
    }
    if (FAILED(io.lastWriteResult())) {
        throw WriteFailure{io.lastWriteResult()};
    }
    if (file.takeUntoldLoss()) {
        throw WriteFailure{STG_E_WRITEFAULT};
    }
}

} // namespace repair
