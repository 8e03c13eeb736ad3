#!/usr/bin/python3
"""Sums up test results: reads JUnit files (as ctest writes them) and prints "N passed, M failed".

A skipped test counts as neither and is named. Exits with 1 if a test failed or none passed.
"""

import sys
import xml.etree.ElementTree as ElementTree


def main():
    passed, failed, skipped = 0, [], []
    for path in sys.argv[1:]:
        try:
            cases = list(ElementTree.parse(path).iter("testcase"))
        except (OSError, ElementTree.ParseError) as error:
            failed.append(f"{path}: {error}")
            continue
        for case in cases:
            name = case.get("name")
            if case.get("status") == "run":
                passed += 1
            elif case.find("skipped") is not None and case.get("status") == "notrun":
                skipped.append(name)
            else:
                failed.append(name)

    for name in skipped:
        print(f"skipped: {name}")
    for name in failed:
        print(f"FAILED: {name}")
    print(f"{passed} passed, {len(failed)} failed")
    sys.exit(0 if passed and not failed else 1)


if __name__ == "__main__":
    main()
