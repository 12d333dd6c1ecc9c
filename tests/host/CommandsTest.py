# SPDX-License-Identifier: MIT
"""What each subcommand does, on small pictures whose result is known and on the sample card."""
import json
import re
import subprocess
import unittest

from support import *

CARD = SAMPLES / "card-colour.jpg"
CARD_WIDTH, CARD_HEIGHT = 1150, 760
LOGO = {"left": 142, "top": 98, "right": 312, "bottom": 270}  # where the compass rose is drawn
NAME = {"left": 135, "top": 312, "right": 737, "bottom": 372}  # "Marta Quillfeather"
MODES = {0: "local", 1: "otsu", 2: "midrange", 3: "peaks", 4: "gradient", 5: "regions", 6: "isodata", 8: "lines", 9: "sharp"}
BITS = [[1, 1, 1, 1, 1, 1, 1, 1, 1], [1, 0, 0, 1, 1, 1, 1, 1, 1], [1, 1, 0, 1, 1, 1, 0, 1, 1], [1, 1, 1, 1, 1, 1, 0, 1, 1]]


def right(rows):
    return [list(row) for row in zip(*rows[::-1])]


def left(rows):
    return [list(row) for row in zip(*rows)][::-1]


def mirrored(rows):
    return [row[::-1] for row in rows]


class PictureCommandsTest(CommandTest):
    def pnm(self, *arguments, stdin):
        return self.succeed(*arguments, "-", "-o", "-", "--format", "pnm", stdin=stdin)

    def test_modes(self):
        listed = [line for line in self.succeed("modes").decode().splitlines() if line[:1].isdigit() or line[:1] == "-"]
        self.assertEqual(listed[0].split()[:2], ["-", "auto"])
        self.assertEqual({int(line.split()[0]): line.split()[1] for line in listed[1:]}, MODES)
        self.assertTrue(all(len(line.split()) > 5 for line in listed), "each says what it suits")
        results = set()
        for number, name in MODES.items():
            with self.subTest(name):
                by_number = self.succeed("binarize", CARD, "-m", number, "-o", "-", "--format", "pbm")
                self.assertEqual(by_number, self.succeed("binarize", CARD, "-m", name, "-o", "-", "--format", "pbm"))
                self.assertTrue(by_number.startswith(b"P4\n%d %d\n" % (CARD_WIDTH, CARD_HEIGHT)))
                results.add(by_number)
        self.assertGreaterEqual(len(results), 8)

    def test_blocks(self):
        for card in (CARD, SAMPLES / "card-gray.png"):
            one = self.succeed("binarize", card, "-m", "regions", "--blocks", "-o", "-", "--format", "pbm")
            self.assertEqual(len(one), len(self.succeed("binarize", card, "-o", "-", "--format", "pbm")))
            whole = self.succeed("binarize", card, "-m", "otsu", "-o", "-", "--format", "pbm")
            self.assertEqual(whole, self.succeed("binarize", card, "-m", "otsu", "--blocks", "-o", "-", "--format", "pbm"))

    def test_right_angles_are_exact(self):
        gray = [[y * 50 + x * 5 for x in range(7)] for y in range(3)]
        colour = [[(v, 255 - v, v // 2) for v in row] for row in gray]
        for make, rows in ((pbm, BITS), (pgm, gray), (ppm, colour)):
            for angle, expected in ((0, rows), (90, right(rows)), (180, right(right(rows))), (270, left(rows)),
                                    (-90, left(rows)), (450, right(rows)), (-720, rows)):
                with self.subTest(make.__name__, angle=angle):
                    self.assertEqual(self.pnm("rotate", "-a", angle, stdin=make(rows)), make(expected))
            self.assertEqual(self.pnm("rotate", "-a", 90, "-c", stdin=make(rows)), make(left(rows)))

    def test_other_angles(self):
        gray = pgm([[200] * 40 for _ in range(20)])
        for angle in (30, -30, 330, 120):
            size = self.pnm("rotate", "-a", angle, stdin=gray).split(b"\n")[1]
            self.assertEqual(size, b"44 37" if abs(angle) != 120 else b"37 44")
        self.assertEqual(self.pnm("rotate", "-a", 20, "-c", stdin=gray), self.pnm("rotate", "-a", -20, stdin=gray))
        self.assertNotEqual(self.pnm("rotate", "-a", 20, stdin=gray), self.pnm("rotate", "-a", -20, stdin=gray))
        self.assertTrue(self.pnm("rotate", "-a", 5, stdin=pbm(BITS)).startswith(b"P5"), "1 bit turns as gray")

    def test_turn(self):
        block = [row[1:7] for row in BITS[1:4]]
        expected = {0: block, 1: right(block), 2: right(right(block)), 3: left(block), 4: block[::-1], 5: left(mirrored(block)),
                    "none": block, "right": right(block), "half": right(right(block)), "left": left(block),
                    "flip": block[::-1], "mirror-left": left(mirrored(block))}
        for code, rows in expected.items():
            with self.subTest(code):
                self.assertEqual(self.pnm("turn", "-b", "1,1,6,3", "--code", code, stdin=pbm(BITS)), pbm(rows))
        self.assertEqual(self.pnm("turn", "-b", "1,1,300,300", stdin=pbm(BITS)), pbm([row[1:] for row in BITS[1:]]))
        self.assertEqual(self.pnm("turn", stdin=pbm(BITS)), pbm(BITS))
        self.fail_with(1, "columns 0 to 8 and rows 0 to 3", "turn", "-", "-b", "50,0,60,3", "-o", "x.png", stdin=pbm(BITS))

    def test_pad(self):
        wide = [BITS[0] * 4] * 40
        margin = [[1] * 46] * 5
        self.assertEqual(self.pnm("pad", stdin=pbm(wide)),
                         pbm(margin + [[1] * 5 + row + [1] * 5 for row in wide] + margin))
        self.assertTrue(self.pnm("pad", stdin=pbm(BITS)).startswith(b"P4\n69 64\n"))

    def test_morph(self):
        dot = [[0 if (x, y) == (20, 15) else 1 for x in range(40)] for y in range(30)]
        square = [[0 if abs(x - 20) <= 7 and abs(y - 15) <= 7 else 1 for x in range(40)] for y in range(30)]
        self.assertEqual(self.pnm("morph", "--op", "dilate", stdin=pbm(dot)), pbm(square))
        self.assertEqual(self.pnm("morph", "--op", "close", stdin=pbm(dot)), pbm(dot))
        self.assertEqual(self.pnm("morph", "--op", "open", stdin=pbm(dot)), pbm([[1] * 40] * 30))
        self.assertEqual(self.pnm("morph", "--op", "edge", stdin=pgm([[90] * 40] * 30)), pbm([[1] * 40] * 30))
        gray = [[90] * 8, [90, 99, 90, 90, 90, 90, 90, 90], [90] * 8]
        smooth = [row[:] for row in gray]
        smooth[1][1:3] = [91, 91]
        self.assertEqual(self.pnm("morph", "--op", "smooth", stdin=pgm(gray)), pgm(smooth))
        sharp = [row[:] for row in gray]
        sharp[1][1:7] = [255, 171, 180, 180, 180, 180]
        self.assertEqual(self.pnm("morph", "--op", "4", stdin=pgm(gray)), pgm(sharp))
        for operation, kind in (("edge", b"P4"), ("close", b"P4"), ("smooth", b"P5"), ("sharpen", b"P5")):
            self.assertTrue(self.pnm("morph", "--op", operation, stdin=CARD.read_bytes()).startswith(kind))


class HelpTest(CommandTest):
    def test_help_completion_and_documents_tell_the_same(self):
        script = SAMPLES.parent / "host/completion/tavrix.bash"
        words = f'source {script}; COMP_CWORD=2 COMP_WORDS=(tavrix "$0" -); _tavrix 2>/dev/null; echo "${{COMPREPLY[@]}}"'
        commands = re.findall(r"^  (\w+)  ", self.succeed("--help").decode().split("Subcommands:")[1], re.MULTILINE)
        self.assertEqual(len(commands), 13)
        options = set()
        for command in commands:
            listed = set(re.findall(r"(?:^  |,)(--?[a-z0-9-]+)", self.succeed(command, "--help").decode(), re.MULTILINE))
            completed = subprocess.run(["bash", "-c", words, command], capture_output=True, text=True).stdout
            self.assertEqual(set(completed.split()), listed, command)
            options |= listed
        page = (SAMPLES.parent / "docs/tavrix.1").read_text().replace("\\-", "-")
        manual = (SAMPLES.parent / "docs/command.md").read_text()
        for name in commands + sorted(name for name in options - {"--help"} if name.startswith("--")):
            self.assertTrue(re.search(rf"(?<![\w-]){name}(?![\w-])", page), f"{name} in tavrix.1")
            self.assertTrue(re.search(rf"`{name}[` ]", manual), f"{name} in command.md")


class FindingsTest(CommandTest):
    def report(self, *arguments, **options):
        return json.loads(self.succeed(*arguments, **options))

    def check_box(self, box, width=CARD_WIDTH, height=CARD_HEIGHT):
        self.assertEqual(list(box), ["left", "top", "right", "bottom"])
        self.assertTrue(0 <= box["left"] <= box["right"] < width and 0 <= box["top"] <= box["bottom"] < height, box)

    def check_inside(self, inner, outer, slack=0):
        self.assertTrue(inner["left"] >= outer["left"] - slack and inner["right"] <= outer["right"] + slack and
                        inner["top"] >= outer["top"] - slack and inner["bottom"] <= outer["bottom"] + slack, (inner, outer))

    def test_components_of_a_known_picture(self):
        box = lambda l, t, r, b: {"left": l, "top": t, "right": r, "bottom": b}
        whole = box(0, 0, 8, 3)
        self.assertEqual(self.report("components", "--json", "-", stdin=pbm(BITS)), {
            "format": 1, "coordinates": "pixels of the picture as displayed, column 0 at the left, row 0 on top",
            "file": "-", "page": 1, "size": {"width": 9, "height": 4}, "resolution": None, "mode": None,
            "scale": 1, "blackShare": 0.138889, "warnings": [], "counts": {"blocks": 1, "lines": 1, "components": 2},
            "blocks": [{"box": whole, "lines": [{"box": whole, "components": [
                {"box": box(1, 1, 2, 2), "pixels": 3}, {"box": box(6, 2, 6, 3), "pixels": 2}]}]}]})
        grown = self.report("components", "--json", "--grow", "2,1", "-", stdin=pbm(BITS))
        self.assertEqual([c["box"] for c in grown["blocks"][0]["lines"][0]["components"]],
                         [box(0, 0, 4, 3), box(4, 1, 8, 3)])
        self.assertEqual(self.succeed("components", "--noise", "1,2", "-", stdin=pbm(BITS)),
                         b"-: 1 blocks, 1 lines, 1 components\n")
        rows = [[not (any(20 + 14 * i <= x <= 28 + 14 * i for i in range(8)) and y % 24 < 11) for x in range(160)]
                for y in range(72)]  # eight letters a row: rows are blocks of text, columns align all of them
        for grouping, blocks in ("text", 3), ("aligned", 1):
            self.assertEqual(self.succeed("components", "--group", grouping, "-", stdin=pbm(rows)),
                             b"-: %d blocks, %d lines, 24 components\n" % (blocks, blocks))
        pages = self.succeed("components", "--json", "-", stdin=pbm(BITS) + pbm(BITS))
        self.assertEqual([json.loads(line)["page"] for line in pages.splitlines()], [1, 2])

    def test_card(self):
        self.write("card.jpg", CARD.read_bytes())
        found = self.report("card", "card.jpg", "-o", "card.tif", "--overlay", "overlay.png")
        self.assertEqual(list(found), ["format", "coordinates", "file", "page", "size", "resolution", "mode", "scale", "confidence",
                                       "blackShare", "warnings", "counts", "blocks", "lines", "trueLine", "logo"])
        self.assertEqual((found["size"], found["resolution"], found["mode"]),
                         ({"width": CARD_WIDTH, "height": CARD_HEIGHT}, {"x": 300, "y": 300}, "auto"))
        self.assertTrue(0.01 < found["blackShare"] < 0.2)
        self.assertEqual(found["counts"]["blocks"], len(found["blocks"]))
        self.assertEqual(found["counts"]["components"],
                         sum(len(line["components"]) for block in found["blocks"] for line in block["lines"]))
        for block in found["blocks"]:
            self.check_box(block["box"])
            for line in block["lines"]:
                self.check_inside(line["box"], block["box"])
        for line in found["lines"]:
            self.check_box(line["box"])
            for component in line["components"]:
                self.check_inside(component["box"], line["box"])
        self.check_inside(LOGO, found["logo"], slack=8)
        self.assertTrue(any(self.overlap(line["box"], NAME) > 0.8 for line in found["lines"]), "the name is a line")
        self.check_box(found["trueLine"])

        card = self.open("card.tif")
        self.assertEqual((card.size, card.mode, card.tag_v2[282], card.n_frames), ((CARD_WIDTH, CARD_HEIGHT), "1", 300, 1))
        self.check_overlay(self.open("overlay.png"), found)

        for command, keys in (("trueline", ["trueLine"]), ("logo", ["logo"]), ("lines", ["lines"])):
            alone = self.report(command, "--json", "card.jpg")
            self.assertEqual({key: alone[key] for key in keys}, {key: found[key] for key in keys})
        again = self.report("logo", "--json", "card.tif")
        self.assertEqual((again["logo"], again["mode"]), (found["logo"], None))

    def overlap(self, a, b):
        """The share of b that a covers, by width, when their rows meet."""
        if a["top"] > b["bottom"] or b["top"] > a["bottom"]:
            return 0
        return (min(a["right"], b["right"]) - max(a["left"], b["left"])) / (b["right"] - b["left"])

    def check_overlay(self, picture, found):
        box = found["logo"]
        self.assertEqual(picture.getpixel((box["left"] - 1, (box["top"] + box["bottom"]) // 2)), (160, 30, 200))
        seen = {colour for _, colour in picture.getcolors(1 << 24)}
        for name, colour in (("component", (230, 40, 40)), ("line", (0, 170, 60)), ("block", (0, 90, 240)),
                             ("true line", (255, 140, 0))):
            self.assertIn(colour, seen, name)

    def test_nothing_to_find(self):
        blank = pgm([[255] * 300] * 200)
        done = self.run_command("card", "-", stdin=blank)
        self.assertEqual((done.returncode, done.stderr), (0, b"tavrix: -: warning: the result is nearly blank\n"))
        found = json.loads(done.stdout)
        self.assertEqual((found["blackShare"], found["warnings"]), (0, ["the result is nearly blank"]))
        self.assertEqual((found["blocks"], found["lines"], found["trueLine"], found["logo"]), ([], [], None, None))
        self.assertEqual(self.run_command("logo", "-", stdin=blank).stdout, b"-: logo none\n")


if __name__ == "__main__":
    main()
