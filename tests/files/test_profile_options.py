"""mkvmux's options that strict files alone have anything of, and what of them it carries over from its inputs, as its
saved configurations tell."""

import struct

from whole_files.mkvmux_case import BIN, MkvmuxCase, make_input, pcm_wave, run_tool, sound

UNSET = 255
PROFILE, TITLE, SEED, STATISTICS, FLAGS = 1, 2, 3, 4, 5


class Reader:
    def __init__(self, data):
        self.data = data

    def take(self, size):
        taken, self.data = self.data[:size], self.data[size:]
        assert len(taken) == size, "the configuration ends early"
        return taken

    def number(self, size=4):
        return int.from_bytes(self.take(size), "little")


class Configuration:
    """A file of --save-config: the rows' default flags, the attachments' identifiers, and the block of options."""

    def __init__(self, path):
        reader = Reader(path.read_bytes())
        reader.take(16)  # whose it is
        self.version = int(reader.take(24).decode("utf-16-le"))
        self.defaults = []
        for _ in range(reader.number(8)):
            self.defaults.append(reader.take(3)[1])
            reader.take(8)
            for _ in ("language", "name"):
                reader.take(2 * reader.number())
        reader.take(4)
        self.uids = []
        for _ in range(reader.number()):
            for _ in ("name", "description", "type", "data"):
                reader.take(reader.number())
            self.uids.append(reader.number(8))
        self.options, self.flags = {}, {}
        if reader.data:
            self.read_block(reader)

    def read_block(self, reader):
        assert reader.take(4) == b"QRXO" and reader.number() == 1
        assert reader.number() == len(reader.data)
        while reader.data:
            tag = reader.number()
            value = reader.take(reader.number())
            if tag == FLAGS:
                self.flags[struct.unpack("<i", value[:4])[0]] = tuple(value[4:])
            else:
                self.options[tag] = value.decode("utf-16-le") if tag == TITLE else int.from_bytes(value, "little")


class ProfileOptions(MkvmuxCase):
    @classmethod
    def command(cls, *arguments, registered=False):
        """Each run says what profile it wants, or says nothing."""
        return [BIN / "mkvmux.exe", "--no-register", *arguments]

    def configure(self, *arguments, warnings=()):
        """What a run with these arguments saves."""
        path = self.directory / "saved.cfg"
        run = self.mkvmux("-y", "-o", self.directory / "out.mkv", "--save-config", path, *arguments)
        self.assertEqual((run.status, len(run.error_lines)), (1 if warnings else 0, len(warnings)), run)
        for line, warning in zip(run.error_lines, warnings):
            self.assertIn(warning, line)
        return Configuration(path)

    def flagged(self):
        """Sound with a title and flags, some of them said to be off."""
        path = self.directory / "flagged.mkv"
        done = run_tool(["mkvmerge", "-q", "-o", str(path), "--title", "Ein Film \U0001F3AC", "--default-track-flag", "0:0",
                         "--forced-display-flag", "0:1", "--hearing-impaired-flag", "0:1", "--original-flag", "0:0",
                         "--no-global-tags", "--no-track-tags", str(make_input("flac.mka", *sound(1), "-c:a", "flac"))])
        self.assertEqual(done.returncode, 0, done.stdout)
        return path

    def test_title_and_each_flag_of_an_input_go_into_a_strict_file(self):
        saved = self.configure("--profile", "strict", self.flagged(), pcm_wave())
        self.assertEqual(saved.version, 1)
        self.assertEqual(saved.options, {PROFILE: 1, TITLE: "Ein Film \U0001F3AC"})
        self.assertEqual(saved.flags, {0: (1, 1, UNSET, 0, UNSET)})
        self.assertEqual(saved.defaults[:2], [0, 0])

    def test_what_the_user_says_counts_before_what_the_input_says(self):
        saved = self.configure("--profile", "strict", "--title", "Mine", "--forced", "0:0", "--commentary", "0",
                               "--visual-impaired", "1", "--default", "0", "--disable-track-statistics-tags", self.flagged(),
                               pcm_wave())
        self.assertEqual(saved.options, {PROFILE: 1, TITLE: "Mine", STATISTICS: 0})
        self.assertEqual(saved.flags, {0: (0, 1, UNSET, 0, 1), 1: (UNSET, UNSET, 1, UNSET, UNSET)})
        self.assertEqual(saved.defaults[:2], [1, 0])

    def test_an_empty_title_removes_that_of_the_input(self):
        self.assertEqual(self.configure("--profile", "strict", "--title", "", self.flagged()).options, {PROFILE: 1})

    def test_of_two_inputs_the_first_title_counts(self):
        saved = self.configure("--profile", "strict", pcm_wave(), self.flagged())
        self.assertEqual(saved.options[TITLE], "Ein Film \U0001F3AC")

    def test_a_compatible_file_is_told_nothing_of_an_inputs_title_and_flags(self):
        saved = self.configure("--profile", "compatible", self.flagged())
        self.assertEqual((saved.version, saved.options, saved.flags), (0, {}, {}))

    def test_options_without_effect_are_one_warning(self):
        warning = "--title, --disable-track-statistics-tags, --forced, --original, --deterministic: no effect"
        self.configure("--profile", "compatible", "--title", "t", "--forced", "0", "--original", "0:0", "--deterministic", "s",
                       "--disable-track-statistics-tags", pcm_wave(), warnings=[warning])

    def test_the_profile_of_a_loaded_configuration_counts_unless_another_is_asked_for(self):
        for loaded, given, effective in (("strict", None, 1), ("strict", "compatible", None), ("compatible", None, None),
                                         ("compatible", "strict", 1)):
            with self.subTest(loaded=loaded, given=given):
                self.configure("--profile", loaded, pcm_wave())
                first = (self.directory / "saved.cfg").rename(self.directory / "first.cfg")
                profile = [] if given is None else ["--profile", given]
                self.assertEqual(self.configure("--load-config", first, *profile, pcm_wave()).options.get(PROFILE), effective)

    def test_the_profile_of_a_loaded_configuration_decides_on_the_inputs_times(self):
        # ffmpeg tells another delay than the codec's own header here, so that exact times differ from the stored ones.
        delayed = make_input("opus8.mka", *sound(1, 8000), "-c:a", "libopus")
        for profile in ("compatible", "strict"):
            self.configure("--profile", profile, delayed)
            expected = self.times(self.directory / "out.mkv", 0)
            loaded = (self.directory / "saved.cfg").rename(self.directory / "first.cfg")
            self.configure("--load-config", loaded, delayed)
            self.assertEqual(self.times(self.directory / "out.mkv", 0), expected, profile)

    def test_a_seed_gives_attachments_the_same_identifiers_every_time(self):
        note = self.directory / "note.txt"
        note.write_bytes(b"a note")

        def uids(*seed):
            return self.configure("--profile", "strict", *seed, "--attach", note, "--attach", note, pcm_wave()).uids

        seeded = uids("--deterministic", "a seed")
        self.assertEqual(len(set(seeded)), 2)
        self.assertEqual(uids("--deterministic", "a seed"), seeded)
        self.assertNotEqual(uids("--deterministic", "another"), seeded)
        self.assertNotEqual(uids(), seeded)

    def test_a_title_that_is_too_long_is_one_line_and_no_file(self):
        arguments = self.directory / "arguments.json"
        arguments.write_text('["--title", "%s"]' % ("t" * 32768), encoding="utf-8")
        output = self.directory / "out.mkv"
        self.assert_fails(self.mkvmux("-o", output, f"@{arguments}", pcm_wave()), "--title", "too long")
        self.assertFalse(output.exists())

    def test_what_is_no_webm_is_one_line_that_names_the_track_and_no_file(self):
        output = self.directory / "out.webm"
        webm = make_input("webm.webm", *sound(1), "-c:a", "libopus")
        run = self.mkvmux("-o", output, "--profile", "strict", webm, pcm_wave())
        self.assert_fails(run, "track 1 (A_PCM/INT/LIT) cannot go into a WebM file", "--profile compatible")
        run = self.mkvmux("-o", output, "--profile", "strict", "--attach", webm, webm)
        self.assert_fails(run, "attachments cannot go into a WebM file", "--profile compatible")
        self.assertFalse(output.exists())
        for arguments in (["--profile", "strict", "--disable", "1"], ["--profile", "compatible"]):
            run = self.mkvmux("-y", "-o", output, *arguments, webm, pcm_wave())
            self.assertEqual((run.status, run.error_lines), (0, []), run)

    def test_attachments_of_a_configuration_that_are_no_webm_end_the_run_in_one_line(self):
        note = self.directory / "note.txt"
        note.write_bytes(b"a note")
        sound_alone = make_input("webm.webm", *sound(1), "-c:a", "libopus")
        self.configure("--profile", "strict", "--attach", note, sound_alone)
        output = self.directory / "out.webm"
        run = self.mkvmux("-o", output, "--load-config", self.directory / "saved.cfg", sound_alone)
        self.assert_fails(run, "attachments cannot go into a WebM file")

    def test_identify_tells_the_flags_that_an_input_says(self):
        run = self.mkvmux("--identify", "--json", self.flagged())
        for text in ('"hearing_impaired": true', '"original": false', '"forced": true'):
            self.assertIn(text, run.output)
        for text in ("visual_impaired", "commentary"):
            self.assertNotIn(text, run.output)
