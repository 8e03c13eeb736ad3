#!/usr/bin/python3
"""Compares what the public headers declare, what the export list names and what the library exports.

Each pair must agree in both directions; every difference is printed with the side it is missing on.
"""

import argparse
import glob
import os
import re
import subprocess
import sys

from clang import cindex
from clang.cindex import AccessSpecifier, AvailabilityKind, CursorKind

FUNCTIONS = {
    CursorKind.FUNCTION_DECL,
    CursorKind.CXX_METHOD,
    CursorKind.CONSTRUCTOR,
    CursorKind.DESTRUCTOR,
}
SCOPES = {
    CursorKind.TRANSLATION_UNIT,
    CursorKind.NAMESPACE,
    CursorKind.LINKAGE_SPEC,
    CursorKind.UNEXPOSED_DECL,
}
CLASSES = {CursorKind.CLASS_DECL, CursorKind.STRUCT_DECL}


def is_exported(cursor):
    """Whether the library has to provide this function: others cannot name it or need no symbol for it."""
    return not (
        cursor.access_specifier == AccessSpecifier.PRIVATE
        or cursor.availability == AvailabilityKind.NOT_AVAILABLE
        or cursor.is_pure_virtual_method()
        or cursor.is_default_method()
    )


def is_polymorphic(cls):
    bases = (c.referenced for c in cls.get_children() if c.kind == CursorKind.CXX_BASE_SPECIFIER)
    return any(c.is_virtual_method() for c in cls.get_children() if c.kind in FUNCTIONS) or any(
        base.get_definition() is not None and is_polymorphic(base.get_definition()) for base in bases
    )


def declared(cursor, include):
    """The mangled names of what a scope in the public headers declares, and the tables of its classes."""
    for child in cursor.get_children():
        if child.location.file and not child.location.file.name.startswith(include):
            continue
        if child.kind in SCOPES:
            yield from declared(child, include)
        elif child.kind in CLASSES and child.is_definition():
            yield from declared(child, include)
            if is_polymorphic(child):
                for table in ("vtable for ", "typeinfo for ", "typeinfo name for "):
                    yield table + child.type.spelling
        elif child.kind in FUNCTIONS and is_exported(child):
            yield child.mangled_name
        elif child.kind == CursorKind.VAR_DECL and child.access_specifier != AccessSpecifier.PRIVATE:
            yield child.mangled_name


def demangled(names):
    text = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True, check=True).stdout
    return set(text.split("\n")) - {""}


def from_headers(include, flags):
    headers = sorted(os.path.basename(h) for h in glob.glob(os.path.join(include, "mvx2", "*.h")))
    source = "".join(f"#include <mvx2/{header}>\n" for header in headers)
    unit = cindex.Index.create().parse(
        "all.cpp", args=["-std=c++17", "-I", include, *flags], unsaved_files=[("all.cpp", source)]
    )
    errors = [str(d) for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
    if errors:
        sys.exit("The headers do not parse:\n" + "\n".join(errors))
    return demangled(declared(unit.cursor, include))


def from_list(path):
    with open(path, encoding="utf-8") as file:
        text = re.sub(r"/\*.*?\*/", "", file.read(), flags=re.DOTALL)
    body = text[text.index("global:") + len("global:") : text.index("local:")]
    quoted = re.findall(r'"([^"]+)";', body)
    plain = re.findall(r"^\s*(\w+);", re.sub(r'"[^"]*"', "", body), flags=re.MULTILINE)
    return set(quoted) | set(plain)


def from_library(path):
    lines = subprocess.run(
        ["nm", "-D", "--defined-only", "-f", "posix", path], capture_output=True, text=True, check=True
    ).stdout.splitlines()
    return demangled(line.split()[0] for line in lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--include", required=True)
    parser.add_argument("--exports", required=True)
    parser.add_argument("--library", dest="built", required=True)
    parser.add_argument("flags", nargs="*")
    options = parser.parse_args()

    sides = {
        "the headers": from_headers(options.include, options.flags),
        "the export list": from_list(options.exports),
        "the library": from_library(options.built),
    }
    differences = [
        f"in {here}, not in {there}: {name}"
        for here, names in sides.items()
        for there, others in sides.items()
        for name in sorted(names - others)
    ]
    print("\n".join(differences) or f"{len(sides['the export list'])} names agree")
    sys.exit(1 if differences else 0)


if __name__ == "__main__":
    main()
