"""The programs without what only a debugger reads, and that by itself."""

import shutil
import subprocess
from pathlib import Path

TOOLS = "x86_64-w64-mingw32-"


def run(*command):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{command[0]} failed: {done.stderr.strip()}")
    return done.stdout


def split_debug(program, destination, debug_folder):
    """A copy of the program, which names the file of its symbols in debug_folder: lay it beside the program."""
    symbols = Path(debug_folder) / (Path(program).name + ".debug")
    run(TOOLS + "objcopy", "--only-keep-debug", program, symbols)
    shutil.copyfile(program, destination)
    run(TOOLS + "strip", "--strip-all", destination)
    run(TOOLS + "objcopy", f"--add-gnu-debuglink={symbols}", destination)


def copy_without_debug(source, destination):
    """An object file or a library of them, still to be linked."""
    Path(destination).parent.mkdir(parents=True, exist_ok=True)
    shutil.copyfile(source, destination)
    run(TOOLS + "strip", "--strip-debug", "--enable-deterministic-archives", destination)
