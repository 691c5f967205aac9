"""mkvmux's options for tracks, attachments, configurations and the log, judged by what mkvtoolnix reads."""

import hashlib
import json
import os
import random
import re
import struct

from whole_files.mkvmux_case import MkvmuxCase, cinepak_avi, make_input, pcm_wave, picture, raw_avi, run_tool, sound

NAMES = ["Film \U0001F3AC: der Ton", "Käse & Brot"]
LANGUAGES = [("French", "fre"), ("ger", "ger")]


class Settings(MkvmuxCase):
    def setUp(self):
        super().setUp()
        self.output = self.directory / "out.mkv"

    def write(self, name, content):
        path = self.directory / name
        path.write_bytes(content)
        return path

    def attachments(self, path):
        return self.identify(path)["attachments"]

    def extract(self, path, attachment):
        target = self.directory / f"extracted{attachment['id']}"
        done = run_tool(["mkvextract", str(path), "attachments", f"{attachment['id']}:{target}"])
        self.assertEqual(done.returncode, 0, done.stdout)
        return target.read_bytes()

    def succeed(self, *arguments):
        run = self.mkvmux(*arguments)
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        return run


class EveryOption(Settings):
    def setUp(self):
        super().setUp()
        self.font = self.write("Schrift.ttf", random.Random(1).randbytes(70_001))
        self.cover = self.write("cover.JPG", random.Random(2).randbytes(3))
        self.notes = self.write("notes.dat", b"a note\n")
        self.options = [
            "--track-name", f"0:{NAMES[0]}", "--track-name", f"1:{NAMES[1]}", "--language", f"0:{LANGUAGES[0][0]}",
            "--language", f"1:{LANGUAGES[1][0]}", "--default", "1", "--disable", "2", "--attach", self.font,
            "--attach-mime", "text/x-note", "--attach-name", "Notizen €.txt", "--attach-description", "für \U0001F600",
            "--attach", self.notes, "--attach", self.cover]

    def check(self, output):
        tracks = [track["properties"] for track in self.identify(output)["tracks"]]
        self.assertEqual([track.get("track_name") for track in tracks], NAMES)
        self.assertEqual([track["language"] for track in tracks], [code for _, code in LANGUAGES])
        self.assertEqual([track["default_track"] for track in tracks], [False, True])
        self.assertEqual([track["forced_track"] for track in tracks], [False, True])
        self.assertEqual([track["enabled_track"] for track in tracks], [True, True])
        attached = self.attachments(output)
        self.assertEqual([(a["file_name"], a["content_type"], a.get("description", ""), a["size"]) for a in attached], [
            ("Schrift.ttf", "application/x-truetype-font", "", 70_001),
            ("Notizen €.txt", "text/x-note", "für \U0001F600", 7),
            ("cover.JPG", "image/jpeg", "", 3)])
        uids = [a["properties"]["uid"] for a in attached]
        self.assertNotIn(0, uids)
        self.assertEqual(len(set(uids)), 3, uids)
        for attachment, source in zip(attached, (self.font, self.notes, self.cover)):
            self.assertEqual(self.extract(output, attachment), source.read_bytes())

    def test_every_option_at_once_on_a_real_avi(self):
        config, logs = self.directory / "muxer.cfg", self.directory / "a" / "log"
        self.succeed("-o", self.output, "--webm", "--log", logs, "--save-config", config, "--progress", "always",
                     *self.options, cinepak_avi(), pcm_wave())
        self.check(self.output)
        self.assertIn(b"\x42\x82\x84webm", self.output.read_bytes()[:64])
        self.assert_same_packets(cinepak_avi(), 0, self.output, 0)
        self.assert_same_packets(cinepak_avi(), 1, self.output, 1)
        self.assertIn("CMkvWriter", (logs / "QRX_MKVMuxer.log").read_text("latin-1"))
        self.save_for_judges(self.output)

    def test_a_saved_configuration_gives_the_same_file(self):
        config, again = self.directory / "muxer.cfg", self.directory / "again.mkv"
        inputs = (cinepak_avi(), pcm_wave())
        before = self.mux_with_long_uids(self.output, "--webm", "--save-config", config, *self.options, *inputs)
        after = self.mux_with_long_uids(again, "--load-config", config, *inputs)
        self.check(again)
        self.assertEqual(hashlib.sha256(after).digest(), hashlib.sha256(before).digest(), "the two files differ")
        config_again = self.directory / "again.cfg"
        self.succeed("-o", self.directory / "third.mkv", "--load-config", config, "--save-config", config_again,
                     cinepak_avi(), pcm_wave())
        self.assertEqual(config_again.read_bytes(), config.read_bytes())

    def mux_with_long_uids(self, output, *arguments):
        """The file without its track UIDs, which are random. Once in 60 runs one is a byte shorter and moves all that
        follows; that run is repeated."""
        for _ in range(5):
            self.succeed("-y", "-o", output, *arguments)
            content, count = re.subn(rb"\x73\xc5\x82..", b"UID", output.read_bytes(), flags=re.DOTALL)
            if count == len(NAMES):
                return content
        self.fail("the files have no track UIDs of two bytes")

    def test_options_go_over_a_loaded_configuration(self):
        config, again = self.directory / "muxer.cfg", self.directory / "again.mkv"
        self.succeed("-o", self.output, "--save-config", config, *self.options, cinepak_avi(), pcm_wave())
        self.succeed("-o", again, "--load-config", config, "--track-name", "1:", "--language", "0:en", cinepak_avi(),
                     pcm_wave())
        tracks = [track["properties"] for track in self.identify(again)["tracks"]]
        self.assertEqual([track.get("track_name") for track in tracks], [NAMES[0], None])
        self.assertEqual([track["language"] for track in tracks], ["eng", "ger"])

    def test_options_from_a_file(self):
        arguments = ["-o", str(self.output), *map(str, self.options)]
        options = self.write("options.json", json.dumps(arguments).encode())
        self.succeed(f"@{options}", cinepak_avi(), pcm_wave())
        self.check(self.output)


class Tracks(Settings):
    def test_a_track_number_that_no_input_has_is_a_warning(self):
        run = self.mkvmux("-o", self.output, "--track-name", "2:nobody", "--track-name", "1:sound", cinepak_avi())
        self.assertEqual(run.status, 1, run)
        self.assertEqual(run.error_lines, ["mkvmux: warning: there is no track 2: the inputs have 2 (the first is "
                                           "track 0)"])
        self.assertEqual(self.identify(self.output)["tracks"][1]["properties"]["track_name"], "sound")

    def test_an_unknown_language_is_refused(self):
        run = self.mkvmux("-o", self.output, "--language", "0:Frensh", cinepak_avi())
        self.assert_fails(run, "'Frensh'", "'French'")
        self.assertFalse(self.output.exists())

    def test_a_disabled_track_is_not_written(self):
        run = self.succeed("-o", self.output, "--disable", "0", cinepak_avi())
        self.assertIn("V_MS/VFW/FOURCC (own AVI reader) (disabled)", run.output)
        self.assertEqual(self.codecs(self.output), [("audio", "A_PCM/INT/LIT")])
        self.assert_same_packets(cinepak_avi(), 1, self.output, 0)

    def test_with_every_track_disabled_nothing_is_left_to_write(self):
        run = self.mkvmux("-o", self.output, "--disable", "0", "--disable", "1", cinepak_avi())
        self.assert_fails(run, "every track is disabled")
        self.assertFalse(self.output.exists())

    def test_a_disabled_track_may_have_any_codec(self):
        source = make_input("wma.avi", *picture(1), *sound(1), "-c:v", "cinepak", "-c:a", "wmav2")
        run = self.succeed("-o", self.output, "--disable", "1", source)
        self.assertIn("wave tag 0x0161", run.output)
        self.assertIn("(skipped)", run.output)
        self.assertEqual(self.codecs(self.output), [("video", "V_MS/VFW/FOURCC")])

    def test_tracks_are_counted_over_all_inputs(self):
        self.succeed("-o", self.output, "--track-name", "2:third", "--disable", "0", raw_avi(), pcm_wave())
        names = [track["properties"].get("track_name") for track in self.identify(self.output)["tracks"]]
        self.assertEqual(names, [None, "third"])


class Attachments(Settings):
    def test_100_mib_come_back_byte_for_byte(self):
        big = self.write("big.bin", random.Random(3).randbytes(100 << 20))
        self.succeed("-o", self.output, "--attach", big, pcm_wave())
        (attachment,) = self.attachments(self.output)
        self.assertEqual(attachment["content_type"], "application/octet-stream")
        self.assertTrue(self.extract(self.output, attachment) == big.read_bytes(), "the attachment differs")

    def test_the_same_file_twice_has_two_identifiers(self):
        font = self.write("a.otf", b"otf")
        self.succeed("-o", self.output, "--attach", font, "--attach", font, pcm_wave())
        attached = self.attachments(self.output)
        self.assertEqual([a["content_type"] for a in attached], ["application/vnd.ms-opentype"] * 2)
        self.assertNotEqual(attached[0]["properties"]["uid"], attached[1]["properties"]["uid"])

    def test_an_empty_type_or_name_counts_as_none(self):
        font = self.write("a.otf", b"otf")
        self.succeed("-o", self.output, "--attach-mime", "", "--attach-name", "", "--attach", font, pcm_wave())
        self.assertEqual([(a["file_name"], a["content_type"]) for a in self.attachments(self.output)],
                         [("a.otf", "application/vnd.ms-opentype")])

    def test_an_input_given_twice_brings_two_identifiers_for_its_attachment(self):
        source = self.directory / "source.mkv"
        self.succeed("-o", source, "--attach", self.write("a.otf", b"otf"), pcm_wave())
        self.succeed("-o", self.output, source, source)
        (before,) = (a["properties"]["uid"] for a in self.attachments(source))
        first, second = (a["properties"]["uid"] for a in self.attachments(self.output))
        self.assertEqual(first, before)
        self.assertNotIn(second, (0, before))

    def test_files_that_cannot_be_attached_are_named(self):
        large = self.directory / "large.bin"
        with large.open("wb") as file:
            os.truncate(file.fileno(), 1 << 31)
        cases = [(self.directory / "none.txt", "cannot be opened"), (self.directory, "cannot be opened"),
                 (large, "is too large"), (self.write("empty.txt", b""), "is empty")]
        for path, reason in cases:
            with self.subTest(path=path):
                self.assert_fails(self.mkvmux("-o", self.output, "--attach", path, pcm_wave()), str(path), reason)
                self.assertFalse(self.output.exists())


class Configurations(Settings):
    def test_an_existing_one_is_overwritten_only_when_allowed(self):
        config = self.write("muxer.cfg", b"precious")
        self.assert_fails(self.mkvmux("-o", self.output, "--save-config", config, pcm_wave()), "muxer.cfg", "exists")
        self.assertEqual(config.read_bytes(), b"precious")
        self.assertFalse(self.output.exists())
        self.succeed("-y", "-o", self.output, "--save-config", config, pcm_wave())
        self.succeed("-y", "-o", self.output, "--load-config", config, pcm_wave())
        self.assertEqual(sorted(path.name for path in self.directory.iterdir()), ["muxer.cfg", "out.mkv"])

    def test_what_cannot_be_loaded_is_named(self):
        config = self.directory / "muxer.cfg"
        self.succeed("-o", self.output, "--save-config", config, pcm_wave())
        self.output.unlink()
        whole = config.read_bytes()
        cases = [(b"", "is no saved configuration"), (random.Random(4).randbytes(500), "is no saved configuration"),
                 (whole[:10], "is no saved configuration"), (whole[:40], "cannot be loaded"),
                 (whole[:1000], "cannot be loaded")]
        for content, reason in cases:
            with self.subTest(size=len(content)):
                damaged = self.write("damaged.cfg", content)
                run = self.mkvmux("-o", self.output, "--load-config", damaged, pcm_wave())
                self.assert_fails(run, "damaged.cfg", reason)
                self.assertFalse(self.output.exists())
        self.assert_fails(self.mkvmux("-o", self.output, "--load-config", "none.cfg", pcm_wave()), "none.cfg")

    def test_a_row_that_was_saved_under_another_index_is_changed_where_it_stands(self):
        config = self.directory / "muxer.cfg"
        self.succeed("-o", self.output, "--save-config", config, pcm_wave())
        content = bytearray(config.read_bytes())
        first_row = 16 + 24 + 8  # behind the class, the version and the number of rows
        struct.pack_into("<i", content, first_row + 3, 7)
        config.write_bytes(content)
        self.succeed("-y", "-o", self.output, "--load-config", config, "--track-name", "0:found", pcm_wave())
        self.assertEqual(self.identify(self.output)["tracks"][0]["properties"].get("track_name"), "found")

    def test_an_input_is_not_overwritten_by_a_saved_configuration(self):
        source = self.write("in.wav", pcm_wave().read_bytes())
        for name in (source, self.directory / "." / "IN.wav"):
            run = self.mkvmux("-y", "-o", self.output, "--save-config", name, source)
            self.assert_fails(run, "in.wav", "is an input")
            self.assertEqual(source.read_bytes(), pcm_wave().read_bytes())
            self.assertFalse(self.output.exists())

    def test_a_configuration_is_not_saved_where_the_output_goes(self):
        run = self.mkvmux("-y", "-o", self.output, "--save-config", f"{self.directory}/x/../out.mkv", pcm_wave())
        self.assert_fails(run, "name the same file")
        self.assertFalse(self.output.exists())

    def test_saving_one_leaves_other_files_alone(self):
        config = self.directory / "muxer.cfg"
        others = [self.write(name, b"precious") for name in ("muxer.cfg.part", "muxer.cfg.tmp", "mkvmux.tmp")]
        for leave in ([], ["-y"]):
            self.succeed(*leave, "-o", self.output, "--save-config", config, pcm_wave())
            self.assertEqual([other.read_bytes() for other in others], [b"precious"] * 3)
            self.assertEqual(sorted(self.directory.iterdir()), sorted([*others, config, self.output]))

    def test_one_is_saved_under_a_name_that_is_as_long_as_names_can_be(self):
        config = self.directory / ("m" * 251 + ".cfg")
        self.succeed("-o", self.output, "--save-config", config, pcm_wave())
        self.succeed("-y", "-o", self.output, "--load-config", config, pcm_wave())

    def test_one_that_cannot_be_saved_is_named(self):
        run = self.mkvmux("-o", self.output, "--save-config", self.directory / "no" / "muxer.cfg", pcm_wave())
        self.assert_fails(run, "muxer.cfg")
        self.assertFalse(self.output.exists())


class Reports(Settings):
    def test_identification_as_json(self):
        run = self.succeed("--identify", "--json", cinepak_avi(), pcm_wave())
        first, second = json.loads(run.output)["inputs"]
        self.assertEqual(first["file"], str(cinepak_avi()))
        self.assertEqual(first["tracks"], [
            {"number": 0, "pin": "Stream 00", "codec_id": "V_MS/VFW/FOURCC", "type": "video", "subtype": "'cvid'",
             "width": 160, "height": 120, "frames_per_second": 25.0},
            {"number": 1, "pin": "Stream 01", "codec_id": "A_PCM/INT/LIT", "type": "audio",
             "subtype": "wave tag 0x0001", "sampling_frequency": 44100, "channels": 1, "bits_per_sample": 16}])
        self.assertEqual([track["number"] for track in second["tracks"]], [2])

    def test_identification_names_a_codec_that_cannot_be_written(self):
        source = make_input("wma.avi", *picture(1), *sound(1), "-c:v", "cinepak", "-c:a", "wmav2")
        run = self.succeed("--identify", "--json", source)
        self.assertEqual([track["codec_id"] for track in json.loads(run.output)["inputs"][0]["tracks"]],
                         ["V_MS/VFW/FOURCC", None])

    def test_a_log_directory_that_cannot_be_is_named(self):
        occupied = self.write("occupied", b"")
        self.assert_fails(self.mkvmux("-o", self.output, "--log", occupied, pcm_wave()), "--log", "occupied")
        self.assertFalse(self.output.exists())

    def test_languages_are_listed(self):
        self.assertIn("ger      German\n", self.succeed("--list-languages").output.replace("\r\n", "\n"))
