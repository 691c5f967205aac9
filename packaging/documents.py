"""The documents as pages that a browser shows without a web server."""

import re
import shutil
import subprocess

PAGES = ("README.md", "CHANGELOG.md", "ARCHITECTURE.md", "CONTRIBUTING.md", "SECURITY.md", "docs/*.md",
         "fuzz/README.md")
LINKED = ("LICENSE", "docs/performance.json")  # by the pages
STYLE = """<style>
body { max-width: 60em; margin: 2em auto; padding: 0 1em; font: 16px/1.5 sans-serif; }
table { border-collapse: collapse; } td, th { border: 1px solid #8888; padding: .2em .6em; vertical-align: top; }
pre, code { font-family: monospace; background: #8881; } pre { padding: .6em; overflow-x: auto; }
img { max-width: 100%; } @media (prefers-color-scheme: dark) { body { background: #111; color: #ddd; } a { color: #8bf; } }
</style>
"""


def page(text, title):
    """HTML of a text in Markdown; links to other such texts lead to their pages."""
    text = re.sub(r"(\]\((?!https?:)[^)#\s]+)\.md(#[^)]*)?\)", lambda link: f"{link[1]}.html{link[2] or ''})", text)
    done = subprocess.run(["pandoc", "-f", "gfm", "-t", "html5", "--standalone", "--metadata", f"pagetitle={title}", "-V",
                           f"header-includes={STYLE}"], input=text, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"pandoc: {done.stderr.strip()}")
    return done.stdout


def add_documents(root, destination):
    for pattern in PAGES:
        for source in sorted(root.glob(pattern)):
            output = (destination / source.relative_to(root)).with_suffix(".html")
            output.parent.mkdir(parents=True, exist_ok=True)
            output.write_text(page(source.read_text(encoding="utf-8"), source.stem), encoding="utf-8")
    for name in LINKED:
        shutil.copyfile(root / name, destination / name)
    shutil.copytree(root / "docs" / "images", destination / "docs" / "images")
