#!/usr/bin/python3
"""Checks that code shown on a page is the program it claims to be.

A sample stands below a comment with the program's path, <!-- examples/NAME.cpp -->, and must equal it to the letter.
Relative links must lead to a file of the tree.
"""

import os
import re
import sys


def problems(top, page):
    with open(os.path.join(top, page), encoding="utf-8") as file:
        text = file.read()
    samples = re.findall(r"^```(?:cpp|c)\n(.*?)^```", text, flags=re.DOTALL | re.MULTILINE)
    named = re.findall(r"^<!-- (\S+) -->\n```(?:cpp|c)\n(.*?)^```", text, flags=re.DOTALL | re.MULTILINE)
    if len(named) != len(samples):
        yield f"{page}: {len(samples) - len(named)} of its samples name no program"
    for path, sample in named:
        with open(os.path.join(top, path), encoding="utf-8") as file:
            if file.read() != sample:
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
