"""The command line program and the example hosts, run as a user runs them. The environment says where
they are; see CMakeLists.txt."""
import csv
import gzip
import io
import json
import math
import os
import pty
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

PROGRAM = os.environ["KESTRANE_PROGRAM"]
SOURCE = Path(os.environ["KESTRANE_SOURCE"])
EXAMPLES = SOURCE / "examples"
CELL = str(EXAMPLES / "robot_cell.xml")

# "cart", at x = 0 at time 0 and x = 10 at time 10, carries boxes of size 1. "post" stands at x = 5,
# "wall" at x = 8 with a subgroup; so the cart meets the post in [4, 6], the wall from 7 on.
SMALL_SCENE = """
<group label="cart" colCheck="true">
  <motion><keyState time="0"><pos x="0" y="0" z="0"/></keyState>
          <keyState time="10"><pos x="10" y="0" z="0"/></keyState></motion>
  <box label="crate" width="1" height="1" depth="1"/>
  <group label="lamp" colCheck="false"><sphere radius="0.1"><pos x="0" y="2" z="0"/></sphere></group>
  <group label="7" colCheck="true"><sphere label="knob" radius="0.25"><pos x="0" y="0.5" z="0"/></sphere></group>
</group>
<group label="post" colCheck="true">
  <box label="pole" width="1" height="1" depth="1"><pos x="5" y="0" z="0"/></box>
</group>
<group label="wall" colCheck="true">
  <group label="bricks" colCheck="true">
    <box label="brick, &quot;red&quot;" width="1" height="1" depth="1"><pos x="8" y="0" z="0"/></box>
  </group>
</group>
<group label="shadow"><box width="9" height="9" depth="9"/></group>
"""


def run(*arguments, **options):
    return subprocess.run(
        [PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=300, **options
    )


class SceneCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        shutil.copy(EXAMPLES / "kestrane.dtd", self.folder)
        self.scene = self.write("small.xml", SMALL_SCENE)

    def write(self, name, items, doctype='<!DOCTYPE scene SYSTEM "kestrane.dtd">'):
        path = self.folder / name
        path.write_text(f'<?xml version="1.0" encoding="UTF-8"?>{doctype}<scene>{items}</scene>')
        return str(path)

    def json_of(self, status, *arguments):
        done = run(*arguments, "--json")
        self.assertEqual((done.returncode, done.stderr), (status, ""), done)
        return json.loads(done.stdout)

    def assert_failure(self, done, *words):
        """One line on the standard error stream that holds all words, and status 2."""
        self.assertEqual(done.returncode, 2, done)
        self.assertRegex(done.stderr, r"\Akestrane: [^\n]+\n\Z")
        for word in words:
            self.assertIn(word, done.stderr)


class Queries(SceneCase):
    def test_check_answers_with_status_and_labels(self):
        done = run("check", self.scene, "cart", "post")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue(done.stdout.startswith("free: "), done.stdout)

        done = run("check", self.scene, "cart", "post", "--time", "5")
        self.assertEqual((done.returncode, done.stderr), (1, ""))
        self.assertIn('object 0 "crate" of group 1 "cart" and object 3 "pole"', done.stdout)
        self.assertIn('object 2 "knob"', done.stdout)
        self.assertIn("not checked: 1 object below group 1", done.stdout)

    def test_first_group_comes_first_whatever_subgroup_an_object_is_in(self):
        for groups, labels in (("cart", "post"), ("crate", "pole")), (("post", "cart"), ("pole", "crate")):
            answer = self.json_of(1, "check", self.scene, *groups, "--time", 5)
            self.assertIn(labels, [(p["object1"]["label"], p["object2"]["label"]) for p in answer["pairs"]])
        answer = self.json_of(1, "check", self.scene, "wall", "cart", "--time", 8)
        self.assertEqual({p["object1"]["label"] for p in answer["pairs"]}, {'brick, "red"'})
        answer = self.json_of(1, "depth", self.scene, "wall", "cart", "--time", 8)
        self.assertEqual({p["object1"]["group"]["label"] for p in answer["pairs"]}, {"bricks"})

    def test_distance_is_sorted_and_its_points_lie_that_far_apart(self):
        pairs = self.json_of(0, "distance", self.scene, "cart", "post", "--time", 2)["pairs"]
        self.assertEqual([p["object1"]["label"] for p in pairs], ["crate", "knob"])
        self.assertAlmostEqual(pairs[0]["distance"], 2, places=6)
        for pair in pairs:
            self.assertAlmostEqual(math.dist(pair["point1"], pair["point2"]), pair["distance"], places=5)
        nearest = self.json_of(0, "distance", self.scene, "cart", "post", "--time", 2, "--first")
        self.assertEqual(nearest["pairs"], pairs[:1])
        self.assertEqual(self.json_of(1, "distance", self.scene, "cart", "post", "--time", 5)["collision"], True)

    def test_depth_of_boxes(self):
        self.assertEqual(self.json_of(0, "depth", self.scene, "cart", "post")["pairs"], [])
        pairs = self.json_of(1, "depth", self.scene, "cart", "post", "--time", 4.25, "--first")["pairs"]
        self.assertEqual(len(pairs), 1)
        self.assertAlmostEqual(pairs[0]["depth"], 0.25, places=5)

    def test_point_and_line_with_negative_coordinates(self):
        for x, status in ("-0.25", 1), ("-.25", 1), ("-2", 0), ("-1e3", 0), ("+0.25", 1):
            done = run("point", self.scene, "cart", x, "-.1", "-0.2")
            self.assertEqual((done.returncode, done.stderr), (status, ""), x)
        answer = self.json_of(1, "line", self.scene, "wall", "-1", "0", "0", "20", "0", "0")
        self.assertEqual([o["label"] for o in answer["objects"]], ['brick, "red"'])
        self.assertEqual((answer["from"], answer["to"]), ([-1, 0, 0], [20, 0, 0]))
        self.assertEqual(run("line", self.scene, "wall", 8, 9, -9, 8, 9, 9).returncode, 0)

    def test_id_that_is_also_the_label_of_an_object(self):
        ball = '<sphere {} radius="1"/>'.format
        scene = self.write("one.xml", f'''<group colCheck="true">{ball('label="1"')}</group>
                                        <group colCheck="true">{ball('label="ball"')}</group>''')
        self.assertEqual(self.json_of(1, "check", scene, 1, 2)["group1"]["id"], 1)

    def test_nothing_to_check_is_no_answer(self):
        box = '<box width="1" height="1" depth="1"/>'
        line = '<polyline><line><point x="0" y="0" z="0"/><point x="1" y="0" z="0"/></line></polyline>'
        many = 20 * '<group colCheck="true"><scale x="1000" y="1" z="1"/>' + box + 20 * "</group>"
        scene = self.write("nothing.xml", f'''<group label="b" colCheck="true">{box}</group>
            <group label="empty" colCheck="true"/><group label="lines" colCheck="true">{line}</group>
            <group label="off" colCheck="true"><group>{box}</group></group><group label="vast" colCheck="true">{many}</group>''')
        for group, reason in ("empty", "no object"), ("lines", "polylines"), ("off", "capability"), ("vast", "finite"):
            for command in ("check",), ("distance",), ("depth", "--json"), ("sweep", "--from=0", "--to=1", "--step=1", "--csv"):
                for groups in (group, "b"), ("b", group):
                    with self.subTest((command, groups)):
                        done = run(command[0], scene, *groups, *command[1:])
                        self.assert_failure(done, "nothing to check", group, reason)
                        self.assertEqual(done.stdout, "")
            self.assert_failure(run("point", scene, group, 0, 0, 0), "nothing to check", reason)

    def test_groups_by_id_and_a_label_that_is_a_number(self):
        self.assertEqual(self.json_of(1, "check", self.scene, 1, 4, "--time", 5)["group2"]["label"], "post")
        # Group 7 is "shadow", which cannot be checked: the label counts.
        self.assertEqual(self.json_of(1, "point", self.scene, "7", 0, 0.7, 0)["group"]["id"], 3)


class Info(SceneCase):
    def test_tree_with_counts_sizes_and_times(self):
        done = run("info", self.scene)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        head, *lines = done.stdout.splitlines()
        self.assertIn("7 groups, 6 objects (6 primitives), key states from 0 to 10", head)
        self.assertIn('group 1 "cart": checked, 1 object (1 primitive), with all below 3 objects', lines[0])
        self.assertIn('  object 0 "crate": box, width 1, height 1, depth 1', lines)
        self.assertIn('    object 1: sphere, radius 0.1', lines)

        answer = self.json_of(0, "info", self.scene)
        self.assertEqual((answer["groupCount"], answer["objectCount"]), (7, 6))
        self.assertEqual(answer["keyStateTimes"], {"first": 0, "last": 10})
        groups = {g["label"]: g for g in answer["groups"]}
        self.assertEqual(groups["bricks"]["parent"], groups["wall"]["id"])
        self.assertFalse(groups["shadow"]["collisionCapable"])
        self.assertEqual(groups["cart"]["objectsWithAllBelow"], 3)

    def test_all_nine_shapes(self):
        point = '<point x="{}" y="{}" z="{}"/>'.format
        three = point(0, 0, 0) + point(1, 0, 0) + point(0, 1, 0)
        scene = self.write("nine.xml", f"""<group>
            <box width="1" height="2" depth="3"/><sphere radius="4"/><cylinder radius="5" height="6"/>
            <cone radius="7" height="8"/><triangles><triangle>{three}</triangle><triangle>{three}</triangle></triangles>
            <polygon>{three}</polygon><polygonGroup><polygon>{three}</polygon></polygonGroup>
            <polyline><line>{three}</line><line>{three}</line></polyline>
            <tetrahedron>{three}{point(0, 0, 1)}</tetrahedron></group>""")
        objects = self.json_of(0, "info", scene)["groups"][0]["objects"]
        self.assertEqual([(o["type"], o["sizes"]) for o in objects], [
            ("box", {"width": 1, "height": 2, "depth": 3}), ("sphere", {"radius": 4}),
            ("cylinder", {"radius": 5, "height": 6}), ("cone", {"radius": 7, "height": 8}),
            ("triangles", {"triangles": 2}), ("polygon", {"vertices": 3}),
            ("polygonGroup", {"polygons": 1, "vertices": 3}),
            ("polyline", {"lines": 2, "vertices": 6}), ("tetrahedron", {})])

    def test_tree_deeper_than_the_call_stack_would_bear(self):
        # Each file nests as deep as a parser takes it, and includes nest too.
        for i in range(60):
            inner = f'<include fileName="deep{i + 1}.xml"/>' if i < 59 else '<sphere radius="1"/>'
            self.write(f"deep{i}.xml", "<group>" * 100 + inner + "</group>" * 100)
        answer = self.json_of(0, "info", self.folder / "deep0.xml")
        self.assertEqual((answer["groupCount"], answer["groups"][-1]["depth"]), (6000, 5999))


class Sweep(SceneCase):
    def sweep(self, *arguments):
        return self.json_of(1, "sweep", self.scene, "cart", *arguments)

    def test_stretches_with_refined_ends(self):
        answer = self.sweep("post", "--from", 0, "--to", 10, "--step", 0.3, "--refine")
        (stretch,) = answer["stretches"]
        self.assertTrue(4 <= stretch["begin"] <= 4.001, stretch)
        self.assertTrue(3.999 <= stretch["freeBefore"] < 4, stretch)
        self.assertTrue(5.999 <= stretch["end"] <= 6, stretch)
        self.assertTrue(6 < stretch["freeAfter"] <= 6.001, stretch)
        self.assertEqual([p["object1"]["label"] for p in stretch["firstContacts"]], ["crate"])
        spans = {p["object1"]["label"]: (p["first"], p["last"]) for p in stretch["pairs"]}
        self.assertEqual(spans["knob"], (4.5, 5.7))

        coarse = self.sweep("post", "--from", 0, "--to", 10, "--step", 0.3)["stretches"][0]
        self.assertEqual((coarse["freeBefore"], coarse["begin"], coarse["end"], coarse["freeAfter"]),
                         (3.9, 4.2, 6, 6.3))
        fine = self.sweep("post", "--from", 0, "--to", 10, "--step", 0.3, "--refine=1e-6")["stretches"][0]
        self.assertAlmostEqual(fine["begin"], 4, delta=2e-6)

    def test_contact_at_both_ends_is_open(self):
        answer = self.sweep("wall", "--from", 8, "--to", 8.5, "--step", 0.2, "--refine")
        (stretch,) = answer["stretches"]
        self.assertEqual((stretch["begin"], stretch["end"]), (8, 8.5))
        self.assertIsNone(stretch["freeBefore"])
        self.assertIsNone(stretch["freeAfter"])
        self.assertEqual((answer["stepCount"], answer["stepsInContact"]), (4, 4))

    def test_times_come_from_the_number_of_the_step_and_end_with_to(self):
        done = run("sweep", self.scene, "cart", "post", "--from", 0, "--to", 1, "--step", 0.1, "--csv")
        rows = list(csv.DictReader(io.StringIO(done.stdout)))
        self.assertEqual([r["time"] for r in rows],
                         ["0", "0.1", "0.2", "0.3", "0.4", "0.5", "0.6", "0.7", "0.8", "0.9", "1"])
        for end, step, count in (1, 0.3, 5), (1, 5, 2), (0, 1, 1):
            done = run("sweep", self.scene, "cart", "post", "--from", 0, "--to", end, "--step", step, "--csv")
            times = [r["time"] for r in csv.DictReader(io.StringIO(done.stdout))]
            self.assertEqual((len(times), times[-1]), (count, str(end)))

    def test_csv_has_refined_rows_in_order_and_quotes_labels(self):
        done = run("sweep", self.scene, "cart", "wall", "--from", 6, "--to", 8, "--step", 0.5, "--refine", "--csv")
        self.assertEqual(done.returncode, 1)
        rows = list(csv.DictReader(io.StringIO(done.stdout)))
        times = [float(r["time"]) for r in rows]
        self.assertEqual(times, sorted(times))
        (begin,) = [r for r in rows if r["event"] == "begin"]
        self.assertEqual((begin["collision"], begin["label1"], begin["label2"]), ("1", "crate", 'brick, "red"'))
        self.assertEqual([r["collision"] for r in rows[:2]], ["0", "0"])

    def test_distances_follow_the_motion(self):
        arguments = ("post", "--from", 0, "--to", 5, "--step", 1, "--distance")
        answer = self.sweep(*arguments)
        distances = [s["distance"] for s in answer["steps"]]
        for got, expected in zip(distances, [4, 3, 2, 1, 0, 0], strict=True):
            self.assertAlmostEqual(got, expected, places=5)
        self.assertEqual(answer["nearest"]["time"], 4)
        done = run("sweep", self.scene, "cart", *arguments, "--csv")
        self.assertEqual([float(r["distance"]) for r in csv.DictReader(io.StringIO(done.stdout))], distances)
        text = run("sweep", self.scene, "cart", *arguments).stdout
        self.assertIn('1  3  object 0 "crate" of group 1 "cart" and object 3 "pole"', text)

    def test_pair_that_parts_and_meets_again_is_listed_again(self):
        keys = "".join(f'<keyState time="{t}"><pos x="{x}" y="0" z="0"/></keyState>' for t, x in ((0, 0), (2, 5), (4, 0), (6, 5)))
        scene = self.write("gap.xml", f'''<group label="a" colCheck="true"><motion>{keys}</motion>
            <box label="mover" width="1" height="1" depth="1"/><group><sphere radius="1"/></group></group>
            <group label="b" colCheck="true"><box label="left" width="1" height="1" depth="1"/>
            <box label="all" width="20" height="1" depth="1"><pos x="0" y="-0.5" z="0"/></box></group>''')
        arguments = ("sweep", scene, "a", "b", "--from", 0, "--to", 6, "--step", 0.25)
        (stretch,) = self.json_of(1, *arguments)["stretches"]
        self.assertEqual([(p["first"], p["last"], p["object2"]["label"]) for p in stretch["pairs"]],
                         [(0, 0.25, "left"), (0, 6, "all"), (3.75, 4.25, "left")])
        text = run(*arguments)
        self.assertEqual((text.stdout.count('"left"'), text.stderr), (3, ""))
        self.assertIn("not checked: 1 object", text.stdout)
        table = run(*arguments, "--csv")
        self.assertRegex(table.stderr, r"\Anot checked: 1 object below group 1 \"a\" [^\n]+\n\Z")
        self.assertTrue(table.stdout.startswith("time,"), table.stdout)

    def test_free_sweep(self):
        done = run("sweep", self.scene, "cart", "wall", "--from", 0, "--to", 5, "--step", 1)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("free at all steps", done.stdout)

    def test_progress_is_for_terminals(self):
        control, terminal = pty.openpty()
        arguments = [PROGRAM, "sweep", self.scene, "cart", "post", "--from", "0", "--to", "10", "--step", "1e-4"]
        with os.fdopen(control, "rb", buffering=0) as screen:
            program = subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=terminal)
            os.close(terminal)
            out, _ = program.communicate(timeout=300)
            shown = screen.read(1 << 16).decode()
        self.assertRegex(shown, r"\d+ %, time \d")
        self.assertEqual(program.returncode, 1)
        self.assertNotIn("%", out.decode())


class CommandLine(SceneCase):
    def test_version(self):
        done = run("--version")
        self.assertEqual((done.returncode, done.stdout), (0, f"kestrane {os.environ['KESTRANE_VERSION']}\n"))

    def test_mistakes_on_the_command_line(self):
        check = ("check", self.scene, "cart", "post")
        for arguments, word in (
            ((), "a command is required"), (("check", self.scene, "-m", "1"), '"-m"'),
            (("sweep", self.scene, "cart", "post", "--from=0", "--to=1", "--step=1", "--refine", 0.01), "--refine=0.01"), (("fly",), "fly"), (("", "fly"), ""), (("check",), "FILE"), (("check", self.scene, "cart"), "GROUP2"),
            ((*check, "more"), "more"), ((*check, "--fast"), "--fast"), ((*check, "--time"), "--time"),
            (("sweep", self.scene, "cart", "post", "--from", 0, "--to", 1), "--step"),
            (("sweep", self.scene, "cart", "post", "--from=0", "--to=1", "--step=1", "--csv", "--json"), "--csv"),
        ):
            with self.subTest(arguments):
                done = run(*arguments)
                self.assert_failure(done, word, "--help")

    def test_numbers_that_are_none(self):
        for text in "nan", "inf", "-inf", "1,5", "0x10", "", "1e39", "abc", "1 ", "+-1", "--", "5m":
            for arguments in (
                ("check", self.scene, "cart", "post", "--time=" + text),
                ("point", self.scene, "cart", "0", "0", "--", text),
                ("sweep", self.scene, "cart", "post", "--from=0", "--to=" + text, "--step=1"),
                ("sweep", self.scene, "cart", "post", "--from=0", "--to=1", "--step=1", "--refine=" + text),
            ):
                if arguments[-1] == "--refine=":
                    continue  # the same as --refine
                with self.subTest(arguments):
                    self.assert_failure(run(*arguments))
        self.assert_failure(run("check", self.scene, "cart", "post", "--time", "-1"), "--time", "below 0")

    def test_sweeps_that_make_no_sense(self):
        for start, end, step, word in (
            (0, 1, 0, "--step"), (0, 1, -1, "--step"), (2, 1, 1, "--to"), (-1, 1, 1, "--from"),
            (0, 1, 1e-9, "10000000"), (0, 1e30, 1, "10000000"), (1e6, 1000001, 0.01, "--step"),
        ):
            with self.subTest((start, end, step)):
                self.assert_failure(run("sweep", self.scene, "cart", "post", "--from", start, "--to", end, "--step", step), word)

    def test_groups_that_cannot_be_checked(self):
        for first, second, *words in (
            ("cart", "nobody", "nobody", "info"), ("cart", "99", "99"), ("cart", "", "no group"),
            ("crate", "post", "crate", "object"), ("0", "post", "root group"), ("Root group", "post", "root group"),
            ("cart", "shadow", "shadow", 'colCheck="true"'), ("cart", "cart", "share"), ("wall", "bricks", "wall", "share"),
        ):
            for command in ("check",), ("distance",), ("depth",), ("sweep", "--from=0", "--to=1", "--step=1", "--json"):
                with self.subTest((command, first, second)):
                    done = run(command[0], self.scene, first, second, *command[1:])
                    self.assert_failure(done, *words)
                    self.assertEqual(done.stdout, "")
        self.assert_failure(run("point", self.scene, "shadow", 0, 0, 0), "shadow", "colCheck")

    def test_group_named_as_a_command_or_an_option(self):
        ball = '<sphere radius="1"><pos x="{}" y="0" z="0"/></sphere></group>'.format
        scene = self.write("names.xml", f'<group label="info" colCheck="true">{ball(0)}<group label="--json" colCheck="true">{ball(9)}')
        self.assertEqual(run("check", scene, "--", "info", "--json").returncode, 0)
        self.assertEqual(run("check", scene, "info", "2").returncode, 0)


class BadInput(SceneCase):
    def test_files_that_are_no_scenes(self):
        text = self.folder / "scene.txt"
        text.write_text(Path(self.scene).read_text())
        folder = self.folder / "folder.xml"
        folder.mkdir()
        for path, *words in (
            (self.folder / "gone.xml", "gone.xml", "not exist"), (text, "scene.txt", ".xml"), (folder, "folder.xml"),
            ("", "not a scene file"), (self.write("open.xml", "<group>"), "open.xml", "ine"),
            (self.write("unknown.xml", "<teapot/>"), "teapot"), (self.write("plain.xml", "", ""), "DTD"),
            (self.write("include.xml", '<include fileName="gone.xml"/>'), "not exist"),
            (self.write("ring.xml", '<include fileName="ring.xml"/>'), "ring.xml"),
        ):
            for command in ("info", path), ("check", path, "a", "b"):
                with self.subTest(command):
                    done = run(*command)
                    self.assert_failure(done, *words)
                    self.assertEqual(done.stdout, "")

    def test_elements_that_the_library_refuses(self):
        box = '<box label="a" width="1" height="1" depth="1"/>'
        for name, items, *words in (
            ("root", box, "<group>"), ("label", f"<group>{box}{box}</group>", "label"),
            ("size", '<group><sphere radius="-1"/></group>', "out of range"),
            # The library itself reports these only where the refused one is the last.
            ("later", f"{box}<group>{box}</group>", "1 of 2 objects was refused"),
            ("among", f"<group>{box}{box}{box}<sphere radius='1'/></group>", "2 of 4 objects were refused"),
            ("order", '<group><motion><keyState time="2"/><keyState time="1"/></motion></group>', "1 of 2 key states"),
            ("angle", '<group><or x="7" y="0" z="0"/></group>', "out of range"),
        ):
            with self.subTest(name):
                path = self.write(name + ".xml", items)
                self.assert_failure(run("info", path), path, *words)

    def test_what_would_not_be_read_as_written(self):
        box = '<box label="b" width="1" height="1" depth="1">{}</box>'.format
        mesh = "<triangles><triangle>" + 2 * '<point x="0" y="0" z="0"/>' + '<point x="0" y="0" z="1,5"/></triangle></triangles>'
        for name, items, *words in (
            ("turn", box('<or x="0" y="0" z="-1.5707963"/>'), 'box "b" / or', 'z="-1.5707963"', "angle"),
            ("far", box('<or x="6.2832" y="0" z="0"/>'), 'x="6.2832"'),
            ("mirror", box('<scale x="-2" y="1" z="1"/>'), 'box "b" / scale', 'x="-2"'),
            ("word", '<box width="1" height="1" depth="1"/><box width="abc" height="1" depth="1"/>', "box #2", 'width="abc" is not a number'),
            ("comma", '<pos x="1,5" y="0" z="0"/>', 'group "a" / pos', '"1,5" is not a number'), ("mesh", mesh, "point #3"),
            ("huge", '<sphere radius="1e39"/>', 'radius="1e39"', "finite"), ("nan", box('<pos x="nan" y="0" z="0"/>'), "finite"),
            ("blank", box('<pos x="" y="0" z="0"/>'), 'x="" is not'), ("motion", '<motion><keyState time="1s"/></motion>', 'time="1s"'),
            # Passed over, with a hole behind it.
            ("other", '<include fileName="parts.txt"/>' + 2 * box(""), "parts.txt", ".xml"),
            ("gone", '<include fileName="absent.xml"/>', "absent.xml does not exist"), ("included", '<include fileName="turn.xml"/>', "turn.xml: ", "angle"),
        ):
            with self.subTest(name):
                path = self.write(name + ".xml", f'<group label="a" colCheck="true">{items}</group>')
                self.assert_failure(run("check", path, "a", "a"), ".xml: ", *words)
        path = self.folder / "top.xml"
        path.write_text('<!DOCTYPE group SYSTEM "kestrane.dtd"><group label="a"/>')
        self.assert_failure(run("info", path), "top.xml", "<group>", "<scene>")

        fine = '<or x=" 6.2831853 " y="0x1p0" z="-0"/><or x="-1" y="0" z="0"/>'
        path = self.write("fine.xml", f'<group>{box(fine)}<motion><keyState time="0"><scale x="-1" y="1" z="1"/></keyState></motion></group>')
        self.assertEqual(run("info", path).returncode, 0)

    def test_upper_case_suffix_and_labels_with_control_characters(self):
        path = self.write("LINES.XML", '<group label="a&#10;b&#9;c" colCheck="true"/>')
        done = run("info", path)
        self.assertEqual((done.returncode, len(done.stdout.splitlines())), (0, 2), done)


class Output(SceneCase):
    def test_reader_that_goes_away_is_no_error(self):
        program = subprocess.Popen([PROGRAM, "sweep", self.scene, "7", "post", "--from=0", "--to=10", "--step=1e-4", "--csv"],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        program.stdout.readline()
        program.stdout.close()
        message = program.stderr.read()
        program.stderr.close()
        self.assertEqual((program.wait(timeout=300), message), (-signal.SIGPIPE, b""))

    @unittest.skipUnless(os.path.exists("/dev/full"), "needs /dev/full")
    def test_full_disk_is_an_error(self):
        for arguments in (("info", CELL), ("--help",), ("--version",), ("check", self.scene, "cart", "post"),
                          ("sweep", self.scene, "7", "post", "--from=0", "--to=9", "--step=0.001", "--csv")):
            with self.subTest(arguments), open("/dev/full", "w") as full:
                done = subprocess.run([PROGRAM, *arguments], stdout=full, stderr=subprocess.PIPE, text=True, timeout=300)
                self.assertEqual(done.returncode, 2)
                self.assertRegex(done.stderr, r"\Akestrane: cannot write the output: [^\n]+\n\Z")


class RobotCell(SceneCase):
    def test_all_examples_load_and_use_all_shapes(self):
        for path in sorted(EXAMPLES.glob("*.xml")):
            done = run("info", path)
            self.assertEqual((done.returncode, done.stderr), (0, ""), path)
        types = {o["type"] for g in self.json_of(0, "info", CELL)["groups"] for o in g["objects"]}
        self.assertEqual(len(types), 9, types)

    def test_dtd_beside_the_examples_is_the_one_of_the_library(self):
        self.assertEqual((EXAMPLES / "kestrane.dtd").read_bytes(), (SOURCE / "src/scenefiles/kestrane.dtd").read_bytes())

    def arm_angle(self, label, time):
        """The angle of an axis about x, from the key states of the file."""
        arm = ElementTree.parse(EXAMPLES / "robot_arm.xml")
        motion = arm.find(f".//group[@label='{label}']/motion")
        keys = [(float(k.get("time")), float(k.find("or").get("x"))) for k in motion]
        for (t0, a0), (t1, a1) in zip(keys, keys[1:]):
            if t0 <= time <= t1:
                turn = (a1 - a0 + math.pi) % (2 * math.pi) - math.pi
                return a0 + turn * (time - t0) / (t1 - t0)
        self.fail(f"no key state about {time}")

    def wrist_z(self, time):
        upper = self.arm_angle("axis_2", time)
        return 0.12 + 0.75 * math.sin(upper) + 0.7 * math.cos(upper + self.arm_angle("axis_3", time))

    def test_one_stretch_of_contact_at_the_time_that_the_geometry_gives(self):
        sweep = ("sweep", CELL, "robot", "cell", "--from", 0, "--to", 20, "--step", 0.01, "--refine")
        answer = self.json_of(1, *sweep)
        (stretch,) = answer["stretches"]
        # The door's edge runs from 0.5 m left of the arm 0.975 m to the right in 1.2 s from 7.1 s
        # on; the forearm's side is 0.07 m left.
        first = 7.1 + 1.2 * (0.5 - 0.07) / 0.975
        self.assertTrue(first - 1e-5 <= stretch["begin"] <= first + 0.001, (first, stretch["begin"]))
        self.assertEqual([(p["object1"]["label"], p["object2"]["label"]) for p in stretch["firstContacts"]],
                         [("forearm", "door_edge")])
        # The wrist, a sphere of 0.075 m, leaves the window, which is at z = 0.86.
        early, late = 7.7, 8.3
        while late - early > 1e-7:
            middle = (early + late) / 2
            early, late = (middle, late) if self.wrist_z(middle) > 0.86 - 0.075 else (early, middle)
        self.assertTrue(late - 0.001 <= stretch["end"] <= late + 1e-5, (late, stretch["end"]))
        self.assertEqual(run(*sweep).stdout, run(*sweep).stdout)

    def test_held_parts_and_the_track_are_free_of_the_robot(self):
        for group in "cell", "robot":
            self.assertEqual(self.json_of(0, "check", CELL, "parts", group)["collision"], False)
        self.assertEqual(run("sweep", CELL, "robot", "track", "--from", 0, "--to", 20, "--step", 0.1).returncode, 0)


class Convert(SceneCase):
    WORLD = (
        "DEF a Transform {\n  translation 1 2.5 -3\n"
        "  children [ Shape { geometry DEF b Box { } } USE a2 ]\n}\n"
        "Switch { choice [ USE b Group { } ] whichChoice 1 }\n"
        "DEF t TimeSensor { } DEF p PositionInterpolator { key [ 0, 1 ] keyValue [ 0 0 0, 1 1 1 ] }\n"
        "ROUTE t.fraction_changed TO p.set_fraction\nROUTE p.value_changed TO a.set_translation\n"
    )

    def setUp(self):
        super().setUp()
        self.world = self.put("world.wrl", "#VRML V2.0 utf8\n" + self.WORLD)
        self.out = self.folder / "out.wrl"

    def put(self, name, text):
        path = self.folder / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return str(path)

    def assert_refused(self, world, out, *words, **options):
        """The failure leaves the folder as it was."""
        before = {p.name: p.read_bytes() for p in self.folder.iterdir() if p.is_file()}
        self.assert_failure(run("convert", world, out, **options), *words)
        self.assertEqual({p.name: p.read_bytes() for p in self.folder.iterdir() if p.is_file()}, before)

    def test_vrml_comes_out_packed_and_converts_to_itself(self):
        done = run("convert", self.world, self.out)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, f"converted: {self.world} to {self.out}, 8 nodes, 2 routes\n")
        packed = self.out.read_bytes()
        text = gzip.decompress(packed).decode()
        self.assertTrue(text.startswith("#VRML V2.0 utf8\nDEF a Transform {\n\ttranslation 1 2.5 -3\n"), text)
        self.assertIn("\tchoice [\n\t\tUSE b\n\t\tGroup {\n", text)
        self.assertTrue(text.endswith("\nROUTE p.value TO a.translation\n"), text)
        answer = self.json_of(0, "convert", self.out, self.out)
        self.assertEqual(answer, {"command": "convert", "file": str(self.out), "output": str(self.out), "nodes": 8,
                                  "routes": 2, "bytes": len(packed)})
        self.assertEqual(self.out.read_bytes(), packed)

    def test_xml_has_an_element_for_each_node(self):
        out = self.folder / "out.XML"
        self.json_of(0, "convert", self.world, out)
        declaration, elements = out.read_text().split("\n", 1)
        self.assertEqual(declaration, '<?xml version="1.0" encoding="UTF-8"?>')
        tags = [element.tag for element in ElementTree.fromstring(f"<all>{elements}</all>").iter()]
        self.assertEqual(tags, ["all", "Transform", "Shape", "Box", "Switch", "Box", "Group", "TimeSensor",
                                "PositionInterpolator", "ROUTE", "ROUTE"])

    def test_unknown_characters_and_missing_inlines_are_passed_over(self):
        world = self.put("odd.wrl", "#VRML V2.0 utf8\n?!Group {+ }\nInline { url \"missing.wrl\" }\n")
        self.assertEqual(self.json_of(0, "convert", world, self.out)["nodes"], 2)
        self.assertIn('"missing.wrl"', gzip.decompress(self.out.read_bytes()).decode())

    def test_worlds_that_cannot_be_read(self):
        world = self.put("bad.wrl", "#VRML V2.0 utf8\nGroup { }\n  Shape { colour 1 }\nGroup { }\n")
        self.assert_refused(world, self.out, "bad.wrl, line 3: syntax error", '"colour"', '"  Shape { colour 1 }"')
        self.assert_refused(self.folder / "none.wrl", self.out, "cannot read", "none.wrl", "No such file")
        for name, content in ("x.wrl", "Group { }"), ("y.wrl", ""), ("z.wrl", "<?xml version='1.0'?><a/>"):
            self.assert_refused(self.put(name, content), self.out, name, "is no VRML97 file")
        self.assert_refused(self.folder, self.out, "is no VRML97 file")
        cut_off = gzip.compress(b"#VRML V2.0 utf8\n" + b"Group { }\n" * 500)[:-12]
        self.assert_refused(self.put("cut.wrl", cut_off), self.out, "cut.wrl", "cannot be unpacked")

    def test_files_that_cannot_be_written(self):
        self.out.write_text("what was there before")
        folder = self.folder / "folder.wrl"
        folder.mkdir()
        self.assert_refused(self.world, self.folder / "out.txt", "ends in .wrl or in .xml")
        self.assert_refused(self.world, self.folder / "none" / "out.wrl", "cannot write", "No such file")
        self.assert_refused(self.world, folder, "cannot write", "no regular file")
        self.assert_refused(self.put("bad.wrl", "#VRML\n}"), self.out, "syntax error")
        deep = self.put("deep.wrl", "#VRML V2.0 utf8\n" + "Group { children [\n" * 8000 + "] }\n" * 8000)
        self.assert_refused(deep, self.out, "cannot write", "100,000,000 characters")

    def test_full_disk(self):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (2048, 2048))

        numbers = ", ".join(str(i * 7919 % 10007) for i in range(20000))
        world = self.put("big.wrl", f"#VRML V2.0 utf8\nWorldInfo {{ info \"{numbers}\" }}\n")
        for name in "out.wrl", "out.xml":
            self.assert_refused(world, self.folder / name, "cannot write", "File too large", preexec_fn=limit)

    def test_a_link_stays_and_permissions_are_kept(self):
        target = self.folder / "target.wrl"
        target.write_text("old")
        target.chmod(0o640)
        self.out.symlink_to(target.name)
        self.assertEqual(run("convert", self.world, self.out).returncode, 0)
        self.assertTrue(self.out.is_symlink())
        self.assertEqual(target.stat().st_mode & 0o777, 0o640)
        self.assertEqual(target.read_bytes()[:2], b"\x1f\x8b")
        done = run("convert", self.world, self.folder / "new.wrl", preexec_fn=lambda: os.umask(0o027))
        self.assertEqual(done.returncode, 0)
        self.assertEqual((self.folder / "new.wrl").stat().st_mode & 0o777, 0o640)


class Worlds(SceneCase):
    """Scenes from VRML97 worlds."""

    def put(self, text):
        path = self.folder / "world.wrl"
        path.write_text("#VRML V2.0 utf8\n" + text)
        return str(path)

    PARTS = """
DEF base Transform { children Shape { geometry Box { size 2 2 2 } } }
DEF tool Transform { translation 0 1.5 0 children Shape { geometry Cylinder { radius .5 height 2 } } }
"""

    def test_queries_answer_about_the_shapes_of_a_world(self):
        world = self.put(self.PARTS + "DEF far Transform { translation 5 0 0 children Shape { geometry Sphere { } } }")
        self.assertEqual(run("check", world, "base", "tool").returncode, 1)
        self.assertEqual(run("check", world, "base", "far").returncode, 0)
        done = run("distance", world, "base", "far")
        self.assertIn("3", done.stdout)
        self.assertEqual(done.stderr, "")
        included = self.write("frame.xml", f'<group label="all" colCheck="true"><include fileName="{world}"/></group>')
        self.assertEqual(run("check", included, "base", "tool").returncode, 1)

    def test_what_no_scene_can_hold_is_not_passed_over_in_silence(self):
        world = self.put(self.PARTS + "DEF hill Transform { children Shape { geometry ElevationGrid { } } }\n"
                         "Anchor { children Transform { children Shape { geometry Box { } } } }")
        done = run("info", world)
        self.assertEqual(done.returncode, 0)
        self.assertIn("2 shapes are passed over", done.stderr)

    def test_places_that_are_not_those_of_the_world_are_told(self):
        for fields in "center 1 0 0 rotation 0 0 1 1", "scale -1 1 1", "scale 1 2 1 scaleOrientation 0 0 1 1":
            done = run("info", self.put("Transform { %s children Shape { geometry Box { } } }" % fields))
            self.assertEqual(done.returncode, 0)
            self.assertIn("1 Transform is placed without center", done.stderr)
        done = run("info", self.put("Transform { center 1 0 0 translation 1 2 3 children Shape { geometry Box { } } }"))
        self.assertEqual(done.stderr, "")

    def test_worlds_that_make_no_whole_scene_are_refused(self):
        for text, *words in (
            ("Shape { geometry Box { } }", "outside of all Transforms"),
            ("", "no node"),
            ("Group { }\n  Shape { colour 1 }", "syntax error (line 3): colour"),
            ("Transform { children [ Shape { geometry Extrusion { } } Shape { geometry Box { } } ] }", "1 of 2 shapes"),
            ("Transform { children Shape { geometry IndexedFaceSet { convex FALSE } } }", "Triangulate"),
        ):
            with self.subTest(text=text):
                self.assert_failure(run("info", self.put(text)), "world.wrl", *words)
        self.assert_failure(run("info", self.folder / "none.wrl"), "none.wrl", "no such file")
        os.mkfifo(self.folder / "pipe.wrl")
        self.assert_failure(run("info", self.folder / "pipe.wrl"), "pipe.wrl", "not a VRML97 file")
        self.assert_failure(run("convert", self.folder / "pipe.wrl", self.folder / "o.wrl"), "no regular file")


class Pictures(SceneCase):
    """Captures need no screen; what they show is told by the colours at known places."""

    SCENE = """
<group label="left" colCheck="true">
  <motion><keyState time="0"><pos x="-2" y="0" z="0"/></keyState>
          <keyState time="2"><pos x="2" y="0" z="0"/></keyState></motion>
  <box width="1" height="1" depth="1"><color red="0" green="0" blue="1"/></box></group>
<group label="right" colCheck="true">
  <box width="1" height="1" depth="1"><pos x="2" y="0" z="0"/><color red="0" green="1" blue="0"/></box></group>
"""
    CAMERA = ("--eye", 0, 0, 10, "--point", 0, 0, 0)

    def setUp(self):
        super().setUp()
        self.scene = self.write("two.xml", self.SCENE)
        self.picture = self.folder / "picture.bmp"

    @staticmethod
    def pixel(file, x, y):
        """Red, green and blue at a place from the top left."""
        data = Path(file).read_bytes()
        start, width, height = (int.from_bytes(data[i:i + 4], "little") for i in (10, 18, 22))
        at = start + 4 * ((height - 1 - y) * width + x)
        return data[at + 2], data[at + 1], data[at]

    def assert_hue(self, colour, channel):
        others = [c for i, c in enumerate(colour) if i != channel]
        self.assertGreater(colour[channel], max(others) + 50, colour)

    def test_a_capture_shows_the_scene_at_its_time(self):
        done = run("capture", self.scene, self.picture, "--size", "400x300", *self.CAMERA)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done)
        self.assertIn("400 x 300", done.stdout)
        # 45 degrees over the height of 300 pixels: 36 pixels a unit at the middle of the scene.
        self.assert_hue(self.pixel(self.picture, 200 - 75, 150), 2)
        self.assert_hue(self.pixel(self.picture, 200 + 75, 150), 1)
        self.assertEqual(self.pixel(self.picture, 200, 150), (204, 217, 230))
        run("capture", self.scene, self.picture, "--size", "400x300", *self.CAMERA, "--time", 1)
        self.assert_hue(self.pixel(self.picture, 210, 150), 2)
        # The other views show the scene too, though nobody has said so.
        answer = self.json_of(0, "capture", self.scene, self.picture, "--view", 2, "--size", "40x30", *self.CAMERA)
        self.assertEqual((answer["view"], answer["width"], answer["height"]), (2, 40, 30))
        self.assert_hue(self.pixel(self.picture, 20 + 7, 15), 1)

    def test_cameras_of_the_file_and_of_the_command_line(self):
        motion = """<viewMotion cyclic="false"><viewKeyState time="0"><eye x="50" y="0" z="0"/><view x="49" y="0" z="0"/></viewKeyState>
          <viewKeyState time="1"><eye x="2" y="0" z="4"/><view x="2" y="0" z="0"/></viewKeyState></viewMotion>"""
        for view in (0, 2):
            scene = self.write("flight.xml", self.SCENE + f'<viewParams viewID="{view}">{motion}</viewParams>')
            options = ("--view", view, "--size", "400x300", "--time", 1)
            self.assertEqual(run("capture", scene, self.picture, *options).returncode, 0)
            self.assert_hue(self.pixel(self.picture, 200, 150), 1)
            self.assertEqual(run("capture", scene, self.picture, *options, *self.CAMERA).returncode, 0)
            self.assert_hue(self.pixel(self.picture, 200, 150), 2)

    def test_frames_of_a_sweep_show_contact_in_red(self):
        frames = self.folder / "new" / "frames"
        done = run("sweep", self.scene, "left", "right", "--from", 0, "--to", 2, "--step", 1,
                   "--frames", frames, "--size", "400x300", *self.CAMERA)
        self.assertEqual((done.returncode, done.stderr), (1, ""), done)
        self.assertEqual(sorted(f.name for f in frames.iterdir()), [f"step_000000{i}.bmp" for i in range(3)])
        self.assert_hue(self.pixel(frames / "step_0000001.bmp", 275, 150), 1)
        self.assert_hue(self.pixel(frames / "step_0000002.bmp", 275, 150), 0)

    def test_what_makes_no_picture_is_refused(self):
        for arguments, *words in (
            (("--size", "0x5"), "--size", "0x5"),
            (("--size", "9000x10"), "8192"),
            (("--view", "4"), "--view"),
            (("--eye", 1, 2, 3), "--point"),
            (("--eye", 1, 2, 3, "--point", 1, 2, 3), "--point"),
            (("--time", "-1"), "--time"),
        ):
            with self.subTest(arguments=arguments):
                self.assert_failure(run("capture", self.scene, self.picture, *arguments), *words)
        self.assert_failure(run("capture", self.scene, self.folder / "none" / "p.bmp"), "p.bmp")
        before = Path(self.scene).read_bytes()
        self.assert_failure(run("capture", self.scene, self.scene), ".bmp")
        self.assertEqual(Path(self.scene).read_bytes(), before)
        # Room for half a picture.
        full = subprocess.run(["bash", "-c", 'ulimit -f 100; exec "$0" capture "$1" "$2"', PROGRAM, self.scene,
                               self.picture], capture_output=True, text=True, timeout=60)
        self.assert_failure(full, "picture.bmp")
        self.assertEqual([f.name for f in self.folder.iterdir() if "bmp" in f.name], [])
        self.assert_failure(run("sweep", self.scene, "left", "right", "--from", 0, "--to", 1, "--step", 1,
                                "--size", "40x30"), "--frames")
        self.assert_failure(run("sweep", self.scene, "left", "right", "--from", 0, "--to", 1, "--step", 1,
                                "--frames", ""), "--frames")
        self.assert_failure(run("sweep", self.scene, "left", "right", "--from", 0, "--to", 1, "--step", 1,
                                "--frames", self.scene), "--frames")
        self.assertFalse(self.picture.exists())

    def test_a_view_stays_until_it_is_interrupted(self):
        on_screen = SOURCE / "tests/visualiser/on_screen.sh"
        script = '"$0" view "$1" --views 4 --play & sleep 3; kill -TERM $!; wait $!'
        done = subprocess.run([on_screen, "bash", "-c", script, PROGRAM, self.scene], capture_output=True,
                              text=True, timeout=60)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done)


class Help(SceneCase):
    def test_help_has_examples_that_run_and_the_man_page_knows_every_option(self):
        page = re.sub(r"\\f.|\\", "", (SOURCE / "docs/man/kestrane.1").read_text())
        commands = ["info", "check", "distance", "depth", "point", "line", "sweep", "convert", "capture", "view"]
        no_screen = {k: v for k, v in os.environ.items() if "DISPLAY" not in k}
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        examples_copy = shutil.copytree(EXAMPLES, Path(folder.name) / "examples")
        text = run("--help").stdout
        for command in commands:
            self.assertRegex(text, rf"(?m)^  {command} ")
            self.assertRegex(page, rf"(?m)^\.B {command}$")
            help_text = run(command, "--help").stdout
            examples = re.findall(r"(?m)^  kestrane (.*)$", help_text)
            self.assertTrue(examples, command)
            for example in examples:
                done = run(*example.split(), cwd=examples_copy, env=no_screen)
                if command == "view":
                    self.assert_failure(done, "no screen")
                else:
                    self.assertIn(done.returncode, (0, 1), done)
            for option in re.findall(r"--[a-z]+", help_text):
                self.assertIn(option, page)
        for option in set(re.findall(r"--[a-z]+", page)) - {"--help", "--version"}:
            self.assertTrue(any(option in run(c, "--help").stdout for c in commands), option)


class Hosts(unittest.TestCase):
    @unittest.skipIf(os.environ.get("KESTRANE_SANITIZE"), "Python cannot load a library with sanitizers")
    def test_hosts_in_three_languages_say_the_same(self):
        environment = {**os.environ, "PYTHONDONTWRITEBYTECODE": "1"}
        texts = [
            subprocess.run(command, capture_output=True, text=True, check=True, env=environment, timeout=60).stdout
            for command in (
                [os.environ["KESTRANE_HOST_C"]],
                [os.environ["KESTRANE_HOST_CPP"]],
                [sys.executable, str(EXAMPLES / "first_scene.py"), os.environ["KESTRANE_LIBRARY"]],
            )
        ]
        self.assertEqual(texts[0], "height 0.50: free, distance 0.350\n"
                                   "height 0.30: free, distance 0.150\n"
                                   "height 0.10: object 0 collides with object 1, depth 0.050\n")
        self.assertEqual(texts[1:], texts[:1] * 2)


if __name__ == "__main__":
    unittest.main()
