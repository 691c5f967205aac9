"""The language of a track, by every name of the list, under the code pages of several countries."""

import json

from whole_files.mkvmux_case import MkvmuxCase, run_tool
from whole_files.other_locale import environment_of
from whole_files.profiles import STRICT

TRACKS_OF_A_RUN = 100  # as many as have settings


class LanguageCase(MkvmuxCase):
    def setUp(self):
        super().setUp()
        self.output = self.directory / "out.mkv"
        self.source = self.directory / "in.srt"
        self.source.write_text("1\n00:00:00,000 --> 00:00:01,000\nA\n", encoding="ascii")

    def written(self):
        """The codes of the tracks as they stand in the file."""
        lines = run_tool(["mkvinfo", str(self.output)], env={"LC_ALL": "C.UTF-8"}).stdout.splitlines()
        codes = []
        for line in lines:
            if line.endswith("+ Track"):
                codes.append("eng")  # what a track without the element has
            elif "+ Language" in line and "IETF" not in line:
                codes[-1] = line.partition("+ Language: ")[2]
        return codes

    def german_respelt(self):
        """A configuration whose language the list has with another spelling alone."""
        config = self.directory / "muxer.cfg"
        self.mkvmux("-o", self.output, "--save-config", config, "--language", "0:German", self.source)
        content = config.read_bytes()
        self.assertEqual(content.count("German".encode("utf-16-le")), 1)
        config.write_bytes(content.replace("German".encode("utf-16-le"), "german".encode("utf-16-le")))
        return config


class Languages(LanguageCase):
    def listed(self):
        """(name, code) of each name; the first of two rows counts."""
        codes = {}
        for line in self.mkvmux("--list-languages").output.splitlines():
            code, name = line.split(maxsplit=1)
            codes.setdefault(name, code)
        return list(codes.items())

    def check_names(self, languages, environment):
        options = []
        for number, (name, _) in enumerate(languages):
            options += ["--language", f"{number}:{name}"]
        run = self.mkvmux("-y", "-q", "-o", self.output, *options, *[self.source] * len(languages),
                          environment=environment)
        pairs = [number for number, (_, code) in enumerate(languages) if "/" in code]
        self.assertEqual(run.status, 1 if pairs else 0, run)
        self.assertEqual(len(run.error_lines), len(pairs), run)
        self.assertEqual(self.written(), [code for _, code in languages])

    def check_every_name(self, environment):
        languages = self.listed()
        self.assertEqual(len(languages), 564, "French and German have two rows")
        for first in range(0, len(languages), TRACKS_OF_A_RUN):
            self.check_names(languages[first : first + TRACKS_OF_A_RUN], environment)

    def test_every_name_under_code_page_1252(self):
        self.check_every_name({})

    def test_every_name_under_code_page_1251(self):
        self.check_every_name(environment_of("ru_RU"))

    def test_every_name_under_code_page_932(self):
        self.check_every_name(environment_of("ja_JP"))

    def test_a_code_of_two_parts_is_a_warning(self):
        run = self.mkvmux("-o", self.output, "--language", "0:zh", self.source)
        self.assertEqual((run.status, len(run.error_lines)), (1, 1), run)
        self.assertIn("warning: track 0: the language is written as 'chi/zho'", run.error_lines[0])
        self.assertEqual(self.written(), ["chi/zho"])

    def test_a_saved_configuration_keeps_its_languages_under_another_code_page(self):
        config = self.directory / "muxer.cfg"
        options = ["--language", "0:Volapük", "--language", "1:Norwegian Bokmål"]
        self.mkvmux("-o", self.output, "--save-config", config, *options, self.source, self.source)
        self.assertEqual(self.written(), ["vol", "nob"])
        run = self.mkvmux("-y", "-o", self.output, "--load-config", config, self.source, self.source,
                          environment=environment_of("ru_RU"))
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        self.assertEqual(self.written(), ["vol", "nob"])

    def test_a_language_of_a_configuration_that_the_list_does_not_have_is_a_warning(self):
        run = self.mkvmux("-y", "-o", self.output, "--load-config", self.german_respelt(), self.source)
        self.assertEqual((run.status, len(run.error_lines)), (1, 1), run)
        self.assertIn("warning: track 0: the language 'german' is not in the list", run.error_lines[0])
        self.assertEqual(self.written(), [""])

    def test_a_language_of_a_configuration_forges_no_line_and_commands_no_terminal(self):
        config = self.directory / "muxer.cfg"
        self.mkvmux("-o", self.output, "--save-config", config, "--language", "0:German", self.source)
        forged = config.read_bytes().replace("German".encode("utf-16-le"), "a\n\x1b[2J".encode("utf-16-le"))
        config.write_bytes(forged)
        run = self.mkvmux("-y", "-o", self.output, "--load-config", config, self.source)
        self.assertEqual((run.status, len(run.error_lines)), (1, 1), run)
        self.assertIn("the language 'a??[2J' is not in the list", run.error_lines[0])

    def test_an_options_file_forges_no_line_and_commands_no_terminal(self):
        for option in ("--language=0:a\x1b[2J", "--track-name=a\x1b[2J", "--output=-\x1b[2J", "--\x1b[2J"):
            with self.subTest(option=option):
                options = self.directory / "options"
                options.write_text(json.dumps([option]))
                run = self.mkvmux("-y", "-o", self.output, f"@{options}", self.source)
                self.assertEqual(run.status, 2, run)
                self.assertNotIn("\x1b", run.errors + run.output)
                self.assertIn("?[2J", run.errors)


class StrictLanguages(LanguageCase):
    profile = STRICT

    def test_a_language_with_two_codes_is_written_with_one_and_no_warning(self):
        run = self.mkvmux("-o", self.output, "--language", "0:zh", self.source)
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        self.assertEqual(self.written(), ["chi"])

    def test_a_language_that_the_list_does_not_have_is_a_warning_and_unknown(self):
        run = self.mkvmux("-y", "-o", self.output, "--load-config", self.german_respelt(), self.source)
        self.assertEqual((run.status, len(run.error_lines)), (1, 1), run)
        self.assertIn("track 0: the language 'german' is not in the list and is written as unknown", run.error_lines[0])
        self.assertEqual(self.written(), ["und"])

    def test_of_an_input_that_says_none_it_is_unknown(self):
        run = self.mkvmux("-o", self.output, self.source)
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        self.assertEqual(self.written(), ["und"])
