"""The public header, as a compiler for the target sees it: the names are read in the text, every number is what a
program says that was compiled with the header."""

import re
import subprocess
import tempfile
from pathlib import Path

from whole_files.wine_process import WineProcess

ROOT = Path(__file__).resolve().parents[2]
HEADER = ROOT / "include" / "qrx_mkvmuxer.h"
COMPILER = ("x86_64-w64-mingw32-g++-posix", "-std=c++17", "-static", "-municode", "-DNO_DSHOW_STRSAFE")
LIBRARIES = ("-loleaut32", "-lole32", "-luuid")


def compile_program(source, output, *options):
    done = subprocess.run([*COMPILER, *options, "-o", str(output), str(source), *LIBRARIES], capture_output=True, text=True,
                          check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{source} does not compile: {done.stderr}")


def without_comments(text):
    return re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.S)


def records(text):
    """{record: [(type, field)]}"""
    found = {}
    for name, body in re.findall(r"^struct (\w+) \{(.*?)^\};", text, re.S | re.M):
        found[name] = []
        for kind, names in re.findall(r"\s*([\w]+\s*\*?)\s*([^;]+);", body):
            for field in names.split(","):
                found[name].append((kind.replace(" ", ""), field.strip()))
    return found


def enumerations(text):
    """{enumeration: [name]}"""
    return {name: re.findall(r"(\w+)\s*=", body) for name, body in re.findall(r"^enum (\w+) \{(.*?)^\};", text, re.S | re.M)}


def constants(text):
    return re.findall(r"^inline constexpr \w+ (\w+) =", text, re.M)


def identifiers(text):
    return re.findall(r"^DEFINE_GUID\((\w+),", text, re.M)


def methods(text):
    """[(method, [parameter type])] in the order of the declarations."""
    body = re.search(r"^struct IModuleConfig : public IPersistStream \{(.*?)^\};", text, re.S | re.M).group(1)
    found = []
    for name, parameters in re.findall(r"virtual HRESULT STDMETHODCALLTYPE (\w+)\(([^)]*)\) = 0;", body):
        types = [re.sub(r"\bconst\b|\w+$", "", parameter.strip()).replace(" ", "")
                 for parameter in parameters.split(",") if parameter.strip()]
        found.append((name, types))
    return found


PROBE = """
#include <initguid.h>
#include HEADER
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
template <typename T> void Record(const char* name) { std::printf("record %s %u\\n", name, (unsigned)sizeof(T)); }
void Identifier(const char* name, REFGUID guid) {
    wchar_t text[40] = {};
    (void)StringFromGUID2(guid, text, 40);
    std::printf("identifier %s %ls\\n", name, text);
}
void Number(const char* name, long long value) { std::printf("value %s %s\\n", name, std::to_string(value).c_str()); }
// Where a virtual function is, as the compiler's pointers to members have it: one more than its place in the table.
template <typename M> void Method(const char* name, M method) {
    std::ptrdiff_t place = 0;
    std::memcpy(&place, &method, sizeof(place));
    std::printf("method %s %d\\n", name, (int)((place - 1) / (int)sizeof(void*)));
}
int wmain() {
"""


def probe(text):
    """The program that tells the numbers of all that was found in the text."""
    lines = []
    for record, fields in records(text).items():
        lines.append(f'Record<{record}>("{record}");')
        for _, field in fields:
            name = field.split("[")[0]
            lines.append(f'std::printf("field {record}.{name} %u\\n", (unsigned)offsetof({record}, {name}));')
    for name in [name for names in enumerations(text).values() for name in names] + constants(text):
        lines.append(f'Number("{name}", {name});')
    for name in identifiers(text):
        lines.append(f'Identifier("{name}", {name});')
    for name, _ in methods(text):
        lines.append(f'Method("{name}", &IModuleConfig::{name});')
    lines.append('Identifier("__uuidof(IModuleConfig)", __uuidof(IModuleConfig));')
    return PROBE + "\n".join("    " + line for line in lines) + "\n    return 0;\n}\n"


def run_windows_program(*command):
    """Lines of what it writes; it has to succeed."""
    run = WineProcess(*command).wait()
    if run.status != 0:
        raise RuntimeError(f"{command[0]} failed: {run}")
    return run.output.replace("\r", "").splitlines()


def measured(header=HEADER):
    """{"kind name": rest of the line} of all that the header declares."""
    text = without_comments(Path(header).read_text(encoding="utf-8"))
    with tempfile.TemporaryDirectory(prefix="qrx_header_") as folder:
        source, program = Path(folder) / "probe.cpp", Path(folder) / "probe.exe"
        source.write_text(probe(text), encoding="utf-8")
        compile_program(source, program, f'-DHEADER="{header}"')
        lines = [line.split() for line in run_windows_program(program)]
    return {f"{kind} {name}": rest for kind, name, *rest in lines}
