"""Wine under another locale, and with it under another ANSI code page.

The locale has to exist, or arguments outside ASCII arrive garbled; it is made in the build folder. A Wine prefix
remembers the locale that it was made in, so each has one of its own.
"""

import fcntl
import os
import subprocess

from whole_files.wine_process import BUILD, WINE, wine_environment

LOCALES = BUILD / "locales"


def environment_of(locale):
    """What a program needs in its environment to run under "ru_RU" or the like."""
    prefix = BUILD / f"wineprefix-{locale}"
    settings = {"LC_ALL": f"{locale}.UTF-8", "LOCPATH": str(LOCALES), "WINEPREFIX": str(prefix)}
    LOCALES.mkdir(parents=True, exist_ok=True)
    with open(LOCALES / f"{locale}.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)  # suites run side by side
        make_locale(locale)
        make_prefix(prefix, settings)
    return settings


def make_locale(locale):
    target = LOCALES / f"{locale}.UTF-8"
    if not target.exists():
        unfinished = LOCALES / f"{locale}.part"
        subprocess.run(["localedef", "-i", locale, "-f", "UTF-8", str(unfinished)], check=True)
        unfinished.rename(target)


def make_prefix(prefix, settings):
    ready = prefix / ".ready"
    if not ready.exists():
        subprocess.run([WINE, "wineboot", "-i"], env={**wine_environment(), **settings}, check=True,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        ready.touch()
