"""A case once more for files of the strict profile."""

import sys

STRICT = "strict"


def in_both_profiles(case):
    """The case stays as it is; its module gets a second one, named Strict…, whose files are of the strict profile. What
    is added to the case later is in both."""
    name = "Strict" + case.__name__
    strict = type(name, (case,), {"__module__": case.__module__, "__qualname__": name, "profile": STRICT})
    setattr(sys.modules[case.__module__], name, strict)
    return case
