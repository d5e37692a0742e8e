#!/usr/bin/env python3
"""The first scene: two groups with a box each. One moves towards the other; how near do they come,
and what collides?

Run with the path of the shared library:  python3 first_scene.py build/libkestrane.so
"""
import ctypes
import sys
from ctypes import POINTER, c_bool, c_char_p, c_float, c_int


class CollisionResult(ctypes.Structure):
    """KstCollisionResult: one finding of a query."""

    _fields_ = [
        ("id1", c_int),
        ("id2", c_int),
        ("point1", c_float * 3),
        ("point2", c_float * 3),
        ("value", c_float),
    ]


# Without these, ctypes would pass a Python float as a double, which no function takes.
FUNCTIONS = {
    "KST_Initialisation": [c_bool, c_bool, c_bool],
    "KST_End": [],
    "KST_CreateGroup": [POINTER(c_int), c_int, c_bool, c_char_p, c_bool],
    "KST_CreateBox": [c_int] + [c_float] * 6 + [POINTER(c_int), c_char_p],
    "KST_SetGroupPosition": [c_int, c_float, c_float, c_float],
    "KST_CheckGroupCollision": [c_int, c_int, c_bool, POINTER(c_int)],
    "KST_GetClosestPairs": [c_int, c_int, POINTER(c_int)],
    "KST_GetPenetrationDepths": [c_int, c_int, POINTER(c_int)],
    "KST_GetResults": [POINTER(CollisionResult)],
}


class Kestrane:
    """The library; every call raises where the function gives a code other than 0."""

    def __init__(self, path):
        library = ctypes.CDLL(path)
        for name, argtypes in FUNCTIONS.items():
            function = getattr(library, name)
            function.argtypes = argtypes
            function.restype = c_int
            setattr(self, name.removeprefix("KST_"), self._checked(name, function))

    @staticmethod
    def _checked(name, function):
        def call(*args):
            code = function(*args)
            if code != 0:
                raise RuntimeError(f"{name} gave {code}")

        return call

    def new_group(self, label):
        group = c_int()
        self.CreateGroup(group, 0, True, label, False)
        return group.value

    def ask(self, query, *args):
        """The findings of a query about groups."""
        count = c_int()
        query(*args, count)
        results = (CollisionResult * count.value)()
        if count.value > 0:
            self.GetResults(results)
        return results


def main(path):
    kst = Kestrane(path)
    kst.Initialisation(False, False, False)
    gripper = kst.new_group(b"gripper")
    table = kst.new_group(b"table")
    kst.CreateBox(gripper, 0.2, 0.2, 0.2, 0, 0, 0, None, b"tool")
    kst.CreateBox(table, 2, 0.1, 1, 0, 0, 0, None, b"plate")

    for step in range(3):
        height = 0.5 - 0.2 * step
        kst.SetGroupPosition(gripper, 0, height, 0)
        if not kst.ask(kst.CheckGroupCollision, gripper, table, True):
            nearest = kst.ask(kst.GetClosestPairs, gripper, table)[0]
            print(f"height {height:.2f}: free, distance {nearest.value:.3f}")
            continue
        for hit in kst.ask(kst.GetPenetrationDepths, gripper, table):
            print(
                f"height {height:.2f}: object {hit.id1} collides with object {hit.id2}, "
                f"depth {hit.value:.3f}"
            )
    kst.End()


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: first_scene.py LIBRARY")
    try:
        main(sys.argv[1])
    except (OSError, RuntimeError) as error:
        print(f"first_scene: {error}", file=sys.stderr)
        sys.exit(2)
