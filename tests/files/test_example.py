"""The example runs here as the documents show it."""

import subprocess
from pathlib import Path

from whole_files.mkvmux_case import RUN_TIMEOUT_SECONDS, MkvmuxCase, pcm_wave
from whole_files.wine_process import wine_environment

ROOT = Path(__file__).resolve().parents[2]


class Example(MkvmuxCase):
    def setUp(self):
        super().setUp()
        (self.directory / "in.wav").write_bytes(pcm_wave(1).read_bytes())
        (self.directory / "cover.jpg").write_bytes(b"not really a picture")

    def run_command(self, line):
        """Words of a document, in the directory of the files. Output to files: what Wine starts keeps pipes open."""
        with open(self.directory / "said.txt", "w+b") as said:
            done = subprocess.run([ROOT / "dev", *line.split()[1:]], cwd=self.directory, env=wine_environment(),
                                  stdin=subprocess.DEVNULL, stdout=said, stderr=said, check=False,
                                  timeout=RUN_TIMEOUT_SECONDS)
            said.seek(0)
            return done.returncode, said.read().decode("utf-8", "replace")

    def test_the_example_runs_as_it_is_shown(self):
        line = "./dev example in.wav out.mkv cover.jpg"
        self.assertIn(line, (ROOT / "README.md").read_text().replace("\n", " "))
        self.assertEqual(self.run_command(line)[0], 0)
        output = self.directory / "out.mkv"
        track = self.identify(output)["tracks"][0]["properties"]
        self.assertEqual((track["track_name"], track["language"]), ("Commentary", "fre"))
        self.assertEqual([a["file_name"] for a in self.identify(output)["attachments"]], ["cover.jpg"])
        self.assert_same_packets(self.directory / "in.wav", 0, output, 0)

    def test_the_example_fails_with_its_own_words(self):
        status, said = self.run_command("./dev example none.wav out.mkv cover.jpg")
        self.assertEqual(status, 2, said)
        self.assertIn("mux_wave: the input cannot be opened", said)
