#include "mkvmux/options.h"

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

TEST(Options, ADashIsStandardOutputAndNoFile) {
    const Options options = Parsed({"-o", "-", "--save-config", "./-", "a.avi"});
    EXPECT_TRUE(options.IsToStandardOutput());
    EXPECT_EQ(options.OutputName(), "standard output");
    EXPECT_FALSE(options.webm);
    EXPECT_FALSE(Parsed({"-o", "./-", "a.avi"}).IsToStandardOutput());
    EXPECT_THAT(Refused({"-o", "--webm", "a.avi"}).output, HasSubstr("'--webm' looks like an option"));
    EXPECT_THAT(Refused({"-o", "out.mkv", "--save-config", "-", "a.avi"}).output, HasSubstr("looks like an option"));
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

TEST(Options, TheProfileIsStrictUnlessCompatibleIsAskedFor) {
    EXPECT_TRUE(Parsed({"-o", "o", "a"}).strict);
    EXPECT_TRUE(Parsed({"-o", "o", "--profile", "strict", "a"}).strict);
    EXPECT_FALSE(Parsed({"-o", "o", "--profile", "compatible", "a"}).strict);
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

TEST(Options, TracksAreNamedByNumber) {
    const Options options = Parsed({"-o", "o", "--track-name", "0:Main: the film", "--language", "1:ger", "--default",
                                    "1", "--disable", "2", "--track-name", "1:", "--language=0:french", "a.avi"});
    ASSERT_EQ(options.tracks.size(), 3u);
    EXPECT_EQ(options.tracks.at(0).name, L"Main: the film");
    EXPECT_EQ(options.tracks.at(0).language, L"French");
    EXPECT_EQ(options.tracks.at(0).isDefault, std::nullopt);
    EXPECT_FALSE(options.tracks.at(0).disable);
    EXPECT_EQ(options.tracks.at(1).name, L"");
    EXPECT_EQ(options.tracks.at(1).language, L"German");
    EXPECT_EQ(options.tracks.at(1).isDefault, true);
    EXPECT_TRUE(options.tracks.at(2).disable);
    EXPECT_EQ(options.tracks.at(2).name, std::nullopt);
    ASSERT_EQ(options.inputs.size(), 1u) << "an option takes one value and leaves the inputs alone";
}

TEST(Options, FlagsAreOnUnlessTheyAreSaidToBeOff) {
    const Options options = Parsed({"-o", "o", "--forced", "0", "--forced", "1:0", "--default", "0:0", "--default=1:1",
                                    "--hearing-impaired", "0:1", "--visual-impaired", "0", "--original", "1:0",
                                    "--commentary", "1", "a.avi"});
    const TrackOptions& first = options.tracks.at(0);
    const TrackOptions& second = options.tracks.at(1);
    EXPECT_EQ(first.isDefault, false);
    EXPECT_EQ(second.isDefault, true);
    EXPECT_EQ(first.flags, (TrackFlagOptions{true, true, true, std::nullopt, std::nullopt}));
    EXPECT_EQ(second.flags, (TrackFlagOptions{false, std::nullopt, std::nullopt, false, true}));
    ASSERT_EQ(options.inputs.size(), 1u);
}

TEST(Options, FlagsHaveTheNamesThatOtherProgramsHaveForThem) {
    const Options options =
        Parsed({"-o", "o", "--forced-display-flag", "0", "--hearing-impaired-flag", "0", "--visual-impaired-flag", "0",
                "--original-flag", "0", "--commentary-flag", "0:0", "--default-track-flag", "0:0", "a.avi"});
    EXPECT_EQ(options.tracks.at(0).flags, (TrackFlagOptions{true, true, true, true, false}));
    EXPECT_EQ(options.tracks.at(0).isDefault, false);
}

TEST(Options, AFlagThatIsNeitherOnNorOffIsOneLine) {
    for (const char* option :
         {"--default", "--forced", "--hearing-impaired", "--visual-impaired", "--original", "--commentary"}) {
        for (const char* value : {"1:2", "1:", "1:yes", ":1", "x", "1:0:1", "-1:1"}) {
            const EarlyExit exit = Refused({"-o", "o", std::string(option) + "=" + value, "a.avi"});
            EXPECT_EQ(exit.status, 2);
            EXPECT_THAT(exit.output, testing::StartsWith(std::string(option) + ": '"));
        }
    }
}

TEST(Options, WhatStrictFilesAreToldIsUnsaidUntilItIsSaid) {
    const Options silent = Parsed({"-o", "o", "a"});
    EXPECT_EQ(silent.title, std::nullopt);
    EXPECT_EQ(silent.seed, std::nullopt);
    EXPECT_TRUE(silent.trackStatistics);
    EXPECT_FALSE(silent.isProfileGiven);
    const Options said = Parsed({"-o", "o", "--title", "\xC3\x84 film", "--disable-track-statistics-tags", "--profile",
                                 "strict", "--deterministic", "s", "a"});
    EXPECT_EQ(said.title, L"\u00c4 film");
    EXPECT_FALSE(said.trackStatistics);
    EXPECT_TRUE(said.isProfileGiven);
    EXPECT_TRUE(said.strict);
    EXPECT_TRUE(Parsed({"-o", "o", "--profile", "compatible", "a"}).isProfileGiven);
    EXPECT_EQ(Parsed({"-o", "o", "--title", "", "a"}).title, L"");
    EXPECT_THAT(Refused({"-o", "o", "--profile", "lax", "a"}).output, HasSubstr("'lax' is not strict or compatible"));
    EXPECT_THAT(Refused({"-o", "o", "--title", "--webm", "a"}).output, HasSubstr("--title"));
}

TEST(Options, TheIndexStandsWhereItIsAskedFor) {
    EXPECT_EQ(Parsed({"-o", "o", "a"}).cuesInFront, std::nullopt);
    EXPECT_EQ(Parsed({"-o", "o", "--cues", "end", "a"}).cuesInFront, false);
    EXPECT_EQ(Parsed({"-o", "-", "--cues", "end", "a"}).cuesInFront, false);
    const Options estimated = Parsed({"-o", "o", "--cues", "front", "a"});
    EXPECT_EQ(estimated.cuesInFront, true);
    EXPECT_EQ(estimated.indexBytes, std::nullopt);
    const Options told = Parsed({"-o", "o", "--reserve-index-space", "16777216", "a"});
    EXPECT_EQ(told.cuesInFront, true);
    EXPECT_EQ(told.indexBytes, 16777216u);
}

// The values of the algorithm's own description for "", "a" and "foobar".
TEST(Options, ASeedIsTheFnv1aHashOfItsText) {
    EXPECT_EQ(Parsed({"-o", "o", "--deterministic", "a", "x"}).seed, 0xaf63dc4c8601ec8cULL);
    EXPECT_EQ(Parsed({"-o", "o", "--deterministic", "foobar", "x"}).seed, 0x85944171f73967e8ULL);
    EXPECT_EQ(Parsed({"-o", "o", "--deterministic", "", "x"}).seed, 0xcbf29ce484222325ULL);
}

TEST(Options, OfTwoNamesForATrackTheLaterCounts) {
    EXPECT_EQ(Parsed({"-o", "o", "--track-name", "0:a", "a.avi", "--track-name", "0:b"}).tracks.at(0).name, L"b");
}

TEST(Options, AttachmentsTakeWhatStandsBeforeThem) {
    const Options options =
        Parsed({"-o", "o", "--attach-mime", "text/x-a", "--attach", "a.txt", "in.avi", "--attach", "b.txt",
                "--attach-name", "c", "--attach-description", "the third", "--attach", "c.txt"});
    ASSERT_EQ(options.attachments.size(), 3u);
    EXPECT_EQ(options.attachments[0].path, L"a.txt");
    EXPECT_EQ(options.attachments[0].mimeType, "text/x-a");
    EXPECT_EQ(options.attachments[0].name, std::nullopt);
    EXPECT_EQ(options.attachments[0].description, L"");
    EXPECT_EQ(options.attachments[1].path, L"b.txt");
    EXPECT_EQ(options.attachments[1].mimeType, std::nullopt);
    EXPECT_EQ(options.attachments[2].path, L"c.txt");
    EXPECT_EQ(options.attachments[2].name, L"c");
    EXPECT_EQ(options.attachments[2].description, L"the third");
    EXPECT_EQ(options.inputs.size(), 1u);
}

TEST(Options, FilesAndDirectoriesOfARun) {
    const Options options =
        Parsed({"-o", "o", "--log", "logs", "--save-config", "s.cfg", "--load-config", "l.cfg", "a"});
    EXPECT_EQ(options.logDirectory, L"logs");
    EXPECT_EQ(options.saveConfig, L"s.cfg");
    EXPECT_EQ(options.loadConfig, L"l.cfg");
    EXPECT_EQ(Parsed({"-o", "no/dir/o", "--save-config", "no/o", "a"}).saveConfig, L"no/o");
}

TEST(Options, IdentifyCanAnswerInJson) {
    EXPECT_TRUE(Parsed({"--identify", "--json", "a.avi"}).json);
    EXPECT_FALSE(Parsed({"--identify", "a.avi"}).json);
}

TEST(Options, ARepairNamesItsFileAndStandsAlone) {
    EXPECT_EQ(Parsed({"--repair", "cut.mkv"}).repair, L"cut.mkv");
    for (const std::vector<std::string>& more :
         std::vector<std::vector<std::string>>{{"a.avi"}, {"-o", "o"}, {"--identify"}}) {
        std::vector<std::string> arguments{"--repair", "cut.mkv"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(Refused(arguments).output,
                  "--repair goes without inputs, --output and --identify; see mkvmux --help");
    }
}

TEST(Options, AReportGoesWithOneInputAndNothingElse) {
    const Options options = Parsed({"--report", "page.html", "in.mkv"});
    EXPECT_EQ(options.report, L"page.html");
    ASSERT_EQ(options.inputs.size(), 1u);
    for (const std::vector<std::string>& more : std::vector<std::vector<std::string>>{{},
                                                                                      {"a.mkv", "b.mkv"},
                                                                                      {"-o", "o.mkv", "a.mkv"},
                                                                                      {"--identify", "a.mkv"},
                                                                                      {"--repair", "c.mkv", "a.mkv"}}) {
        std::vector<std::string> arguments{"--report", "page.html"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(Refused(arguments).output, "--report goes with one input, and without --output, --identify and "
                                             "--repair; see mkvmux --help");
    }
}

TEST(Options, VerboseIsSeenAndIsNotQuiet) {
    EXPECT_FALSE(Parsed({"-o", "o", "a"}).verbose);
    EXPECT_TRUE(Parsed({"-o", "o", "-v", "a"}).verbose);
    EXPECT_TRUE(Parsed({"-o", "o", "--verbose", "a"}).verbose);
    EXPECT_EQ(Refused({"-o", "o", "-v", "-q", "a"}).output,
              "--quiet and --verbose exclude each other; see mkvmux --help");
}

TEST(Options, AnUnknownLanguageIsRefusedWithTheNearestNames) {
    const EarlyExit exit = Refused({"-o", "o", "--language", "0:Germn", "a.avi"});
    EXPECT_EQ(exit.status, 2);
    EXPECT_EQ(exit.output, "--language: there is no language 'Germn'; do you mean 'German'; --list-languages names "
                           "them all");
}

TEST(Options, TheLanguagesCanBeListed) {
    const EarlyExit list = Refused({"--list-languages"});
    EXPECT_EQ(list.status, 0);
    EXPECT_NE(list.output.find("\nfre      French\n"), std::string::npos);
}

TEST(Options, HelpAndVersionEndWithSuccess) {
    const EarlyExit help = Refused({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--output",
                               "--webm",
                               "--identify",
                               "--no-register",
                               "--quiet",
                               "--progress",
                               "--version",
                               "--help",
                               "--track-name",
                               "--language",
                               "--default",
                               "--disable",
                               "--attach",
                               "--attach-mime",
                               "--attach-name",
                               "--attach-description",
                               "--json",
                               "--log",
                               "--save-config",
                               "--load-config",
                               "--list-languages",
                               "--repair",
                               "--report",
                               "--verbose",
                               "--cues",
                               "--reserve-index-space",
                               "--chapters",
                               "--chapter-language",
                               "--chapter-charset",
                               "--no-chapters",
                               "--global-tags",
                               "--no-global-tags",
                               "--title",
                               "--profile",
                               "--deterministic",
                               "--disable-track-statistics-tags",
                               "--fps"}) {
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
        {{"--progress", "sometimes", "-o", "o", "a.avi"}, "--progress: 'sometimes' is not auto, always or never"},
        {{"--progress", "0", "-o", "o", "a.avi"}, "--progress: '0' is not"},
        {{"--progress", "", "-o", "o", "a.avi"}, "--progress: '' is not"},
        {{"a.avi", "-o"}, "-o"},
        {{"-o", "o", "--track-name", "main", "a"}, "--track-name: 'main' is not TRACK:NAME"},
        {{"-o", "o", "--track-name", "x:main", "a"}, "--track-name: 'x' is no track number"},
        {{"-o", "o", "--track-name", ":main", "a"}, "--track-name: '' is no track number"},
        {{"-o", "o", "--track-name=-1:main", "a"}, "--track-name: '-1' is no track number"},
        {{"-o", "o", "--default", "99999999999999999999", "a"}, "is no track number"},
        {{"-o", "o", "--disable", "1x", "a"}, "--disable: '1x' is no track number"},
        {{"-o", "o", "a", "--attach-name", "n"}, "--attach-name: speaks of the next attachment"},
        {{"-o", "o", "--json", "a"}, "--json goes with --identify only"},
        {{"-o", "o", "--cues", "middle", "a"}, "--cues: 'middle' is not front or end"},
        {{"-o", "o", "--cues", "", "a"}, "--cues: '' is not front or end"},
        {{"-o", "o", "--reserve-index-space", "0", "a"}, "--reserve-index-space"},
        {{"-o", "o", "--reserve-index-space", "16777217", "a"}, "--reserve-index-space"},
        {{"-o", "o", "--reserve-index-space", "-1", "a"}, "--reserve-index-space"},
        {{"-o", "o", "--reserve-index-space", "some", "a"}, "--reserve-index-space"},
        {{"-o", "o", "--cues", "end", "--reserve-index-space", "9", "a"}, "exclude each other"},
        {{"-o", "-", "--cues", "front", "a"}, "--cues front goes with a file"},
        {{"-o", "-", "--reserve-index-space", "9", "a"}, "--cues front goes with a file"},
        {{"-o", "o", "--save-config", "o", "a"}, "name the same file"},
        {{"-o", "o", "--save-config", ".\\x\\..\\O", "a"}, "name the same file"},
        {{"@no_such.json"}, "no_such.json: cannot be opened"},
    };
    for (const auto& [arguments, reason] : cases) {
        const EarlyExit exit = Refused(arguments);
        EXPECT_EQ(exit.status, 2) << reason;
        EXPECT_THAT(exit.output, HasSubstr(reason));
        EXPECT_EQ(exit.output.find('\n'), std::string::npos) << exit.output;
    }
}

// A file that is forgotten makes the next option its name.
TEST(Options, AFileNameThatLooksLikeAnOptionIsRefusedWithTheWayToWriteIt) {
    for (const std::string option : {"--output", "--save-config", "--load-config", "--log", "--attach"}) {
        for (const std::string value : {"--webm", "-y", "-", "--no-such", "-film.mkv"}) {
            if (option == "--output" && value == "-") {
                continue; // standard output
            }
            const EarlyExit exit = Refused({"-o", "o", option, value, "a.avi"});
            EXPECT_EQ(exit.status, 2);
            EXPECT_EQ(exit.output, option + ": '" + value + "' looks like an option; './" + value +
                                       "' names a file; see mkvmux --help");
        }
    }
    EXPECT_THAT(Refused({"-o--webm", "a.avi"}).output, HasSubstr("'./--webm'"));
    EXPECT_THAT(Refused({"--output=--webm", "a.avi"}).output, HasSubstr("'./--webm'"));
    const Options options = Parsed({"-o", "./--webm", "--attach", "./-", "./-a.avi"});
    EXPECT_EQ(options.output, L"./--webm");
    EXPECT_EQ(options.attachments.at(0).path, L"./-");
    EXPECT_FALSE(options.webm);
}

TEST(Options, ATextThatIsAnOptionIsRefused) {
    for (const std::string option : {"--attach-name", "--attach-mime", "--attach-description"}) {
        const EarlyExit exit = Refused({"-o", "o", option, "--attach", "a.txt", "a.avi"});
        EXPECT_EQ(exit.status, 2);
        EXPECT_EQ(exit.output, option + ": '--attach' is an option; see mkvmux --help");
        EXPECT_THAT(Refused({"-o", "o", option, "-y", "--attach", "a.txt", "a.avi"}).output, HasSubstr("'-y' is an"));
    }
    EXPECT_EQ(
        Parsed({"-o", "o", "--attach-description", "- a dash", "--attach", "a.txt", "a"}).attachments.at(0).description,
        L"- a dash");
}

} // namespace
} // namespace mkvmux
