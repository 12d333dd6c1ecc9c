#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures how fast Tavrix is and writes the tables and pictures of docs/performance.md.

    performance.py [BUILD] [PICTURES] [--only PART]... [--under COMMAND]

BUILD is the folder of a release build with benches (build/release). PICTURES is a folder of pictures for the table of
the command; without it 60 are drawn. Figures are kept in BUILD/performance.json. --only measures some parts again and
takes the others from there; --only none writes the document alone. --under puts every measurement, of at most a minute,
under another command, such as "taskset -c 1".

Needs of Debian: python3-numpy python3-pil python3-matplotlib, and a C++ compiler. Left out with a word where they are
not there: python3-opencv imagemagick unpaper. OpenCV and Leptonica for C++ are those that the benches were built with.
"""
import argparse
import datetime
import importlib.util
import json
import os
import pathlib
import platform
import re
import resource
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
SIZES = ("1063/650", "2126/1300", "4252/2600")
OPERATION_GROUPS = 3
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1, "s": 1e3}


# ---- the benches

def bench_names(build):
    """The operations that are measured at all page sizes, without their peers."""
    listed = subprocess.run([build / "bench/tavrix_bench", "--benchmark_list_tests"], capture_output=True, text=True, check=True)
    names = [line.split("/")[0] for line in listed.stdout.splitlines() if "/" + SIZES[0] in line]
    return [name for name in names if not name.endswith(("_OpenCV", "_Leptonica"))]


def operations(build, group):
    """Best of three milliseconds by operation or peer and size."""
    names = "|".join(bench_names(build)[int(group)::OPERATION_GROUPS])
    done = subprocess.run([build / "bench/tavrix_bench", f"--benchmark_filter=^({names})(_OpenCV|_Leptonica)?/({'|'.join(SIZES)})",
                           "--benchmark_min_time=0.04", "--benchmark_repetitions=3", "--benchmark_format=json"],
                          capture_output=True, text=True, check=True)
    best = {}
    for row in json.loads(done.stdout)["benchmarks"]:
        if row["run_type"] != "iteration":
            continue
        name, width, height, *kind = row["name"].split("/")
        taken = row["real_time" if kind else "cpu_time"] * MILLISECONDS[row["time_unit"]]
        sizes = best.setdefault(name, {})
        sizes[f"{width}/{height}"] = min(taken, sizes.get(f"{width}/{height}", taken))
    return best


def loop(build, bits):
    """By picture and mode: milliseconds with memory kept and as it comes, page faults a call."""
    done = subprocess.run([build / "bench/tavrix_loop_bench", bits], capture_output=True, text=True, check=True)
    rows = re.findall(r"^(\w+) +mode (\d) +([\d.]+) ms kept +([\d.]+) ms as it comes.* (\d+) faults", done.stdout, re.MULTILINE)
    return {bits: [[name, int(mode), float(kept), float(plain), int(faults)] for name, mode, kept, plain, faults in rows]}


def from_exports(build, what, argument=""):
    os.environ["TAVRIX_LIBRARY"] = str(build / "src/libtavrix.so.1")
    import exports
    return getattr(exports, what)(argument)


# ---- the command and other programs

def draw_pictures(folder):
    """48 cards and 12 receipts, photographed: print of several sizes, uneven light, noise; JPEG."""
    import matplotlib.font_manager
    import numpy
    from PIL import Image, ImageDraw, ImageFont
    font_file = matplotlib.font_manager.findfont("DejaVu Sans")
    for number in range(60):
        random = numpy.random.default_rng(number)
        width, height = (1150, 760) if number < 48 else (1000, 2600)
        picture = Image.new("L", (width, height), 235)
        draw, top = ImageDraw.Draw(picture), 50
        while top < height - 90:
            size = int(random.choice([20, 26, 34, 60], p=[0.4, 0.35, 0.2, 0.05]))
            lengths = random.integers(2, 11, random.integers(1, 6))
            line = " ".join("".join(map(chr, random.integers(97, 123, length))).capitalize() for length in lengths)
            draw.text((int(random.integers(40, 200)), top), line, int(random.integers(20, 90)), ImageFont.truetype(font_file, size))
            top += int(size * random.uniform(1.2, 2.2))
        light = numpy.linspace(1, random.uniform(0.7, 0.95), width)[None, :] * numpy.linspace(1, 0.9, height)[:, None]
        tint = numpy.array([1.0, 0.97, random.uniform(0.85, 0.95)])
        pixels = (numpy.asarray(picture) * light)[:, :, None] * tint + random.normal(0, 4, (height, width, 3))
        Image.fromarray(pixels.clip(0, 255).astype(numpy.uint8)).save(folder / f"{number:02}.jpg", quality=88)


OPENCV = """
import cv2, pathlib, sys
for name in sys.argv[3:]:
    gray = cv2.imread(name, cv2.IMREAD_GRAYSCALE)
    if sys.argv[1] == "otsu": bits = cv2.threshold(gray, 0, 255, cv2.THRESH_BINARY | cv2.THRESH_OTSU)[1]
    else: bits = cv2.adaptiveThreshold(gray, 255, cv2.ADAPTIVE_THRESH_MEAN_C, cv2.THRESH_BINARY, 25, 15)
    cv2.imwrite(sys.argv[2] + "/" + pathlib.Path(name).stem + ".png", bits, [cv2.IMWRITE_PNG_BILEVEL, 1])
"""


def has_opencv():
    return importlib.util.find_spec("cv2") is not None


def programs(tavrix, pictures, decoded, out):
    """Label, what it does, command line or None where the program is not there."""
    mogrify, opencv = shutil.which("mogrify"), has_opencv()
    g4 = ["-compress", "Group4"]
    return [
        ("tavrix, mode otsu", "one threshold a picture; TIFF G4", [tavrix, "binarize", "-q", "-m", "otsu", "-o", out, *pictures]),
        ("tavrix, mode regions", "a threshold for every region; TIFF G4",
         [tavrix, "binarize", "-q", "-m", "regions", "-o", out, *pictures]),
        ("tavrix, two jobs", "the same with `--jobs 2`", [tavrix, "binarize", "-q", "-m", "regions", "-j", "2", "-o", out, *pictures]),
        ("tavrix, mode auto", "the default: levels the light, keeps light text, drops dirt, warns of what may be lost",
         [tavrix, "binarize", "-q", "-o", out, *pictures]),
        ("OpenCV in Python, Otsu", "one threshold a picture; 1-bit PNG, its TIFF writer has no G4",
         opencv and [sys.executable, "-c", OPENCV, "otsu", out, *pictures]),
        ("OpenCV in Python, adaptive", "a mean of 25 x 25 pixels; 1-bit PNG",
         opencv and [sys.executable, "-c", OPENCV, "mean", out, *pictures]),
        ("ImageMagick, fixed", "`mogrify -threshold 60%`: version 6 has no Otsu; TIFF G4",
         mogrify and [mogrify, "-path", out, "-format", "tif", "-colorspace", "Gray", "-threshold", "60%", *g4, *pictures]),
        ("ImageMagick, local", "`mogrify -lat 25x25-6%`, a mean of 25 x 25 pixels; TIFF G4",
         mogrify and [mogrify, "-path", out, "-format", "tif", "-colorspace", "Gray", "-negate", "-lat", "25x25-6%", "-negate",
                      *g4, *pictures]),
        ("unpaper", "fixed threshold, and finds, levels and cleans the page; reads PPM that was decoded before, writes PBM",
         shutil.which("unpaper") and ["unpaper", "-q", "--overwrite", *(name for ppm in decoded for name in (ppm, ppm[:-3] + "pbm"))]),
    ]


def run_timed(line):
    """Wall and processor seconds of a command that must do its work."""
    before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.perf_counter()
    done = subprocess.run(line, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL)
    wall, after = time.perf_counter() - start, resource.getrusage(resource.RUSAGE_CHILDREN)
    if done.returncode != 0:
        sys.exit(f"{line[0]} failed: {done.stderr.decode(errors='replace')[-500:]}")
    return wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def command(build, which):
    """Wall and processor seconds for all pictures; the best of five runs, or one that takes long."""
    given, number = pathlib.Path(which.split(":", 1)[1]), int(which.split(":")[0])
    pictures = sorted(str(path) for path in given.iterdir() if path.suffix.lower() in (".jpg", ".jpeg", ".png", ".tif", ".tiff"))
    with tempfile.TemporaryDirectory() as out:
        decoded = []
        if number == len(programs(build, [], ["any"], out)) - 1:
            from PIL import Image
            for i, name in enumerate(pictures):
                decoded.append(f"{out}/in{i}.ppm")
                Image.open(name).convert("RGB").save(decoded[-1])
        label, does, line = programs(build / "host/tavrix", pictures, decoded, out)[number]
        if not line:
            return {label: None}
        runs = [run_timed(line)]
        if runs[0][0] < 5:
            runs += [run_timed(line) for _ in range(4)]
    return {label: [does, *min(runs), len(pictures)]}


def beside(build, pictures):
    """Processor milliseconds a JPEG picture: decoding, writing G4, both, with the export between, the whole command."""
    program = build / "bench/tavrix_command_bench"
    if not program.exists():
        return {"tavrix_command_bench": None}
    done = subprocess.run([program, pictures], capture_output=True, text=True, check=True)
    rows = re.findall(r"^(\w+) +" + r".*".join(rf"{what} ([\d.]+)" for what in ("decode", "write", "alone", "export", "whole")),
                      done.stdout, re.MULTILINE)
    return {mode: list(map(float, times)) for mode, *times in rows}


def startup(build, _):
    """Median milliseconds of programs that only say their version or load their modules."""
    lines = {"tavrix --version": [build / "host/tavrix", "--version"],
             "mogrify -version": shutil.which("mogrify") and ["mogrify", "-version"],
             "unpaper --version": shutil.which("unpaper") and ["unpaper", "--version"],
             "python3 -c 'import cv2'": [sys.executable, "-c", "import cv2"] if has_opencv() else None}
    return {name: line and 1e3 * statistics.median(run_timed(line)[0] for _ in range(15)) for name, line in lines.items()}


def module(build, _):
    """Median milliseconds of the Python module beside OpenCV's, on an array of 12 megapixels."""
    os.environ["TAVRIX_LIBRARY"] = str(build / "src/libtavrix.so.1")
    import exports
    import tavrix
    gray = exports.gray_page(4000, 3000)
    bits = gray > 128
    rows = {"Otsu": [lambda: tavrix.binarize(gray, "otsu")], "local": [lambda: tavrix.binarize(gray, "local")],
            "components": [lambda: tavrix.components(bits)], "rotation by 3°": [lambda: tavrix.rotate(gray, 3)]}
    if has_opencv():
        import cv2
        cv2.setNumThreads(1)
        black = (~bits).astype("u1")
        turn = cv2.getRotationMatrix2D((2000, 1500), 3, 1)
        rows["Otsu"].append(lambda: cv2.threshold(gray, 0, 255, cv2.THRESH_BINARY | cv2.THRESH_OTSU))
        rows["local"].append(lambda: cv2.adaptiveThreshold(gray, 255, cv2.ADAPTIVE_THRESH_MEAN_C, cv2.THRESH_BINARY, 5, 10))
        rows["components"].append(lambda: cv2.connectedComponentsWithStats(black, connectivity=8))
        rows["rotation by 3°"].append(lambda: cv2.warpAffine(gray, turn, (4000, 3000), flags=cv2.INTER_LINEAR, borderValue=255))

    def milliseconds(call):
        times = []
        for _ in range(6):
            start = time.perf_counter()
            call()
            times.append(time.perf_counter() - start)
        return 1e3 * statistics.median(times[1:])
    return {name: [milliseconds(call) for call in calls] for name, calls in rows.items()}


# ---- all of it

def machine(build):
    def first(pattern, text):
        found = re.search(pattern, text, re.MULTILINE)
        return found.group(1).strip() if found else "unknown"
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    compiler = subprocess.run([first(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache), "--version"], capture_output=True, text=True)
    cpu = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8")
    system = pathlib.Path("/etc/os-release").read_text(encoding="utf-8")
    commit = subprocess.run(["git", "-C", ROOT, "log", "-1", "--format=%h"], capture_output=True, text=True)
    return {"cpu": first(r"^model name\s*: (.*)$", cpu), "family": first(r"^model\s*: (.*)$", cpu), "cores": os.cpu_count(),
            "virtual": " hypervisor " in cpu, "memory": os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2 ** 30,
            "compiler": compiler.stdout.splitlines()[0], "kernel": platform.release(), "system": first(r'^PRETTY_NAME="(.*)"$', system),
            "date": datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d"), "commit": commit.stdout.strip()}


def parts_of(pictures):
    """By part: what to call with which argument; each is a measurement of its own."""
    last = len(programs("", [], [], ""))
    return {
        "operations": [("operations", str(group)) for group in range(OPERATION_GROUPS)],
        "exports": [("exports", "")],
        "growth": [("growth", modes) for modes in ("0,1,2", "3,4,6", "5", "8", "9", "card")],
        "components": [("components", "")],
        "loop": [("loop", "8"), ("loop", "24")],
        "command": [("command", f"{number}:{pictures}") for number in range(last)],
        "beside": [("beside", str(pictures))],
        "startup": [("startup", "")],
        "module": [("module", "")],
    }


def measure(build, what, argument):
    if what in ("exports", "growth", "components"):
        return from_exports(build, what, argument)
    return globals()[what](build, argument)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path, nargs="?", default=ROOT / "build/release")
    parser.add_argument("pictures", type=pathlib.Path, nargs="?")
    parser.add_argument("--only", action="append", metavar="PART", choices=[*parts_of(None), "none"],
                        help=f"{', '.join(parts_of(None))} or none; may stand several times")
    parser.add_argument("--under", default="", metavar="COMMAND")
    parser.add_argument("--measure", nargs=2, help=argparse.SUPPRESS)  # one measurement, in a process of its own
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    if arguments.measure:
        print(json.dumps(measure(build, *arguments.measure)))
        return
    kept = build / "performance.json"
    results = json.loads(kept.read_text(encoding="utf-8")) if kept.exists() else {}
    with tempfile.TemporaryDirectory() as folder:
        pictures = arguments.pictures.resolve() if arguments.pictures else pathlib.Path(folder)
        wanted = [part for part in arguments.only or parts_of(None) if part != "none"]
        if {"command", "beside"} & set(wanted) and not arguments.pictures:
            draw_pictures(pictures)
        for part in wanted:
            found = {}
            for what, argument in parts_of(pictures)[part]:
                print(what, argument.split(":")[0], file=sys.stderr, flush=True)
                done = subprocess.run([*shlex.split(arguments.under), sys.executable, __file__, build, "--measure", what, argument],
                                      stdout=subprocess.PIPE, text=True)
                if done.returncode != 0:
                    sys.exit(f"{what} {argument} could not be measured")
                found.update(json.loads(done.stdout))
            for name in [name for name, figures in found.items() if figures is None]:
                print(f"left out, not installed: {name}", file=sys.stderr)
            results[part] = {name: figures for name, figures in found.items() if figures is not None}
            results["machine"] = machine(build)
            results.setdefault("commits", {})[part] = results["machine"].pop("commit")
            kept.write_text(json.dumps(results, indent=1), encoding="utf-8")
    if lacking := [part for part in parts_of(None) if part not in results]:
        sys.exit(f"the document is left as it is until these are measured too: {', '.join(lacking)}")
    import document
    document.write(results)


if __name__ == "__main__":
    main()
