#!/usr/bin/env python3
"""Changes one line of a source folder at a time and asks the folder's tests whether they notice.

mutants.py TREE BUILD FOLDER [MAX [SEED]]: at most MAX changes, chosen by SEED, evenly from the folder's sources. TREE is a
copy that nobody else uses, BUILD its configured build: the changes are all compiled in at once, each behind a switch that
the environment throws (QRX_MUTANT), so that a change costs a run of the tests and no build. What the compiler refuses is
left out. A change is killed by a failing test, a crash or the watchdog; or it survives, or no test comes there at all.
Those two kinds are listed, also in BUILD/FOLDER.md.
"""

import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

DEFAULT_MAX = 100
DEFAULT_SEED = 1
WATCHDOG_SECONDS = 60
WATCHDOG_TIMES = 10  # of what the slow tests take without a change
SLOW_SHARE = 0.02  # of a program's whole time
LARGEST_FILE_BYTES = 1 << 40
MAX_LINES = 8  # of one statement
HEAD_LINES = 2  # before a source's own first line

# The programs that notice a change, the quickest first.
TESTS = {
    "codecs": ("codecs", "media", "annexb_source"),
    "media": ("media", "mkv"),
    "mkv": ("mkv", "matroska_muxer"),
    "matroska_muxer": ("matroska_muxer",),
    "mux": ("mux", "matroska_muxer"),
    "records": ("records", "matroska_muxer"),
}

# Kind, what is replaced, by what. Operators stand between blanks: no bracket of a template is taken for one.
OPERATORS = [("comparison", f" {a} ", f" {b} ") for a, b in (
    ("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"), ("==", "!="), ("!=", "=="))]
OPERATORS += [("condition", " && ", " || "), ("condition", " || ", " && ")]
OPERATORS += [("arithmetic", f" {a} ", f" {b} ") for a, b in (
    ("+", "-"), ("-", "+"), ("*", "+"), ("/", "*"), ("<<", ">>"), (">>", "<<"), ("&", "|"), ("|", "&"), ("%", "/"))]
RULES = [(kind, re.compile(re.escape(before)), after) for kind, before, after in OPERATORS]
RULES += [
    ("condition", re.compile(r"(?<![\w)\]])!(?=[\w(])"), ""),
    ("constant", re.compile(r"\btrue\b"), "false"), ("constant", re.compile(r"\bfalse\b"), "true"),
    ("constant", re.compile(r"\bS_OK\b"), "E_FAIL"), ("constant", re.compile(r"\bS_FALSE\b"), "S_OK"),
    ("constant", re.compile(r"(?<![\w.])\d+(?=[uUlL]*(?![\w.']))"), lambda match: str(int(match[0]) + 1)),
    ("constant", re.compile(r"(?<![\w.])0x[0-9a-fA-F]+(?=[uUlL]*(?![\w.']))"), lambda match: hex(int(match[0], 16) ^ 1)),
]

# What a statement looks like, and which part of it is an expression that may be another one.
STATEMENTS = [
    re.compile(r"^(?P<before>\s*(?:\} else )?(?:if|while) \()(?P<what>(?!.*;)(?!const |auto ).*)(?P<after>\) \{)$"),
    re.compile(r"^(?P<before>\s*for \([^;]*; )(?P<what>[^;]*)(?P<after>; [^;]*\) \{)$"),
    re.compile(r"^(?P<before>\s*return )(?P<what>[^{].*)(?P<after>;)$"),
    re.compile(r"^(?P<before>\s*(?:const )?[\w:.<>*\[\]\->]*[\w\])>]*(?: [\w.]+)? [-+|&]?= )(?P<what>[^{].*)(?P<after>;)$"),
]
CONSTANT = re.compile(r"^(\s*)constexpr ([\w:]+ \w+ = .*;)$")
CALL = re.compile(r"^(\s*)((?:\(void\))?[a-z_A-Z][\w.:>-]*\(.*\));$")
# No code, or code that only debug builds have.
SKIPPED = re.compile(r"^\s*(#|namespace\b|using\b|case\b|static_assert|\}|template\b|public:|private:)|assert\(|Assert\w+\(")

SWITCH = """#pragma once
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <type_traits>
// Whether that change is the one of this run; a run without one writes down which changes it came to.
inline bool QrxMutant(int number) {
    static const char* const text = std::getenv("QRX_MUTANT");
    static const int chosen = text == nullptr ? 0 : std::atoi(text);
    static const char* const reached = std::getenv("QRX_MUTANTS_REACHED");
    if (reached != nullptr) {
        static std::atomic<bool> seen[1 << 16];
        if (!seen[number].exchange(true)) {
            if (std::FILE* const file = std::fopen(reached, "a")) {
                std::fprintf(file, "%d\\n", number);
                std::fclose(file);
            }
        }
    }
    return chosen == number;
}
"""


@dataclass
class Mutant:
    number: int
    path: Path
    line: int
    kind: str
    before: str
    after: str


def code_of(line):
    """Without its comment."""
    return re.sub(r'("(?:[^"\\]|\\.)*")|//.*', lambda match: match[1] or "", line).rstrip()


def texts_of(code):
    return [match.span() for match in re.finditer(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)\'', code)]


def statements_of(lines):
    """First line, number of lines and the whole of each statement that is one by itself."""
    number = 0
    while number < len(lines):
        code = code_of(lines[number])
        if not code.strip() or SKIPPED.search(code):
            number += 1
            continue
        for count in range(1, MAX_LINES + 1):
            whole = " ".join([code_of(lines[number])] + [code_of(line).strip() for line in lines[number + 1:number + count]])
            if whole.endswith((";", "{", "}", ":")) and whole.count("(") == whole.count(")"):
                break
        yield number, count, whole
        number += count


def changes_of(expression):
    """Kind and text of every expression that the rules make of it."""
    texts = texts_of(expression)
    for kind, pattern, replacement in RULES:
        for match in pattern.finditer(expression):
            if any(start < match.end() and match.start() < end for start, end in texts):
                continue
            changed = replacement(match) if callable(replacement) else replacement
            yield kind, expression[:match.start()] + changed + expression[match.end():]


def mutants_of(path, lines, first_number):
    """All changes of a source, by statement: (first line, line count, mutants, how to write them)."""
    number = first_number
    for at, count, whole in statements_of(lines):
        call, constant = CALL.match(whole), CONSTANT.match(whole)
        if call:
            mutants = [Mutant(number, path, at + 1, "call", whole.strip(), "left out")]
            number += 1
            yield at, count, mutants, lambda chosen, call=call: (
                f"{call[1]}if (!QrxMutant({chosen[0].number})) {{ {call[2]}; }}" if chosen else None)
            continue
        text = f"{constant[1]}const {constant[2]}" if constant else whole
        match = next(filter(None, (pattern.match(text) for pattern in STATEMENTS)), None)
        if match is None or "[&" in match["what"] or "[=" in match["what"] or "[this" in match["what"]:
            continue
        kinds = list(changes_of(match["what"]))
        if re.match(r"\s*(\} else )?if ", text):
            kinds.append(("condition", f"!({match['what']})"))
        mutants = [Mutant(number + i, path, at + 1, kind, whole.strip(), (match["before"] + changed + match["after"]).strip())
                   for i, (kind, changed) in enumerate(kinds)]
        texts = {mutant.number: changed for mutant, (_, changed) in zip(mutants, kinds)}
        number += len(mutants)

        def write(chosen, match=match, texts=texts):
            if not chosen:
                return None
            # All of one type, that of the line as it stands: the common one could be another.
            what = match["what"]
            is_condition = match["after"].endswith("{")
            kind = "bool" if is_condition else f"std::decay_t<decltype({what})>"
            choice = "".join(f"QrxMutant({mutant.number}) ? static_cast<{kind}>({texts[mutant.number]}) : " for mutant in chosen)
            last = f"static_cast<bool>({what})" if is_condition else f"({what})"
            return f"{match['before']}({choice}{last}){match['after']}"
        if mutants:
            yield at, count, mutants, write


def write_changed(path, text):
    """What is as it was keeps its time, and is not built again."""
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.write_text(text, encoding="utf-8")


class Source:
    """One source, and its statements with their changes."""

    def __init__(self, path, first_number):
        self.path = path
        self.original = path.read_text(encoding="utf-8")
        self.lines = self.original.splitlines()
        self.statements = list(mutants_of(path, self.lines, first_number))
        self.mutants = [mutant for _, _, mutants, _ in self.statements for mutant in mutants]
        self.included = path.with_suffix(".mutants.inc")

    def write(self, chosen):
        """As a header of the system, whose warnings nobody asks for, with each line where it was."""
        lines = list(self.lines)
        for at, count, mutants, write in self.statements:
            text = write([mutant for mutant in mutants if mutant.number in chosen])
            if text is not None:
                lines[at:at + count] = [text] + [""] * (count - 1)
        head = ["#pragma GCC system_header", '#include "mutant_switch.h"']
        assert len(head) == HEAD_LINES
        write_changed(self.included, "\n".join(head + lines) + "\n")
        write_changed(self.path, f'#include "{self.included.name}"\n')

    def refused(self, log, chosen):
        """Which of the changes the compiler complains of, by the lines that it names."""
        found = set()
        for kind in ("(?:fatal )?error|  required from here", "note"):  # a constant may be complained of where it is used
            if found:
                break
            numbers = re.findall(rf"{re.escape(self.included.name)}:(\d+):\d+: (?:{kind})", log)
            wrong = {int(number) - HEAD_LINES for number in numbers}
            for at, count, mutants, _ in self.statements:
                if any(at < line <= at + count for line in wrong):
                    found |= {mutant.number for mutant in mutants} & chosen
        return found

    def restore(self):
        self.path.write_text(self.original, encoding="utf-8")
        self.included.unlink(missing_ok=True)


class Lane:
    """The copy, its build, and the test programs of one folder."""

    def __init__(self, tree, out, folder):
        self.tree, self.out, self.names = tree, out, TESTS[folder]
        self.scratch = out / "scratch"
        self.switch = tree / folder / "mutant_switch.h"
        number, self.sources = 1, []
        for path in sorted((tree / folder).glob("*.cpp")):
            source = Source(path, number)
            number += len(source.mutants)
            self.sources.append(source)
        self.slow = {}  # of each program, the tests that take most of its time

    def build(self, *targets):
        done = subprocess.run(["cmake", "--build", self.out, "--target", *targets, "--", "-k", "0"], capture_output=True,
                              text=True, check=False)
        return done.returncode == 0, done.stdout + done.stderr

    def compile(self, chosen):
        """All changes that the compiler takes; without what it refuses, until it takes the rest."""
        write_changed(self.switch, SWITCH)
        targets = [f"test_{name}" for name in self.names]
        for source in self.sources:
            source.write(chosen)
        while True:
            good, log = self.build(*targets)
            if good:
                return chosen
            refused = set()
            for source in self.sources:
                wrong = source.refused(log, chosen)
                if wrong:
                    refused |= wrong
                    source.write(chosen - wrong)
            if not refused:
                sys.exit(f"mutants: the copy does not build:\n{log[-4000:]}")
            chosen = chosen - refused

    def fails(self, name, limit, only="*", **variables):
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)
        environment = dict(os.environ, QRX_SOURCE_DIR=str(self.tree), QRX_JUDGE_DIR=str(self.scratch), **variables)

        def bounded():
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            resource.setrlimit(resource.RLIMIT_FSIZE, (LARGEST_FILE_BYTES, LARGEST_FILE_BYTES))
        with open(self.scratch / "log", "w", encoding="utf-8") as log:
            program = subprocess.Popen([self.out / "bin" / f"test_{name}", "--gtest_fail_fast", f"--gtest_filter={only}"],
                                       stdout=log, stderr=log, stdin=subprocess.DEVNULL, cwd=self.scratch, env=environment,
                                       start_new_session=True, preexec_fn=bounded)
            try:
                return program.wait(limit) != 0 and self.reason(program.returncode)
            except subprocess.TimeoutExpired:
                os.killpg(program.pid, signal.SIGKILL)  # a session of its own: nobody else is in it
                program.wait()
                return "the watchdog"

    def reason(self, status):
        text = (self.scratch / "log").read_text(encoding="utf-8", errors="replace")
        failed = re.search(r"^\[  FAILED  \] ([\w./]+)", text, re.M)
        last = re.findall(r"^\[ RUN      \] (\S+)", text, re.M)
        return failed[1] if failed else f"status {status} in {last[-1] if last else '?'}"

    def reached(self):
        """By the tests of the unchanged program, which must pass."""
        marks = self.out / "reached"
        marks.unlink(missing_ok=True)
        for name in self.names:
            why = self.fails(name, 3600, QRX_MUTANTS_REACHED=str(marks))
            if why:
                sys.exit(f"mutants: without any change {why} of '{name}' fails")
            self.slow[name] = self.slow_tests()
        return {int(line) for line in marks.read_text(encoding="ascii").split()} if marks.exists() else set()

    def slow_tests(self):
        text = (self.scratch / "log").read_text(encoding="utf-8", errors="replace")
        times = {name: int(ms) for name, ms in re.findall(r"^\[       OK \] ([\w./]+).* \((\d+) ms\)$", text, re.M)}
        return {name: ms / 1000 for name, ms in times.items() if ms > sum(times.values()) * SLOW_SHARE}

    def killer(self, mutant):
        """The slow tests come last: most changes do not live to see them."""
        slow = {name: ":".join(tests) for name, tests in self.slow.items()}
        runs = [(name, f"*-{tests}", WATCHDOG_SECONDS) for name, tests in slow.items()]
        runs += [(name, tests, WATCHDOG_SECONDS + WATCHDOG_TIMES * sum(self.slow[name].values()))
                 for name, tests in slow.items() if tests]
        for name, only, limit in runs:
            why = self.fails(name, limit, only, QRX_MUTANT=str(mutant.number))
            if why:
                return why
        return None

    def restore(self):
        for source in self.sources:
            source.restore()


def evenly(sources, numbers, most, seed):
    """Of each source in turn, so that a long one does not have all of them."""
    chance = random.Random(seed)
    queues = []
    for source in sources:
        queue = [mutant for mutant in source.mutants if mutant.number in numbers]
        chance.shuffle(queue)
        queues.append(queue)
    while any(queues) and most > 0:
        for queue in filter(None, queues):
            if most > 0:
                yield queue.pop()
                most -= 1


def table(mutants, tree):
    yield "| where | kind | line | changed to |"
    yield "|---|---|---|---|"
    for mutant in mutants:
        cells = [f"`{text}`".replace("|", "\\|") for text in (mutant.before, mutant.after)]
        yield f"| {mutant.path.relative_to(tree)}:{mutant.line} | {mutant.kind} | {cells[0]} | {cells[1]} |"


def main():
    tree, out, folder = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), sys.argv[3]
    most = int(sys.argv[4]) if len(sys.argv) > 4 else DEFAULT_MAX
    seed = int(sys.argv[5]) if len(sys.argv) > 5 else DEFAULT_SEED
    if folder not in TESTS:
        sys.exit(f"mutants: no tests are named for '{folder}'; these are: {' '.join(TESTS)}")
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("mutants: ended"))  # the copy is as it was then, too
    lane = Lane(tree, out, folder)
    everything = {mutant.number for source in lane.sources for mutant in source.mutants}
    tried, survivors, missed = [], [], []
    try:
        taken = lane.compile(everything)
        reached = lane.reached()
        print(f"{folder}: {len(everything)} changes, {len(taken)} compile, the tests come to {len(reached)}", flush=True)
        for mutant in evenly(lane.sources, taken, most, seed):
            tried.append(mutant)
            why = lane.killer(mutant) if mutant.number in reached else "nobody comes there"
            if why is None:
                survivors.append(mutant)
            elif mutant.number not in reached:
                missed.append(mutant)
            print(f"{mutant.path.name}:{mutant.line}: {why or 'SURVIVED'}: {mutant.after}  <= {mutant.before}", flush=True)
    finally:
        lane.restore()
    killed = len(tried) - len(survivors) - len(missed)
    lines = [f"{folder}: of {len(taken)} changes that compile, {len(tried)} tried (seed {seed}): {killed} killed, "
             f"{len(survivors)} survived, no test comes to {len(missed)}", "",
             "Survived:", *table(survivors, tree), "", "No test comes there:", *table(missed, tree)]
    (out / f"{folder}.md").write_text("\n".join(lines) + "\n", encoding="utf-8")
    print("\n".join(lines))
    return 0 if tried else 1


if __name__ == "__main__":
    sys.exit(main())
