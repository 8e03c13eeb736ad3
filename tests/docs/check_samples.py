#!/usr/bin/python3
"""Checks that code shown on a page is the program it claims to be.

Above a sample stands a comment with its file, <!-- examples/NAME.cpp -->, which it must equal to the letter, or
<!-- part of examples/NAME.cpp -->, of which it must be a run of whole lines, leading blanks aside.
Relative links must lead to a file of the tree.
"""

import os
import re
import sys
import textwrap

SAMPLE = r"```(?:cpp|c|cmake|sh)\n(.*?)^```"


def is_part(sample, text):
    lines = sample.splitlines()
    whole = text.splitlines()
    for start in range(len(whole) - len(lines) + 1):
        if textwrap.dedent("\n".join(whole[start : start + len(lines)])).splitlines() == lines:
            return True
    return False


def problems(top, page):
    with open(os.path.join(top, page), encoding="utf-8") as file:
        text = file.read()
    samples = re.findall("^" + SAMPLE, text, flags=re.DOTALL | re.MULTILINE)
    named = re.findall(r"^<!-- (part of )?(\S+) -->\n" + SAMPLE, text, flags=re.DOTALL | re.MULTILINE)
    if len(named) != len(samples):
        yield f"{page}: {len(samples) - len(named)} of its samples name no program"
    for part, path, sample in named:
        with open(os.path.join(top, path), encoding="utf-8") as file:
            program = file.read()
        if not (is_part(sample, program) if part else sample == program):
            yield f"{page}: the sample differs from {path}"
    for link in re.findall(r"\]\(([^)#:]+)[^):]*\)", text):
        if not os.path.exists(os.path.join(top, os.path.dirname(page), link)):
            yield f"{page}: nothing is at {link}"


def main():
    top = sys.argv[1]
    found = [problem for page in sys.argv[2:] for problem in problems(top, page)]
    print("\n".join(found) or "all samples and links hold")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
