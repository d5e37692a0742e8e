#!/usr/bin/env python3
"""Checks that a shared library exports the functions of include/kestrane.h and nothing else.

    scripts/check_symbols.py build/libkestrane.so
"""

import pathlib
import re
import subprocess
import sys

HEADER = pathlib.Path(__file__).resolve().parent.parent / "include" / "kestrane.h"
FUNCTION_COUNT = 71


def declared():
    text = HEADER.read_text(encoding="utf-8")
    text = re.sub(r"/\*.*?\*/|//[^\n]*", " ", text, flags=re.S)
    return set(re.findall(r"\bKST_API\s+int\s+(KST_\w+)\s*\(", text))


def exported(library):
    lines = subprocess.run(["nm", "-D", "--defined-only", library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return {line.split()[-1].split("@")[0] for line in lines}


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    wanted = declared()
    found = exported(sys.argv[1])
    faults = [f"declared but not exported: {name}" for name in sorted(wanted - found)]
    faults += [f"exported but not declared: {name}" for name in sorted(found - wanted)]
    if len(wanted) != FUNCTION_COUNT:
        faults.append(f"the header declares {len(wanted)} functions, not {FUNCTION_COUNT}")
    print("\n".join(faults + [f"{len(found)} exported names, {len(faults)} faults"]))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
