// No fuzzer: what ./dev fuzz shows itself first, so that silence means something. The first byte says what goes wrong.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

std::uint8_t* volatile g_sink = nullptr; // so that no compiler leaves out what goes there

void Leak() {
    g_sink = new std::uint8_t[100];
    g_sink = nullptr;
}

void Hang() {
    for (volatile unsigned turns = 0;; turns = turns + 1) {
    }
}

// Each piece alone is allowed. Whoever watches looks once a second.
void TakeTooMuchMemory() {
    constexpr size_t kPiece = size_t{64} << 20;
    constexpr int kPieces = 12;
    for (int i = 0; i < kPieces; ++i) {
        g_sink = static_cast<std::uint8_t*>(std::malloc(kPiece));
        std::memset(g_sink, 1, kPiece);
    }
    for (;;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

void AskForTooMuch() {
    g_sink = static_cast<std::uint8_t*>(std::malloc(size_t{2} << 30));
    std::free(g_sink);
}

void ReadBehindTheEnd(const std::uint8_t* data, size_t size) {
    const volatile std::uint8_t* const bytes = data;
    (void)bytes[size];
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    switch (size == 0 ? 0 : data[0]) {
    case 'l':
        Leak();
        break;
    case 'h':
        Hang();
        break;
    case 'm':
        TakeTooMuchMemory();
        break;
    case 'a':
        AskForTooMuch();
        break;
    case 'r':
        ReadBehindTheEnd(data, size);
        break;
    default:
        break;
    }
    return 0;
}
