#!/usr/bin/python3
"""Fails if a public command of the device facade has no row in the command table."""

import argparse
import os
import sys

from clang import cindex
from clang.cindex import AccessSpecifier, AvailabilityKind, CursorKind

# The frame of the facade: these are no commands.
FRAME = {
    "getInstance", "releaseInstance", "connect", "reconnect", "disconnect", "channelIsReady", "isConnected",
    "pipeName", "productID", "dllVersion", "enableExternalException", "externalExceptionIsEnable",
    "openLogStream", "closeLogStream",
}


def parse(path, flags):
    unit = cindex.Index.create().parse(path, args=["-x", "c++", "-std=c++17", *flags])
    errors = [str(d) for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
    if errors:
        sys.exit("\n".join(errors))
    return unit.cursor


def is_public_method(cursor):
    return (
        cursor.kind == CursorKind.CXX_METHOD
        and cursor.access_specifier == AccessSpecifier.PUBLIC
        and cursor.availability != AvailabilityKind.NOT_AVAILABLE
        and cursor.semantic_parent.spelling == "MVX2Interfaces"
    )


def declared(header, flags):
    return {c.get_usr(): c.displayname for c in parse(header, flags).walk_preorder() if is_public_method(c)}


def named(table, flags):
    used = (c.referenced for c in parse(table, flags).walk_preorder() if c.kind == CursorKind.DECL_REF_EXPR)
    return {c.get_usr() for c in used if c is not None and is_public_method(c)}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--header", required=True)
    parser.add_argument("--table", required=True)
    parser.add_argument("flags", nargs="*")
    options = parser.parse_args()

    methods = declared(options.header, options.flags)
    commands = {usr: name for usr, name in methods.items() if name.split("(")[0] not in FRAME}
    if not commands:
        sys.exit(f"no commands in {os.path.basename(options.header)}")
    rows = named(options.table, options.flags)
    missing = sorted(name for usr, name in commands.items() if usr not in rows)
    print("\n".join(f"no row: {name}" for name in missing) or f"{len(commands)} commands have a row")
    sys.exit(1 if missing else 0)


if __name__ == "__main__":
    main()
