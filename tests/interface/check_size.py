#!/usr/bin/python3
"""Strips a copy of the shared library, prints its size and checks it against the most that it may have."""

import os
import subprocess
import sys
import tempfile


def stripped_size(strip, library):
    with tempfile.TemporaryDirectory() as folder:
        copy = os.path.join(folder, "stripped.so")
        subprocess.run([strip, "-o", copy, library], check=True)
        return os.path.getsize(copy)


def main():
    strip, library, limit = sys.argv[1], sys.argv[2], int(sys.argv[3])
    size = stripped_size(strip, library)
    print(f"{library}: {size} bytes when stripped, at most {limit} allowed")
    sys.exit(1 if size > limit else 0)


if __name__ == "__main__":
    main()
