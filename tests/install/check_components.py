#!/usr/bin/python3
"""Installs every component by itself and compares its files with the list of what it is to hold.

A file of the whole installation that no component holds fails too: it would be in no package.
"""

import argparse
import os
import shutil
import subprocess
import sys

MODULES = "mvx2-sim"
HEADERS = [
    "Channel.h",
    "MVX2Exception.h",
    "MVX2Interfaces.h",
    "NullStream.h",
    "SAMChannel.h",
    "SAMInterfaces.h",
    "USBChannel.h",
    "aes.h",
    "aes_cmac.h",
    "des.h",
    "des_mac.h",
    "export.h",
]


def expected(libdir, version):
    """What each component holds. The build type names one file of the CMake package."""
    library = f"{libdir}/libMVX2Interfaces.so"
    package = f"{libdir}/cmake/MVX2Interfaces/MVX2Interfaces"
    return {
        "runtime": {f"{library}.{version}", f"{library}.{version.split('.')[0]}"},
        "development": {f"include/mvx2/{header}" for header in HEADERS}
        | {library, f"{libdir}/pkgconfig/libMVX2Interfaces.pc"}
        | {f"{package}{part}.cmake" for part in ("Config", "ConfigVersion", "Targets", "Targets-TYPE")},
        "tools": {
            "bin/mvx2",
            "share/bash-completion/completions/mvx2",
            "share/man/man1/mvx2.1",
            "share/mvx2/schema/backup-1.json",
            "share/mvx2/schema/output-1.json",
            "share/zsh/site-functions/_mvx2",
        },
        "simulator": {
            "bin/mvx2-sim",
            f"{libdir}/{MODULES}/mvx2_sim_driver.so",
            f"{libdir}/{MODULES}/mvx2_sim_usb.so",
            "share/man/man1/mvx2-sim.1",
        },
    }


def install(build, prefix, *component):
    command = ["cmake", "--install", build, "--prefix", prefix, *component]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    found = set()
    for directory, _, files in os.walk(prefix):
        found |= {os.path.relpath(os.path.join(directory, name), prefix) for name in files}
    for build_type in ("debug", "release", "relwithdebinfo", "minsizerel", "none", "noconfig"):
        found = {name.replace(f"Targets-{build_type}.cmake", "Targets-TYPE.cmake") for name in found}
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True)
    parser.add_argument("--into", required=True)
    parser.add_argument("--libdir", required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("optional", nargs="*", help="which of tools and simulator this build has")
    options = parser.parse_args()

    shutil.rmtree(options.into, ignore_errors=True)
    whole = install(options.build, os.path.join(options.into, "whole"))
    problems = []
    held = set()
    for component, wanted in expected(options.libdir, options.version).items():
        if component in ("tools", "simulator") and component not in options.optional:
            continue
        found = install(options.build, os.path.join(options.into, component), "--component", component)
        held |= found
        problems += [f"{component} lacks {name}" for name in sorted(wanted - found)]
        problems += [f"{component} also holds {name}" for name in sorted(found - wanted)]

    pages = install(options.build, os.path.join(options.into, "documentation"), "--component", "documentation")
    problems += [f"documentation also holds {name}" for name in sorted(pages) if not name.startswith("share/doc/")]
    problems += [f"no component holds {name}" for name in sorted(whole - held - pages)]
    print("\n".join(problems) or f"{len(whole)} files are in their components")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
