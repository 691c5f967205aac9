// ConnectionTest: an output pin of one filter in front of an input pin of another.
//
// Errors: a reference, an object or a connection left behind fails the test.
#pragma once

#include "tests/dshow/object_count_test.h"
#include "tests/dshow/test_filter.h"

namespace dshow_test {

class ConnectionTest : public ObjectCountTest {
  protected:
    void TearDown() override {
        Disconnect();
        // Nobody but the test holds the filters any more.
        EXPECT_EQ(source->AddRef(), 2U);
        EXPECT_EQ(source->Release(), 1U);
        EXPECT_EQ(target->AddRef(), 2U);
        EXPECT_EQ(target->Release(), 1U);
        target.Reset();
        source.Reset();
        ObjectCountTest::TearDown();
    }

    void Disconnect() {
        source->Stop();
        target->Stop();
        output.script.breakConnect = S_OK;
        input.script.breakConnect = S_OK;
        output.Disconnect();
        input.Disconnect();
    }
    HRESULT Connect(const CMediaType& type) { return output.Connect(&input, &type); }
    // Refuses every type but those with these tags.
    static std::function<HRESULT(const CMediaType&)> Only(std::vector<BYTE> tags, HRESULT refusal = E_FAIL) {
        return [tags, refusal](const CMediaType& type) {
            return std::find(tags.begin(), tags.end(), TagOf(type)) != tags.end() ? S_OK : refusal;
        };
    }
    BYTE ConnectedTag() const { return TagOf(output.CurrentMediaType()); }

    FilterPtr source = MakeFilter();
    FilterPtr target = MakeFilter();
    TestOutputPin& output = source->AddOutput();
    TestInputPin& input = target->AddInput();
};

} // namespace dshow_test
