#!/usr/bin/env python3
"""Checks that every #include in src/ points sideways or downwards in the order of the layers.

The table below is the law; docs/architecture.md says why. Exits with 1 and names each line that
breaks it.
"""

import pathlib
import re
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
SOURCE = TOP / "src"
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')

# The one header of the frame that these layers may take from above.
APPLICATION = "frame/CheckerApp.h"
PLATFORM = {"platform/solid", "platform/maverik", "platform/settings"}

# Layer: the layers, or single headers, that it may include besides itself.
ALLOWED = {
    "frame": None,  # everything
    "interface": {APPLICATION, "visualiser", "model"},
    "scenefiles": {APPLICATION, "model", "nodes", "scenefiles/xml"},
    "visualiser": {"model", "collision"} | PLATFORM,
    "collision": {"model", "platform/solid", "platform/maverik"},
    "model": set(PLATFORM),
    "nodes": set(),
    "scenefiles/xml": set(),
    "platform/solid": set(),
    "platform/maverik": set(),
    "platform/settings": set(),
}


def layer_of(name):
    """The layer of a path relative to src/, the longest that fits; None for a foreign path."""
    fitting = [layer for layer in ALLOWED if name.startswith(layer + "/")]
    return max(fitting, key=len) if fitting else None


def resolve(target, includer):
    """The path of an included file relative to src/, or None when it is not one of src/."""
    for base in (SOURCE, includer.parent):
        path = (base / target).resolve()
        if path.is_file() and SOURCE in path.parents:
            return path.relative_to(SOURCE).as_posix()
    return None


def faults_of(path):
    name = path.relative_to(SOURCE).as_posix()
    layer = layer_of(name)
    if layer is None:
        yield f"src/{name}: belongs to no layer"
        return
    allowed = ALLOWED[layer]
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match or match[1] == "kestrane.h":
            continue
        target = resolve(match[1], path)
        if target is None:
            yield f"src/{name}:{number}: no such file in this project: {match[1]}"
            continue
        if match[1] != target:
            yield f'src/{name}:{number}: write "{target}", relative to src/'
        if allowed is None or target in allowed:
            continue
        if layer_of(target) != layer and layer_of(target) not in allowed:
            yield f"src/{name}:{number}: {layer} may not include {target}"


def main():
    files = sorted(p for p in SOURCE.rglob("*") if p.suffix in {".h", ".cpp"})
    faults = [fault for path in files for fault in faults_of(path)]
    print("\n".join(faults + [f"{len(files)} files, {len(faults)} faults"]))
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main())
