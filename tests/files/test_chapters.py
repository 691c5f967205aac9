"""Chapters and tags of the whole file, from files beside the inputs and carried over from Matroska inputs: what
mkvextract gives back is what came in."""

import json
import xml.etree.ElementTree as ElementTree

from whole_files.mkvmux_case import MkvmuxCase, make_input, pcm_wave, picture, run_tool, sound
from whole_files.profiles import STRICT

LINES = """CHAPTER01=00:00:00.000
CHAPTER01NAME=Intro
CHAPTER02=00:00:01.500
CHAPTER02NAME=Über = alles
"""
CHAPTERS = """<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE Chapters SYSTEM "matroskachapters.dtd">
<Chapters><EditionEntry><EditionFlagHidden>0</EditionFlagHidden><EditionFlagDefault>0</EditionFlagDefault>
<ChapterAtom><ChapterUID>5</ChapterUID><ChapterTimeStart>00:00:00.000000000</ChapterTimeStart>
<ChapterTimeEnd>00:00:02.1234567</ChapterTimeEnd><ChapterFlagHidden>0</ChapterFlagHidden>
<ChapterFlagEnabled>1</ChapterFlagEnabled>
<ChapterDisplay><ChapterString>Teil 1 &amp; mehr</ChapterString><ChapterLanguage>ger</ChapterLanguage></ChapterDisplay>
<ChapterDisplay><ChapterString>Part 1</ChapterString><ChapterLanguage>por</ChapterLanguage>
<ChapLanguageIETF>pt-BR</ChapLanguageIETF></ChapterDisplay>
<ChapterAtom><ChapterUID>6</ChapterUID><ChapterTimeStart>00:00:01</ChapterTimeStart>
<ChapterFlagHidden>1</ChapterFlagHidden><ChapterFlagEnabled>0</ChapterFlagEnabled>
<ChapterDisplay><ChapterString>Sub</ChapterString><ChapterLanguage>eng</ChapterLanguage></ChapterDisplay></ChapterAtom>
</ChapterAtom>
<ChapterAtom><ChapterUID>7</ChapterUID><ChapterTimeStart>00:00:02.5</ChapterTimeStart></ChapterAtom>
</EditionEntry></Chapters>
"""
TAGS = """<?xml version="1.0"?>
<Tags><Tag><Targets><TargetTypeValue>50</TargetTypeValue></Targets>
<Simple><Name>ARTIST</Name><String>Jemand &lt;er&gt;</String><TagLanguageIETF>de</TagLanguageIETF>
<Simple><Name>SORT_WITH</Name><String>Er</String></Simple></Simple>
<Simple><Name>TITLE</Name><String>日本</String></Simple></Tag>
<Tag><Targets><TargetTypeValue>30</TargetTypeValue><TargetType>TRACK</TargetType></Targets>
<Simple><Name>PART_NUMBER</Name><String>3</String></Simple></Tag></Tags>
"""
CODES = {"ger": "de", "eng": "en", "por": "pt", "fre": "fr"}
NS_DIGITS = 9


def time_of(text):
    clock, _, fraction = text.partition(".")
    return f"{clock}.{fraction:0<{NS_DIGITS}}"


def language_of(element, old, new):
    """The tag, or what the older element's code stands for."""
    found = element.findtext(new)
    return found or CODES.get(element.findtext(old, ""), element.findtext(old, "und"))


def chapter_tree(parent):
    return [{"uid": atom.findtext("ChapterUID"), "start": time_of(atom.findtext("ChapterTimeStart")),
             "end": time_of(atom.findtext("ChapterTimeEnd")) if atom.findtext("ChapterTimeEnd") else None,
             "hidden": atom.findtext("ChapterFlagHidden", "0"), "enabled": atom.findtext("ChapterFlagEnabled", "1"),
             "titles": [(shown.findtext("ChapterString"), language_of(shown, "ChapterLanguage", "ChapLanguageIETF"))
                        for shown in atom.findall("ChapterDisplay")], "parts": chapter_tree(atom)}
            for atom in parent.findall("ChapterAtom")]


def chapters_of(xml):
    root = ElementTree.fromstring(xml)
    return chapter_tree(root.find("EditionEntry"))


def simple_tree(parent):
    return [(simple.findtext("Name"), simple.findtext("String"), language_of(simple, "TagLanguage", "TagLanguageIETF"),
             simple_tree(simple)) for simple in parent.findall("Simple")]


def global_tags_of(xml):
    """Without those of tracks."""
    tags = []
    for tag in ElementTree.fromstring(xml).findall("Tag"):
        targets = tag.find("Targets")
        if targets is None or targets.find("TrackUID") is None:
            value = "50" if targets is None else targets.findtext("TargetTypeValue", "50")
            tags.append((value, None if targets is None else targets.findtext("TargetType"), simple_tree(tag)))
    return tags


def film():
    return make_input("film.mkv", *picture(3), *sound(3), "-c:v", "mpeg4", "-c:a", "flac")


def web_film():
    return make_input("film.webm", *picture(3), "-c:v", "libvpx")


class Chapters(MkvmuxCase):
    profile = STRICT

    def written(self, name, text, encoding="utf-8"):
        path = self.directory / name
        path.write_bytes(text.encode(encoding))
        return path

    def extract(self, path, *what):
        done = run_tool(["mkvextract", str(path), *what, "-"])
        self.assertEqual(done.returncode, 0, done)
        return done.stdout.lstrip("\ufeff")

    def output(self, *arguments, name="out.mkv"):
        output = self.directory / name
        self.mux(output, *arguments)
        return output

    def source(self):
        """Chapters, tags, and what no file but its own may have, by mkvmerge."""
        path = self.directory / "source.mkv"
        done = run_tool(["mkvmerge", "-q", "-o", str(path), "--chapters", str(self.written("c.xml", CHAPTERS)),
                         "--global-tags", str(self.written("t.xml", TAGS)), str(film())])
        self.assertEqual(done.returncode, 0, done)
        return path

    def test_lines_come_back_as_they_were(self):
        path = self.output("--chapters", self.written("c.txt", LINES), pcm_wave())
        self.assertEqual(self.extract(path, "chapters", "-s"), LINES)
        shown = json.loads(self.run_ffprobe(path, "-show_chapters", "-of", "json"))["chapters"]
        self.assertEqual([(chapter["start"], chapter["tags"]["title"]) for chapter in shown],
                         [(0, "Intro"), (1_500_000_000, "Über = alles")])
        self.assertEqual(self.identify(path)["chapters"], [{"num_entries": 2}])
        titles = [chapter["titles"] for chapter in chapters_of(self.extract(path, "chapters"))]
        self.assertEqual(titles, [[("Intro", "en")], [("Über = alles", "en")]])

    def test_languages_and_character_sets_of_lines(self):
        for charset, encoding in (("windows-1252", "cp1252"), ("UTF-8", "utf-8"), ("ISO-8859-1", "latin-1")):
            with self.subTest(charset=charset):
                path = self.output("-y", "--chapter-charset", charset, "--chapter-language", "fre", "--chapters",
                                   self.written("c.txt", LINES, encoding), pcm_wave())
                titles = [chapter["titles"] for chapter in chapters_of(self.extract(path, "chapters"))]
                self.assertEqual(titles, [[("Intro", "fr")], [("Über = alles", "fr")]])
        path = self.output("-y", "--chapters", self.written("c.txt", LINES, "utf-16"), pcm_wave())
        self.assertEqual(self.extract(path, "chapters", "-s"), LINES)

    def test_xml_comes_back_with_parts_titles_and_identifiers(self):
        path = self.output("--chapters", self.written("c.xml", CHAPTERS), film())
        self.assertEqual(chapters_of(self.extract(path, "chapters")), chapters_of(CHAPTERS.replace("1234567", "123456700")))
        again = self.output("--chapters", self.written("again.xml", self.extract(path, "chapters")), film(),
                            name="again.mkv")
        self.assertEqual(self.extract(again, "chapters", "-s"), self.extract(path, "chapters", "-s"))

    def test_tags_come_back_beside_the_statistics(self):
        path = self.output("--global-tags", self.written("t.xml", TAGS), pcm_wave())
        tags = self.extract(path, "tags")
        self.assertEqual(global_tags_of(tags), global_tags_of(TAGS))
        self.assertIn("<Name>NUMBER_OF_BYTES</Name>", tags)
        self.assertEqual(self.identify(path)["global_tags"], [{"num_entries": 3}])
        shown = json.loads(self.run_ffprobe(path, "-show_entries", "format_tags", "-of", "json"))["format"]["tags"]
        shown = {name.lower(): value for name, value in shown.items()}
        self.assertEqual((shown["artist-ger"], shown["title"]), ("Jemand <er>", "日本"))

    def test_a_remux_carries_both_over(self):
        source = self.source()
        path = self.output(source)
        self.assertEqual(chapters_of(self.extract(path, "chapters")), chapters_of(self.extract(source, "chapters")))
        self.assertEqual(global_tags_of(self.extract(path, "tags")), self.merged(global_tags_of(
            self.extract(source, "tags"))))
        again = self.output(path, name="again.mkv")
        self.assertEqual(self.extract(again, "chapters", "-s"), self.extract(path, "chapters", "-s"))
        self.assertEqual(global_tags_of(self.extract(again, "tags")), global_tags_of(self.extract(path, "tags")))

    @staticmethod
    def merged(tags):
        """Those of one target that follow each other share a Tag."""
        merged = []
        for value, name, simples in tags:
            if merged and merged[-1][:2] == (value, name):
                merged[-1] = (value, name, merged[-1][2] + simples)
            else:
                merged.append((value, name, simples))
        return merged

    def test_what_the_inputs_have_can_be_left_out_or_replaced(self):
        source = self.source()
        path = self.output("--no-chapters", "--no-global-tags", source)
        self.assertEqual(self.identify(path)["chapters"], [])
        self.assertEqual(self.identify(path)["global_tags"], [])
        path = self.output("-y", "--chapters", self.written("c.txt", LINES), source)
        self.assertEqual(self.extract(path, "chapters", "-s"), LINES)

    def test_webm_has_what_its_guidelines_list(self):
        path = self.output("--chapters", self.written("c.xml", CHAPTERS), "--global-tags", self.written("t.xml", TAGS),
                           web_film(), name="out.webm")
        titles = [chapter["titles"] for chapter in chapters_of(self.extract(path, "chapters"))]
        self.assertEqual(titles, [[("Teil 1 & mehr", "de"), ("Part 1", "pt")], []])

    def test_a_configuration_keeps_them(self):
        saved = self.directory / "saved.cfg"
        self.output("--chapters", self.written("c.txt", LINES), "--global-tags", self.written("t.xml", TAGS),
                    "--save-config", saved, pcm_wave())
        path = self.output("--load-config", saved, pcm_wave(), name="second.mkv")
        self.assertEqual(self.extract(path, "chapters", "-s"), LINES)
        self.assertEqual(global_tags_of(self.extract(path, "tags")), global_tags_of(TAGS))

    def test_what_is_wrong_is_told_with_file_and_line(self):
        bomb = '<!DOCTYPE a [<!ENTITY b "bb"><!ENTITY c "&b;&b;">]>\n<Chapters>&c;</Chapters>'
        cases = [("--chapters", "c.xml", CHAPTERS.replace("<ChapterUID>6<", "<ChapterUID>six<"), "c.xml:10: <ChapterUID>: 'six' is no number"),
                 ("--chapters", "c.xml", CHAPTERS[:-27], "c.xml:14: it is no XML document: start-end tags mismatch"),
                 ("--chapters", "c.xml", bomb, "c.xml:1: a document type with declarations of its own is not read"),
                 ("--chapters", "c.txt", LINES + "CHAPTER03=soon\n", "c.txt:5: 'soon' is no time"),
                 ("--chapters", "c.txt", "hello\n", "c.txt:2: it is no XML document: no document element found"),
                 ("--chapters", "c.txt", " " * (8 * 1024 * 1024 + 1), "is too large"),
                 ("--chapters", "c.xml", "<a>" * 100_000 + "</a>" * 100_000, "c.xml:1: it has too many elements, or too deep ones"),
                 ("--global-tags", "t.xml", TAGS.replace("<Name>TITLE</Name>", ""), "t.xml:5: <Name> is missing"),
                 ("--global-tags", "t.xml", CHAPTERS, "t.xml:3: <Tags> is missing here")]
        for option, name, text, complaint in cases:
            with self.subTest(complaint=complaint):
                output = self.directory / "refused.mkv"
                self.assert_fails(self.mkvmux("-o", output, option, self.written(name, text), pcm_wave()), complaint)
                self.assertFalse(output.exists())
        missing = self.directory / "missing.xml"
        self.assert_fails(self.mkvmux("-o", output, "--chapters", missing, pcm_wave()), "missing.xml: cannot be opened")
        for arguments, complaint in ((("--chapter-language", "en"), "--chapter-language goes with --chapters only"),
                                     (("--chapters", "c", "--chapter-language", "no language"), "is no language"),
                                     (("--chapters", "c", "--chapter-charset", "x-none"), "is no character set")):
            self.assert_fails(self.mkvmux("-o", output, *arguments, pcm_wave()), complaint)

    def test_what_is_left_out_is_a_warning(self):
        chapters = CHAPTERS.replace("<ChapterUID>7<", "<ChapterPhysicalEquiv>60</ChapterPhysicalEquiv><ChapterUID>7<")
        tags = TAGS.replace("<TargetType>TRACK<", "<TrackUID>9</TrackUID><TargetType>TRACK<")
        run = self.mkvmux("-o", self.directory / "out.mkv", "--chapters", self.written("c.xml", chapters),
                          "--global-tags", self.written("t.xml", tags), pcm_wave())
        self.assertEqual((run.status, len(run.error_lines)), (1, 2), run)
        self.assertIn("left out of the chapters: <ChapterPhysicalEquiv>", run.error_lines[0])
        self.assertIn("left out: 1 tags of single tracks", run.error_lines[1])

    def test_neither_is_written_over(self):
        path = self.written("c.txt", LINES)
        self.assert_fails(self.mkvmux("-y", "-o", path, "--chapters", path, pcm_wave()), "is an input")
        self.assertEqual(path.read_text(encoding="utf-8"), LINES)


class CompatibleChapters(MkvmuxCase):
    def test_there_are_none_and_the_user_is_told(self):
        output, lines = self.directory / "out.mkv", self.directory / "c.txt"
        lines.write_text(LINES, encoding="utf-8")
        run = self.mkvmux("-o", output, "--chapters", lines, pcm_wave())
        self.assertEqual((run.status, len(run.error_lines)), (1, 1), run)
        self.assertIn("--chapters: no effect with the compatible profile", run.error_lines[0])
        self.assertEqual(self.identify(output)["chapters"], [])
