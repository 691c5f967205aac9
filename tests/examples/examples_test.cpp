// The programs in examples/, run as they are.
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>

#include "mkvmux/muxer_loader.h"
#include "tests/examples/file_writer_class.h"
#include "tests/mkvmux/temporary_file.h"
#include "tests/support/layout_check.h"
#include "tests/support/matroska_layout.h"
#include "tests/support/written_files.h"

int RunExample(int count, wchar_t** arguments);

namespace {

using test_examples::FileWriterClass;
using test_mkvmux::TemporaryFile;

int RunMuxWave(std::vector<std::wstring> arguments) {
    std::vector<wchar_t*> pointers;
    for (std::wstring& argument : arguments) {
        pointers.push_back(argument.data());
    }
    return RunExample(static_cast<int>(pointers.size()), pointers.data());
}

std::wstring ModulePath() {
    return (mkvmux::ProgramDirectory() / L"QRX_MKVMuxer.ax").native();
}

TEST(MuxWave, WritesTheNamedTrackAndTheAttachment) {
    const TemporaryFile input(L".wav");
    const TemporaryFile output(L".mkv");
    const TemporaryFile cover(L".jpg");
    input.SetContent(test_mkvmux::PcmWaveFile(2));
    cover.SetContent("not really a picture");
    {
        const FileWriterClass fileWriter;
        ASSERT_EQ(S_OK, fileWriter.Result());
        ASSERT_EQ(0, RunMuxWave({L"mux_wave", ModulePath(), input.Path(), output.Path(), cover.Path()}));
    }
    const std::string written = output.Content();
    const std::vector<uint8_t> bytes(written.begin(), written.end());
    test_support::SaveForJudges("examples_mux_wave.mkv", bytes);
    EXPECT_EQ(test_support::CheckLayout(bytes), std::vector<std::string>{});
    for (const char* text : {"Commentary",
                             "\x22\xB5\x9C\x83"
                             "fre",
                             "A_PCM/INT/LIT", "cover.jpg", "image/jpeg", "not really a picture"}) {
        EXPECT_NE(written.find(text), std::string::npos) << text;
    }
}

TEST(MuxWave, SaysWhatCannotBeDone) {
    const TemporaryFile output(L".mkv");
    const FileWriterClass fileWriter;
    EXPECT_EQ(2, RunMuxWave({L"mux_wave"}));
    EXPECT_EQ(2, RunMuxWave({L"mux_wave", L"none.ax", L"none.wav", output.Path(), L"none.jpg"}));
    EXPECT_EQ(2, RunMuxWave({L"mux_wave", ModulePath(), L"none.wav", output.Path(), L"none.jpg"}));
    EXPECT_FALSE(output.Exists());
    const TemporaryFile input(L".wav");
    input.SetContent("this is no sound");
    EXPECT_EQ(2, RunMuxWave({L"mux_wave", ModulePath(), input.Path(), output.Path(), L"none.jpg"}));
    EXPECT_EQ(2, RunMuxWave({L"mux_wave", ModulePath(), input.Path(), output.Path(), input.Path()}));
}

} // namespace
