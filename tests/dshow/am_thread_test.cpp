#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "dshow/am_event.h"
#include "dshow/am_thread.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

constexpr DWORD kFailed = static_cast<DWORD>(E_FAIL);

// Answers each request with ten more, until a command says otherwise.
class Worker : public CAMThread {
  public:
    enum Command : DWORD { Exit = 1000, Throw, LeaveWithoutReply, WaitForNext };

    ~Worker() override {
        if (ThreadExists()) {
            CallWorker(Exit);
            Close();
        }
    }

    std::atomic<int> checksWithoutRequest{0};
    std::atomic<DWORD> seenByCheck{0};
    CAMEvent nextSeen;

  protected:
    DWORD ThreadProc() override {
        for (;;) {
            const DWORD request = GetRequest();
            switch (request) {
            case Exit:
                Reply(0);
                return 0;
            case Throw:
                throw "Worker::ThreadProc";
            case LeaveWithoutReply:
                return 1;
            case WaitForNext:
                Reply(1);
                WatchForRequest();
                break;
            default:
                Reply(request + 10);
            }
        }
    }

  private:
    // As a working loop does that looks for requests between two pieces of work.
    void WatchForRequest() {
        DWORD next = 0;
        while (!CheckRequest(&next)) {
            ++checksWithoutRequest;
            std::this_thread::yield();
        }
        seenByCheck = next;
        nextSeen.Set();
    }
};

TEST(AMThread, CallWorkerReturnsTheReply) {
    Worker worker;
    EXPECT_FALSE(worker.ThreadExists());
    ASSERT_TRUE(worker.Create());
    EXPECT_TRUE(worker.ThreadExists());
    EXPECT_EQ(worker.CallWorker(5), 15U);
    EXPECT_EQ(worker.CallWorker(7), 17U);
    EXPECT_EQ(worker.GetRequestParam(), 7U);
}

TEST(AMThread, SecondThreadIsRefused) {
    Worker worker;
    ASSERT_TRUE(worker.Create());
    EXPECT_FALSE(worker.Create());
}

TEST(AMThread, ClosedThreadCanBeCreatedAgain) {
    Worker worker;
    ASSERT_TRUE(worker.Create());
    EXPECT_EQ(worker.CallWorker(Worker::Exit), 0U);
    EXPECT_TRUE(worker.ThreadExists()); // until it is closed
    worker.Close();
    EXPECT_FALSE(worker.ThreadExists());
    ASSERT_TRUE(worker.Create());
    EXPECT_EQ(worker.CallWorker(1), 11U);
}

TEST(AMThread, CallWithoutAThreadFails) {
    Worker worker;
    EXPECT_EQ(worker.CallWorker(1), kFailed);
    worker.Close(); // nothing to wait for
}

TEST(AMThread, RequestStaysPendingUntilItsReply) {
    Worker worker;
    ASSERT_TRUE(worker.Create());
    EXPECT_EQ(worker.CallWorker(Worker::WaitForNext), 1U);
    while (worker.checksWithoutRequest == 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(worker.CallWorker(3), 13U); // seen by CheckRequest, then read by GetRequest
    EXPECT_TRUE(worker.nextSeen.Check());
    EXPECT_EQ(worker.seenByCheck, 3U);
    EXPECT_EQ(WaitForSingleObject(worker.GetRequestHandle(), 0), DWORD{WAIT_TIMEOUT});
}

TEST(AMThread, ExceptionEndsTheThreadAndNotTheProgram) {
    Worker worker;
    ASSERT_TRUE(worker.Create());
    EXPECT_EQ(worker.CallWorker(Worker::Throw), kFailed);
    worker.Close();
    // Nothing of the lost request is left for the next thread.
    EXPECT_FALSE(worker.CheckRequest(nullptr));
    EXPECT_EQ(WaitForSingleObject(worker.GetRequestHandle(), 0), DWORD{WAIT_TIMEOUT});
    ASSERT_TRUE(worker.Create());
    EXPECT_EQ(worker.CallWorker(1), 11U);
}

TEST(AMThread, ThreadThatLeavesWithoutAReplyReleasesItsCaller) {
    Worker worker;
    ASSERT_TRUE(worker.Create());
    EXPECT_EQ(worker.CallWorker(Worker::LeaveWithoutReply), kFailed);
    EXPECT_EQ(worker.CallWorker(1), kFailed);
    worker.Close();
}

TEST(AMThread, ReplyWithoutARequestAnswersNothing) {
    Worker worker;
    worker.Reply(99);
    ASSERT_TRUE(worker.Create());
    EXPECT_EQ(worker.CallWorker(1), 11U);
}

TEST(AMThread, ClientsAreServedOneAtATime) {
    Worker worker;
    ASSERT_TRUE(worker.Create());
    constexpr DWORD kClients = 4;
    constexpr DWORD kRequests = 50;
    std::atomic<int> wrong{0};
    std::vector<std::thread> clients;
    for (DWORD client = 0; client < kClients; ++client) {
        clients.emplace_back([&worker, &wrong, client] {
            for (DWORD i = 0; i < kRequests; ++i) {
                const DWORD request = client * 100 + i;
                wrong += worker.CallWorker(request) == request + 10 ? 0 : 1;
            }
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(wrong, 0);
}

#ifdef QRX_NATIVE
TEST(AMThread, LookingForARequestMakesNoKernelCall) {
    Worker worker;
    const native::KernelCalls before = native::CountedKernelCalls();
    for (int i = 0; i < 1000; ++i) {
        EXPECT_FALSE(worker.CheckRequest(nullptr));
    }
    EXPECT_EQ((native::CountedKernelCalls() - before).Total(), 0U);
}

TEST(AMThread, NoHandleAndNoApartmentIsLeft) {
    const size_t handles = native::OpenHandleCount();
    const size_t badHandles = native::BadHandleCount();
    {
        Worker worker;
        ASSERT_TRUE(worker.Create());
        EXPECT_EQ(worker.CallWorker(1), 11U);
        EXPECT_EQ(native::ComInitializations(), 1);
    }
    EXPECT_EQ(native::OpenHandleCount(), handles);
    EXPECT_EQ(native::BadHandleCount(), badHandles);
    EXPECT_EQ(native::ComInitializations(), 0);
}
#endif

TEST(AMEvent, AutoResetEventReleasesOneWait) {
    HRESULT hr = S_OK;
    CAMEvent event(&hr);
    EXPECT_EQ(hr, S_OK);
    EXPECT_FALSE(event.Check());
    event.Set();
    EXPECT_TRUE(event.Wait(1000));
    EXPECT_FALSE(event.Check());
}

TEST(AMEvent, ManualResetEventStaysSet) {
    CAMEvent event(TRUE);
    event.Set();
    EXPECT_TRUE(event.Check());
    EXPECT_TRUE(event.Check());
    event.Reset();
    EXPECT_FALSE(event.Wait(1));
}

} // namespace
