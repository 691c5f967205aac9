"""What mkvmerge's remarks are worth: which fail a file, and the one that does not."""

from whole_files.codec_case import CodecCase, remarks
from whole_files.mkv_builder import audio_fields, cluster, matroska, simple_block, track_entry
from whole_files.mkvmux_case import run_tool

SOUND = audio_fields(8000, 1, 16)


class MkvmergesRemarks(CodecCase):
    def remerge(self, *tracks):
        blocks = [simple_block(number, 0, bytes(1600)) for number in range(1, len(tracks) + 1)]
        source = self.directory / "made.mkv"
        source.write_bytes(matroska(tracks, [cluster(0, *blocks)], 100))
        return run_tool(["mkvmerge", "--ui-language", "en_US", "-o", str(self.directory / "out.mkv"), str(source)])

    def test_a_track_uid_that_is_there_twice_is_none(self):
        done = self.remerge(*(track_entry(n, 2, "A_PCM/INT/LIT", more=SOUND, uid=7) for n in (1, 2)))
        self.assertIn("Could not keep a track's UID 7 ", done.stdout)
        self.assertEqual((done.returncode, remarks(done)), (1, []))

    def test_another_warning_beside_it_is_told(self):
        done = self.remerge(*(track_entry(n, 2, "A_PCM/INT/LIT", more=SOUND, uid=7) for n in (1, 2)),
                            track_entry(3, 2, "A_VORBIS", b"\x02", SOUND))
        self.assertNotEqual([line for line in remarks(done) if line.startswith(("Warning:", "Error:"))], [], done.stdout)

    def test_a_status_that_no_remark_explains_is_told(self):
        done = self.remerge(track_entry(1, 2, "A_PCM/INT/LIT", more=SOUND))
        self.assertEqual((done.returncode, remarks(done)), (0, []))
        done.returncode = 1
        self.assertEqual(remarks(done), ["exit status 1"])
