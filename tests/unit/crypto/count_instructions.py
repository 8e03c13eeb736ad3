#!/usr/bin/env python3
"""Counts the instructions that one call of a block function executes and holds them against a limit.

A program is run with 100 and with 200 calls under something that counts: callgrind for the processor at hand, the
execution trace of qemu for another one. The difference is that of 100 calls: what loading the program costs drops
out, and the count is the same in every run.
"""

import argparse
import re
import shutil
import subprocess
import sys

SKIPPED = 77


def with_callgrind(command):
    valgrind = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
    result = subprocess.run(valgrind + command, check=True, stderr=subprocess.PIPE, text=True)
    return int(re.search(r"Collected : (\d+)", result.stderr).group(1))


def with_qemu(emulator, command):
    trace = emulator[:1] + ["-singlestep", "-d", "nochain,exec", "-D", "/dev/stdout"] + emulator[1:]
    with subprocess.Popen(trace + command, stdout=subprocess.PIPE) as process:
        count = sum(line.startswith(b"Trace") for line in process.stdout)
    if process.returncode != 0:
        sys.exit(f"{' '.join(command)} failed")
    return count


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--emulator", default="", help="command of a qemu-user, its arguments separated by semicolons")
    parser.add_argument("--limit", type=int, required=True, help="instructions that a call may execute")
    parser.add_argument("program")
    parser.add_argument("function")
    options = parser.parse_args()

    emulator = options.emulator.split(";") if options.emulator else []
    tool = emulator[0] if emulator else "valgrind"
    if shutil.which(tool) is None:
        print(f"{tool} is not installed: the instructions of {options.function} are not counted")
        return SKIPPED

    def count(calls):
        command = [options.program, options.function, str(calls)]
        return with_qemu(emulator, command) if emulator else with_callgrind(command)

    each = (count(200) - count(100)) / 100
    print(f"{options.function}: {each:.2f} instructions a call, {options.limit} allowed")
    return 0 if 0 < each <= options.limit else 1


if __name__ == "__main__":
    sys.exit(main())
