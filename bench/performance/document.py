# SPDX-License-Identifier: MIT
"""Writes the figures of performance.py into docs/performance.md, between its marks, and draws the pictures."""
import pathlib
import textwrap

import matplotlib
import matplotlib.pyplot as pyplot

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENT = ROOT / "docs/performance.md"
IMAGES = ROOT / "docs/images"
SIZES = ("1063/650", "2126/1300", "4252/2600")
WORDS = {  # of the benches' names, in the order of the table
    "Gray": "24 bits to gray", "Pack": "threshold and pack to 1 bit", "Histogram": "histogram", "Otsu": "Otsu (mode 1)",
    "OtsuClipped": "Otsu, paper clipped to white",
    "LocalContrastWindows": "windows of 5 x 5 of mode 0", "Bernsen": "mid-range of 15 x 15 (mode 2)", "Gradient": "gradient (mode 4)",
    "SobelMagnitude": "Sobel magnitude, exact root", "Smooth3x3": "mean, 3 x 3", "SmoothRegion": "mean of a region",
    "Sharpen": "sharpening, 3 x 3", "SharpenRegion": "sharpening of a region", "Dilate15": "dilation, 15 x 15",
    "Erode15": "erosion, 15 x 15", "Closing": "closing, 15 x 15", "Extract_Card": "components, card",
    "Extract_Noise": "components, 10 % noise", "TurnOneBit90": "quarter turn, 1 bit", "TurnOneBit180": "half turn, 1 bit",
    "FlipOneBit": "upside down, 1 bit", "MirrorOneBit": "mirror, 1 bit", "GrayQuarterTurn": "quarter turn, gray",
    "RotateFreeGray30": "turn by 30°, gray", "RotateFreeColor30": "turn by 30°, colour",
    "LocalContrast": "mean and deviation (mode 0)", "PeakFit": "two peaks (mode 3)", "EdgeRegions": "edge-guided regions (mode 5)",
    "EdgeRegionsBlock": "mode 5, one block", "Isodata": "isodata (mode 6)", "LineRegions": "regions of text lines (mode 8)",
    "LineRegionsBlock": "mode 8, one block", "EdgeRegionsSharp": "sharpened regions (mode 9)", "CountStrokeEnds": "stroke ends",
    "FindTextComponents": "text components", "ThresholdRegion": "threshold of a region", "FillAndMarkRegion": "filling of gaps",
    "EdgeMap": "edge map", "Opening": "opening, 3 x 3", "TextLines_Card": "text lines of a card",
    "CopyOneBit": "copying alone, 1 bit", "CopyGray": "copying alone, 8 bits", "CopyColor": "copying alone, 24 bits",
}


def number(value):
    """Three digits at most."""
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}" if value >= 1 else f"{value:.3f}"


def table(heads, align, rows):
    lines = [heads, align, *rows]
    return "".join(f"| {' | '.join(line)} |\n" for line in lines)


def wrapped(text, start=""):
    return textwrap.fill(text, 120, initial_indent=start, subsequent_indent=" " * len(start), break_on_hyphens=False) + "\n"


def peers_of(name, figures):
    """The fastest peer's name and its milliseconds, or None."""
    found = [(figures[peer]["2126/1300"], peer) for peer in (f"{name}_OpenCV", f"{name}_Leptonica") if peer in figures]
    return (min(found)[1][len(name) + 1:], figures[min(found)[1]]) if found else None


def shares(name, figures):
    peer = peers_of(name, figures)
    return peer and [figures[name][size] / peer[1][size] for size in SIZES]


def operations(results):
    figures = results["operations"]
    rows = {True: [], False: []}
    own = [name for name in figures if not name.endswith(("_OpenCV", "_Leptonica"))]
    for name in sorted(own, key=lambda name: [*WORDS, name].index(name)):
        times = [figures[name][size] for size in SIZES]
        peer, share = peers_of(name, figures), shares(name, figures)
        beside = [peer[0], " · ".join(f"{one:.2f}" for one in share)] if peer else ["–", "–"]
        rows[peer is not None].append([WORDS.get(name, name), *map(number, times), *beside, f"{times[2] / times[0] / 16:.2f}"])
    return table(["operation", "1063 x 650", "2126 x 1300", "4252 x 2600", "fastest peer", "share of its time", "growth"],
                 ["---", "---:", "---:", "---:", "---", "---", "---:"], rows[True] + rows[False])


def exports(results):
    rows, last = [], ""
    for name, row in results["exports"]["rows"].items():
        function, _, variant = name.partition(", ")
        label = f"`{function}`{', ' + variant if variant else ''}" if function != last else f"… {variant}"
        last = function
        cells = []
        for size in ("card", "large"):
            cells += [number(row[size]["ns"] / 1e6), f"{100 * row[size]['floor'] / row[size]['ns']:.0f} %"]
        rows.append([label, *cells, f"{row['blank'] / row['card']['ns']:.2f}", f"{row['large']['faults']:.0f}", row["bound"]])
    return table(["", "card, ms", "floor", "12 MP, ms", "floor", "blank", "faults", "what bounds it"],
                 ["---", "---:", "---:", "---:", "---:", "---:", "---:", "---"], rows)


def limits(results):
    limit, figures = results["exports"]["limits"], results["operations"]

    def bandwidth(count):
        return f"{2 * count / limit['copies'][str(count)]:.0f} GB/s"
    passes = {"square roots (Sobel)": "SobelMagnitude", "text components": "FindTextComponents",
              "filling of gaps": "FillAndMarkRegion", "each histogram": "Histogram", "stroke ends": "CountStrokeEnds"}
    whole = figures["EdgeRegions"][SIZES[2]]
    parts = ", ".join(f"{what} {100 * figures[name][SIZES[2]] / whole:.0f} %" for what, name in passes.items())
    return wrapped(
        f"Measured in the same run: a clock cycle {limit['cycle']:.3f} ns; a square root {limit['root']:.2f} ns, eight at a time; "
        f"copying, read and written bytes together, {bandwidth(1 << 18)} in the second cache, {bandwidth(1 << 24)} for 16 MB and "
        f"{bandwidth(1 << 26)} for 64 MB; the first touch of 4 KB that the system has to clear {limit['touch']:.0f} ns. Passes on their "
        f"own, of mode 5's time on 4252 x 2600: {parts}. The page and every region have histograms of their own. Times are "
        f"less {limit['refused']:.0f} ns for a call through ctypes.")


def loop(results):
    rows = {}
    for bits, calls in results["loop"].items():
        for picture, mode, kept, plain, faults in calls:
            rows.setdefault(mode, {})[bits, picture] = f"{number(plain)} ({plain / kept:.2f})"
    ratios = [plain / kept for calls in results["loop"].values() for _, _, kept, plain, _ in calls]
    columns = [(bits, picture) for bits in ("8", "24") for picture in ("card", "receipt", "photo")]
    made = table(["mode", *(f"{picture}, {bits} bits" for bits, picture in columns)], ["---", *["---:"] * 6],
                 [[str(mode), *(cells[column] for column in columns)] for mode, cells in rows.items()])
    return f"{made}\nThe ratios are {min(ratios):.2f} to {max(ratios):.2f}.\n"


def command(results):
    rows = [[label, does, number(wall), number(cpu), number(1e3 * cpu / count)]
            for label, (does, wall, cpu, count) in results["command"].items()]
    return table(["", "what it does", "seconds", "CPU seconds", "CPU ms a picture"], ["---", "---", "---:", "---:", "---:"], rows)


def beside(results):
    rows = [[f"mode {mode}", *map(number, times), f"{times[4] / times[2]:.2f}"] for mode, times in results["beside"].items()]
    return table(["CPU ms a picture", "decoding", "writing G4", "both", "and `Binarized`", "the command", "command / both"],
                 ["---", *["---:"] * 6], rows)


def startup(results):
    return "Starting up: " + ", ".join(f"`{name}` {number(taken)} ms" for name, taken in results["startup"].items()) + ".\n"


def module(results):
    rows = [[name, *map(number, times), f"{times[0] / times[1]:.2f}"] if len(times) > 1 else [name, number(times[0]), "–", "–"]
            for name, times in results["module"].items()]
    return table(["12 megapixels, ms", "Tavrix", "OpenCV", "share"], ["---", "---:", "---:", "---:"], rows)


def summary(results):
    figures, rows, machine, programs = (results[part] for part in ("operations", "exports", "machine", "command"))
    rows = rows["rows"]
    compared = [(max(shares(name, figures)), name) for name in figures if peers_of(name, figures)]
    behind = [f"{WORDS.get(name, name)} ({worst:.2f})" for worst, name in sorted(compared, reverse=True) if worst > 1]

    def taken(mode, size):
        return number(rows[f"Binarized, mode {mode}"][size]["ns"] / 1e6)

    def reached(mode):
        return 100 * rows[f"Binarized, mode {mode}"]["large"]["floor"] / rows[f"Binarized, mode {mode}"]["large"]["ns"]
    whole = [reached(mode) for mode in (1, 3, 6)]
    others = ", ".join(f"{label} {number(figure[1])} s" for label, figure in programs.items() if not label.startswith("tavrix"))
    bullets = [
        f"Black and white on one core: a card of 1063 x 650 pixels in {taken(1, 'card')} ms by Otsu's threshold and {taken(5, 'card')} ms "
        f"by regions, 12 megapixels in {taken(1, 'large')} and {taken(5, 'large')} ms.",
        f"Of {len(compared)} operations that OpenCV or Leptonica has as well, {len(compared) - len(behind)} take less time than the faster of "
        "both at every size" + (f"; behind at one size or more, at worst: {', '.join(behind)}" if behind else "") + ".",
        f"The command: {programs['tavrix, mode otsu'][3]} JPEG pictures in {number(programs['tavrix, mode otsu'][1])} s by Otsu, "
        f"{number(programs['tavrix, mode regions'][1])} s by regions, {number(programs['tavrix, mode auto'][1])} s in mode auto, decoding and "
        f"writing included. Others, which do other things: {others}.",
        f"What bounds it: thresholds of the whole image, counting and bandwidth, of which they reach {min(whole):.0f} to {max(whole):.0f} % on 12 "
        "megapixels; windows and turns, arithmetic; components and lines, branch misses and cache misses.",
        f"Measured on {machine['date']}: {machine['cpu']} (model {machine['family']}), {machine['cores']} cores"
        f"{' of a virtual machine' if machine['virtual'] else ''}, {machine['memory']:.0f} GB, {machine['system']}, Linux {machine['kernel']}, "
        f"{machine['compiler']}, commit {', '.join(dict.fromkeys(results['commits'].values()))}.",
    ]
    return "".join(wrapped(bullet, "- ") for bullet in bullets)


def draw(file, unit, scale, series):
    """Two pictures side by side: nanoseconds a pixel or a component over their number, warm and cold."""
    matplotlib.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "tavrix", "font.size": 9})
    figure, axes = pyplot.subplots(1, 2, figsize=(9, 4), sharey=True, layout="constrained")
    for axis, (column, name) in zip(axes, ((1, "warm"), (2, "cold"))):
        for (label, points), mark in zip(series.items(), "os^vD<>pP*Xh"):
            axis.plot([point[0] / scale for point in points], [point[column] / point[0] for point in points], marker=mark,
                      markersize=4, linewidth=1.2, label=label)
        axis.set(xscale="log", yscale="log", xlabel=f"{'mega' if scale > 1 else ''}{unit}s", title=name)
        axis.grid(True, which="major", linewidth=0.4)
        for side in (axis.xaxis, axis.yaxis):
            side.set_major_formatter("{x:g}")
    axes[0].set_ylabel(f"ns a {unit}")
    axes[1].legend(loc="center left", bbox_to_anchor=(1, 0.5), fontsize=8)
    figure.savefig(IMAGES / file, metadata={"Date": None})
    pyplot.close(figure)


def write(results):
    modes = {("card analysis" if mode == "card" else f"mode {mode}"): points for mode, points in results["growth"].items()}
    draw("growth-pixels.svg", "pixel", 1e6, modes)
    draw("growth-components.svg", "component", 1, results["components"])
    text = DOCUMENT.read_text(encoding="utf-8")
    for made in (summary, operations, exports, limits, loop, command, beside, startup, module):
        start, end = f"<!-- {made.__name__}: made by bench/performance -->\n", f"<!-- end of {made.__name__} -->"
        before, rest = text.split(start)
        text = before + start + made(results) + end + rest.split(end)[1]
    DOCUMENT.write_text(text, encoding="utf-8")
