// FileWriterClass: as long as it lives, CLSID_FileWriter of this process is a file writer whose input pin offers
// IStream. That of Windows does, that of Wine does not.
//
// Owner: one at a time. Threads: the one that made it, and those that create the class.
#pragma once

#include "dshow/class_factory.h"
#include "mkvmux/file_sink_filter.h"
#include "win/platform.h"

namespace test_examples {

class FileWriterClass {
  public:
    FileWriterClass() {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        m_result = CoRegisterClassObject(CLSID_FileWriter, &m_factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                         &m_registration);
    }
    ~FileWriterClass() {
        CoRevokeClassObject(m_registration);
        CoUninitialize();
    }
    FileWriterClass(const FileWriterClass&) = delete;
    FileWriterClass& operator=(const FileWriterClass&) = delete;

    [[nodiscard]] HRESULT Result() const { return m_result; }

  private:
    CFactoryTemplate m_template{L"File writer", &CLSID_FileWriter, mkvmux::CFileSinkFilter::CreateInstance, nullptr,
                                nullptr};
    CClassFactory& m_factory = *new CClassFactory(&m_template); // released by the revocation
    DWORD m_registration = 0;
    HRESULT m_result = E_FAIL;
};

} // namespace test_examples
