// CMkvIO: the byte sink of the Matroska libraries; every call goes straight to a COM stream, whose seek pointer is
// the file position. Without a stream every operation does nothing and reports 0.
// Units: bytes. Owner: the filter; the stream is a counted reference. Threads: under the filter's writer lock.
// Errors: a failed write is only remembered, and the size asked for is reported, so that the element sizes stay
// consistent; a failed seek throws kSeekFailedError.
#pragma once

#include <memory>

#include "mkv/file_output.h"
#include "mkv/write_figures.h"
#include "win/com_ptr.h"
#include "win/platform.h"

class CMkvIO : public mkv::CFileOutput {
  public:
    explicit CMkvIO(mkv::CWriteFigures::Clock clock = win::SteadyTime)
        : m_ownFigures(std::make_unique<mkv::CWriteFigures>(clock)), m_figures(*m_ownFigures) {}
    // Several outputs count together, one at a time; the figures outlive them.
    explicit CMkvIO(mkv::CWriteFigures& figures) : m_figures(figures) {}
    CMkvIO(const CMkvIO&) = delete;
    CMkvIO& operator=(const CMkvIO&) = delete;

    // Lets the old stream go first, then takes a reference on the new one, which may be null.
    void setStream(IStream* stream);
    void releaseStream();
    // What the last write to a stream returned; 0 before the first one.
    [[nodiscard]] HRESULT lastWriteResult() const { return m_lastWriteResult; }
    // Why the first write to this stream that did not bring all of its bytes did not; S_OK when there was none.
    [[nodiscard]] HRESULT firstLoss() const { return m_firstLoss; }

    // Of the writes to the stream; for any thread. They stay when the stream is let go.
    [[nodiscard]] const mkv::CWriteFigures& figures() const { return m_figures; }
    void forgetFigures() { m_figures.reset(); }

    // libebml::IOCallback
    uint32 read(void* buffer, size_t size) override;
    void setFilePointer(int64 offset, libebml::seek_mode mode = libebml::seek_beginning) override;
    size_t write(const void* buffer, size_t size) override;
    uint64 getFilePointer() override;
    // Does nothing: the stream is let go by releaseStream.
    void close() override {}

    // CFileOutput
    [[nodiscard]] bool isLastWriteWhole() const override { return m_isLastWriteWhole; }
    [[nodiscard]] std::optional<uint64> position() override;
    void cutOffAt(uint64 end) override;

  private:
    [[nodiscard]] std::optional<uint64> streamSize();

    const std::unique_ptr<mkv::CWriteFigures> m_ownFigures; // null when they are shared
    mkv::CWriteFigures& m_figures;
    win::ComPtr<IStream> m_stream;
    HRESULT m_lastWriteResult = S_OK;
    HRESULT m_firstLoss = S_OK;
    bool m_isLastWriteWhole = true;
};
