// CBaseMux: the generic half of a muxer filter: any number of inputs, one output that writes into the IStream behind
// it.
//
// Owner: its references; it owns pins, interleaver and worker, and one reference on the downstream stream.
// Threads: pins and states under the filter lock; upstream threads in EndOfStream and the inputs' Receive; the worker
// (CMuxWorker), which alone calls ProcessPacket and never takes the filter lock, since Stop joins it under that lock.
// Errors: HRESULTs or the mux core's integers; what a hook throws becomes one.
#pragma once

#include <memory>
#include <vector>

#include "dshow/base_filter.h"
#include "mux/base_mux_input_pin.h"
#include "mux/base_mux_output_pin.h"
#include "mux/connected_inputs.h"
#include "mux/mux_interleaver.h"
#include "mux/mux_result.h"
#include "mux/mux_statistics.h"
#include "mux/mux_stream_kind.h"
#include "mux/mux_streaming.h"
#include "mux/mux_worker.h"
#include "win/com_ptr.h"

class CBaseMux : public CBaseFilter, protected CMuxWorker {
  public:
    // A concrete muxer's destructor calls Stop first, so that its hooks still exist while the worker ends.
    ~CBaseMux() override;

    // IMediaFilter
    STDMETHODIMP Pause() noexcept override;
    STDMETHODIMP Run(REFERENCE_TIME start) noexcept override;
    STDMETHODIMP Stop() noexcept override;
    // CBaseFilter. With an output pin, that is pin 0.
    int GetPinCount() override;
    CBasePin* GetPin(int n) override;

    // ---- The concrete muxer's table of operations ----

    // kMuxFailed and null, or a pin that the caller owns.
    virtual int CreateInputPin(CBaseMuxInputPin** pin, LPCWSTR name);
    // Appends the input "In n"; fails only when CreateInputPin does.
    virtual int AddInputPin();
    // For the destructor: nobody else is there any more, so no lock is taken.
    virtual void DeleteInputPins() QRX_NO_ANALYSIS;
    virtual HRESULT CheckInputType(const CMediaType* type);
    virtual HRESULT SetInputType(CBaseMuxInputPin* pin, const CMediaType* type);
    virtual HRESULT BreakInputConnect(CBaseMuxInputPin* pin);
    // Keeps one input free.
    virtual HRESULT CompleteInputConnect(CBaseMuxInputPin* pin, IPin* peer);
    virtual HRESULT CheckOutputType(const CMediaType* type);
    virtual HRESULT SetOutputType(const CMediaType* type);
    // E_FAIL for a peer that offers no IStream.
    virtual HRESULT CompleteOutputConnect(IPin* peer);
    virtual HRESULT BreakOutputConnect();
    virtual HRESULT GetOutputMediaType(int position, CMediaType* type);
    virtual HRESULT DecideOutputBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties);
    // Takes the downstream stream. kMuxFailedResult goes on without a file; any other failure refuses to start.
    virtual HRESULT OnStartStreaming();
    virtual HRESULT OnStopStreaming();
    // On the worker; the packet is deleted afterwards, and the result is ignored.
    virtual int ProcessPacket(CMuxInterPacket* packet, CBaseMuxInputPin* pin);
    virtual bool IsStreamInterleaved(const CMediaType* type);
    virtual MuxStreamKind GetStreamKind(const CMediaType* type);
    // Writes behind what was written before.
    virtual int WriteOutput(const BYTE* bytes, INT32 length);
    virtual bool IsInputActive(int pinIndex);

    // ---- For the pins ----

    // The upstream filter's end of stream, which is the pin's business. S_OK, or kMuxFailedResult.
    HRESULT EndOfStream(CBaseMuxInputPin* pin);
    [[nodiscard]] bool IsAborted() const { return m_streaming.IsAborted(); }
    CMuxInterleaver& Interleaver() { return m_interleaver; }
    // Null before the concrete muxer's constructor has added it.
    [[nodiscard]] CBaseMuxInputPin* FirstInputPin() const { return m_firstInputPin; }
    // As of now; for any thread, whoever holds the filter lock.
    [[nodiscard]] const CConnectedInputs& Inputs() const { return m_inputs; }
    // The same of what they gave.
    [[nodiscard]] CMuxStatistics& Statistics() { return m_statistics; }

  protected:
    CBaseMux(const WCHAR* name, IUnknown* outer, REFCLSID clsid);

    CCritSec m_filterLock; // of CBaseFilter, too: guards the pin list and the changes of state
    std::vector<std::unique_ptr<CBaseMuxInputPin>> m_inputPins QRX_GUARDED_BY(m_filterLock); // in order of creation
    std::unique_ptr<CBaseMuxOutputPin> m_outputPin; // made by the concrete muxer's constructor, then left alone
    // Held while streaming; it changes before the worker begins and after it has ended.
    win::ComPtr<IStream> m_downstream;

  private:
    HRESULT BeginStreaming() QRX_REQUIRES(m_filterLock);
    HRESULT StartStreaming() QRX_REQUIRES(m_filterLock);
    void StopStreaming() QRX_REQUIRES(m_filterLock);
    [[nodiscard]] bool HasConnectedInput() const QRX_REQUIRES(m_filterLock);

    // CMuxWorker
    void OnPacket(CMuxInterPacket& packet, CBaseMuxInputPin* pin) QRX_REQUIRES(m_workerThread) override;
    void OnAllEnded() QRX_REQUIRES(m_workerThread) override;
    void OnLoopFailed(HRESULT failure) QRX_REQUIRES(m_workerThread) override;

    CBaseMuxInputPin* m_firstInputPin = nullptr; // in m_inputPins; set once, so that it needs no lock
    CConnectedInputs m_inputs;                   // what m_inputPins says, readable without the filter lock
    CMuxStatistics m_statistics;
    CMuxInterleaver m_interleaver;
    CMuxStreaming m_streaming;   // aborted from Stop to Pause
    UINT64 m_outputPosition = 0; // bytes; where WriteOutput writes next
};
