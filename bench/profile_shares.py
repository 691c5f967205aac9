#!/usr/bin/env python3
"""Where the processor time of a profile went, by kind of work, without the making of the load.

    perf record -F 1999 -o FILE build/bench/bin/bench_native RESULT.json FOLDER --only ours ROW
    bench/profile_shares.py FILE…
"""

import re
import subprocess
import sys

NOT_COUNTED = "making and checking the load"
# The first pattern that fits a function's name says what it is.
KINDS = [
    (NOT_COUNTED, r"mersenne|FillWithNoise|normal_distribution|PacketLoad::|Layout|test_support|CheckFile|__log"),
    ("allocator", r"malloc|_int_free|free@|unlink_chunk|operator (new|delete)|systrim|tcache"),
    ("locks", r"mutex|CriticalSection|lll_lock"),
    ("payload copies", r"memmove|memcpy"),
    ("page faults and fresh memory", r"page_fault|clear_page|charge|do_anonymous|unmap|zap|lru|vma|madvise|mmap|handle_mm|"
                                     r"alloc_pages|rmqueue|free_unref|release_pages|memcg|mem_cgroup|tlb|irqentry_exit|pte|mas_"),
    ("file write", r"copy_folio|folio|filemap|shmem|generic_perform|fault_in|copy_page|xas_|iov_iter|write"),
    ("switches and wake-ups", r"finish_task|schedule|futex|_raw_spin|try_to_wake|switch|pick_next|enqueue|dequeue|cond|[sS]leep"),
    ("clock", r"clock_gettime|steady_clock|TickCount|Ticks"),
    ("libmatroska and libebml", r"libmatroska|libebml"),
    ("mkv/", r"mkv::|CMkv"),
    ("mux/ and matroska_muxer/", r"CMux|CBaseMux|CFrame|CStream|CUntimed|CMatroskaMuxer|Stall|ReadSample"),
    ("the source", r"bench::"),
]
LINE = re.compile(r"\s*([\d.]+)%\s+\[.\]\s+(.*?)(?:\s+-\s+-)?\s*$")


def kind_of(function):
    return next((kind for kind, pattern in KINDS if re.search(pattern, function)), "the rest")


def shares(path):
    command = ["perf", "report", "-i", path, "--no-children", "--comm", "bench_native", "--sort", "symbol"]
    listing = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    found = {}
    for line in listing.splitlines():
        if match := LINE.match(line):
            found[kind_of(match[2])] = found.get(kind_of(match[2]), 0.0) + float(match[1])
    found.pop(NOT_COUNTED, None)
    whole = sum(found.values())
    return {kind: share / whole for kind, share in sorted(found.items(), key=lambda item: -item[1])}


for name in sys.argv[1:]:
    print(name)
    for what, part in shares(name).items():
        print(f"  {100 * part:5.1f} %  {what}")
