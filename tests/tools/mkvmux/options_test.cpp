#include "tools/mkvmux/options.h"

#include <gmock/gmock.h>

namespace mkvmux {
namespace {

using testing::HasSubstr;

Options Parsed(std::vector<std::string> arguments) {
    const auto result = ParseOptions(std::move(arguments), "1.2.3.4");
    if (const EarlyExit* const exit = std::get_if<EarlyExit>(&result)) {
        ADD_FAILURE() << exit->output;
        return {};
    }
    return std::get<Options>(result);
}

EarlyExit Refused(std::vector<std::string> arguments) {
    const auto result = ParseOptions(std::move(arguments), "1.2.3.4");
    if (std::holds_alternative<Options>(result)) {
        ADD_FAILURE() << "the command line was accepted";
        return {};
    }
    return std::get<EarlyExit>(result);
}

TEST(Options, TakeInputsInTheirOrder) {
    const Options options = Parsed({"-o", "out.mkv", "a.avi", "b.wav"});
    EXPECT_EQ(options.output, L"out.mkv");
    ASSERT_EQ(options.inputs.size(), 2u);
    EXPECT_EQ(options.inputs[0].path, L"a.avi");
    EXPECT_EQ(options.inputs[1].path, L"b.wav");
}

TEST(Options, DefaultsAreSafe) {
    const Options options = Parsed({"-o", "out.mkv", "a.avi"});
    EXPECT_FALSE(options.overwrite);
    EXPECT_FALSE(options.webm);
    EXPECT_FALSE(options.identify);
    EXPECT_FALSE(options.noRegister);
    EXPECT_FALSE(options.quiet);
    EXPECT_EQ(options.progress, ProgressMode::Auto);
}

TEST(Options, EachSwitchIsSeen) {
    const Options options =
        Parsed({"--output=o.mkv", "-y", "--webm", "--no-register", "-q", "--progress", "never", "a.avi"});
    EXPECT_EQ(options.output, L"o.mkv");
    EXPECT_TRUE(options.overwrite);
    EXPECT_TRUE(options.webm);
    EXPECT_TRUE(options.noRegister);
    EXPECT_TRUE(options.quiet);
    EXPECT_EQ(options.progress, ProgressMode::Never);
    EXPECT_EQ(Parsed({"-o", "o", "--progress", "always", "a"}).progress, ProgressMode::Always);
    EXPECT_EQ(Parsed({"-o", "o", "--progress", "auto", "a"}).progress, ProgressMode::Auto);
}

TEST(Options, AnOutputThatEndsInWebmImpliesWebm) {
    EXPECT_TRUE(Parsed({"-o", "out.webm", "a.avi"}).webm);
    EXPECT_TRUE(Parsed({"-o", "OUT.WebM", "a.avi"}).webm);
    EXPECT_FALSE(Parsed({"-o", "webm", "a.avi"}).webm);
    EXPECT_FALSE(Parsed({"-o", "out.webm.mkv", "a.avi"}).webm);
}

TEST(Options, FileNamesMayHoldAnyCharacter) {
    const Options options = Parsed({"-o", "\xC3\xA4\xF0\x9F\x8E\xAC.mkv", "\xE2\x82\xAC uro.avi"});
    EXPECT_EQ(options.output, L"\u00e4\U0001F3AC.mkv");
    EXPECT_EQ(options.inputs.at(0).path, L"\u20ac uro.avi");
}

TEST(Options, ALeadingSlashBeginsAPath) {
    const Options options = Parsed({"-o", "/tmp/out.mkv", "/tmp/a.avi", "/y"});
    EXPECT_EQ(options.output, L"/tmp/out.mkv");
    ASSERT_EQ(options.inputs.size(), 2u);
    EXPECT_EQ(options.inputs[1].path, L"/y");
}

TEST(Options, IdentifyNeedsNoOutput) {
    EXPECT_TRUE(Parsed({"--identify", "a.avi"}).identify);
}

TEST(Options, HelpAndVersionEndWithSuccess) {
    const EarlyExit help = Refused({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* option :
         {"--output", "--webm", "--identify", "--no-register", "--quiet", "--progress", "--version", "--help"}) {
        EXPECT_THAT(help.output, HasSubstr(option));
    }
    const EarlyExit version = Refused({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "mkvmux 1.2.3.4\n");
}

TEST(Options, WhatCannotBeFollowedIsOneLineAndStatus2) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{}, "no input is given"},
        {{"-o", "out.mkv"}, "no input is given"},
        {{"a.avi"}, "no output is given"},
        {{"--no-such", "-o", "o", "a.avi"}, "--no-such"},
        {{"--progress", "sometimes", "-o", "o", "a.avi"}, "sometimes"},
        {{"a.avi", "-o"}, "-o"},
    };
    for (const auto& [arguments, reason] : cases) {
        const EarlyExit exit = Refused(arguments);
        EXPECT_EQ(exit.status, 2) << reason;
        EXPECT_THAT(exit.output, HasSubstr(reason));
        EXPECT_EQ(exit.output.find('\n'), std::string::npos) << exit.output;
    }
}

} // namespace
} // namespace mkvmux
