#!/usr/bin/python3
"""Checks the shared library's name, hardening and dependencies, as readelf shows them."""

import re
import subprocess
import sys

ALLOWED = {"libpcsclite", "libmbedcrypto", "libstdc++", "libgcc_s", "libc"}
SANITIZERS = {"libasan", "libubsan"}


def readelf(option, path):
    return subprocess.run(["readelf", "-W", option, path], capture_output=True, text=True, check=True).stdout


def main():
    path = sys.argv[1]
    dynamic = readelf("-d", path)
    segments = readelf("-l", path)
    soname = re.search(r"SONAME\).*\[(.*)\]", dynamic)
    needed = {re.split(r"\.so|-\d", name)[0] for name in re.findall(r"NEEDED\).*\[(.*)\]", dynamic)}
    is_sanitized = bool(needed & SANITIZERS)

    problems = []
    if soname is None or soname.group(1) != "libMVX2Interfaces.so.1":
        problems.append("its SONAME is not libMVX2Interfaces.so.1")
    if "GNU_RELRO" not in segments or not re.search(r"FLAGS.*NOW", dynamic):
        problems.append("it is not linked with full relro")
    if re.search(r"GNU_STACK.*RWE", segments):
        problems.append("its stack is executable")
    if "TEXTREL" in dynamic:
        problems.append("it has text relocations")
    if not is_sanitized and needed - ALLOWED:
        problems.append(f"it depends on {', '.join(sorted(needed - ALLOWED))}")
    print("\n".join(f"{path}: {problem}" for problem in problems) or "as documented")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
