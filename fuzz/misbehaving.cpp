// No fuzzer: what ./dev fuzz shows itself first, so that silence means something. The first byte says what goes wrong.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

volatile std::uint8_t* g_sink = nullptr;

void Leak() {
    g_sink = new std::uint8_t[100];
    g_sink = nullptr;
}

void Hang() {
    for (volatile unsigned turns = 0;; turns = turns + 1) {
    }
}

// Each piece alone is allowed.
void TakeAllMemory() {
    constexpr size_t kPiece = size_t{64} << 20;
    for (;;) {
        auto* const piece = static_cast<std::uint8_t*>(std::malloc(kPiece));
        if (piece != nullptr) {
            std::memset(piece, 1, kPiece);
        }
        g_sink = piece;
    }
}

void AskForTooMuch() {
    g_sink = static_cast<std::uint8_t*>(std::malloc(size_t{2} << 30));
    std::free(const_cast<std::uint8_t*>(g_sink));
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
        TakeAllMemory();
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
