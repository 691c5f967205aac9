#include "tests/support/fake_enumerators.h"

#include <atomic>
#include <utility>

#include "win/com_ptr.h"

namespace test_support {

namespace {

// Enumerates `Count()` items; Derived hands out the one at an index. Deleted by its last Release, as COM asks.
template <typename Derived, typename Interface, typename Item>
class Enumerator : public Interface {
  public:
    Enumerator(REFIID iid, IPin* pin) : m_iid(iid), m_pin(pin) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (iid != IID_IUnknown && iid != m_iid) {
            return E_NOINTERFACE;
        }
        *object = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete static_cast<Derived*>(this);
        }
        return left;
    }

    HRESULT STDMETHODCALLTYPE Next(ULONG count, Item* items, ULONG* fetched) override {
        if (items == nullptr || (fetched == nullptr && count != 1)) {
            return E_POINTER;
        }
        Derived& self = static_cast<Derived&>(*this);
        ULONG done = 0;
        while (done < count && m_next < self.Count()) {
            const HRESULT hr = self.HandOut(m_next, items[done]);
            if (FAILED(hr)) {
                return hr;
            }
            ++m_next;
            ++done;
        }
        if (fetched != nullptr) {
            *fetched = done;
        }
        return done == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        m_next += count;
        return m_next <= static_cast<Derived&>(*this).Count() ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        m_next = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(Interface** clone) override {
        if (clone == nullptr) {
            return E_POINTER;
        }
        Derived* const copy = static_cast<Derived&>(*this).Copy();
        copy->m_next = m_next;
        *clone = copy;
        return S_OK;
    }

  protected:
    [[nodiscard]] IPin* Pin() const { return m_pin.Get(); }
    size_t m_next = 0;

  private:
    const IID m_iid;
    const win::ComPtr<IPin> m_pin;
    std::atomic<ULONG> m_references{1};
};

class PinEnumerator final : public Enumerator<PinEnumerator, IEnumPins, IPin*> {
  public:
    explicit PinEnumerator(IPin* pin) : Enumerator(IID_IEnumPins, pin) {}
    [[nodiscard]] size_t Count() const { return 1; }
    HRESULT HandOut(size_t, IPin*& pin) {
        pin = Pin();
        pin->AddRef();
        return S_OK;
    }
    [[nodiscard]] PinEnumerator* Copy() const { return new PinEnumerator(Pin()); }
};

class MediaTypeEnumerator final : public Enumerator<MediaTypeEnumerator, IEnumMediaTypes, AM_MEDIA_TYPE*> {
  public:
    MediaTypeEnumerator(IPin* pin, std::vector<MediaTypeValue> types)
        : Enumerator(IID_IEnumMediaTypes, pin), m_types(std::move(types)) {}
    [[nodiscard]] size_t Count() const { return m_types.size(); }
    HRESULT HandOut(size_t index, AM_MEDIA_TYPE*& type) {
        type = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
        return type == nullptr ? E_OUTOFMEMORY : CopyToTaskMemory(m_types[index].Get(), type);
    }
    [[nodiscard]] MediaTypeEnumerator* Copy() const { return new MediaTypeEnumerator(Pin(), m_types); }

  private:
    const std::vector<MediaTypeValue> m_types;
};

} // namespace

IEnumPins* MakePinEnumerator(IPin* pin) {
    return new PinEnumerator(pin);
}

IEnumMediaTypes* MakeMediaTypeEnumerator(IPin* pin, std::vector<MediaTypeValue> types) {
    return new MediaTypeEnumerator(pin, std::move(types));
}

} // namespace test_support
