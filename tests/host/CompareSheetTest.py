# SPDX-License-Identifier: MIT
"""The page of `tavrix compare`, as headless Chromium shows it."""
import html
import re
import shutil
import subprocess
import unittest

from support import *

MODES = ["local", "otsu", "midrange", "peaks", "gradient", "regions", "isodata", "lines", "sharp"]
BROWSER = shutil.which("chromium") or shutil.which("chromium-browser")

# Replaces the page by what a reader sees of it: for every figure its name, whether it is on screen, the
# size of its picture and the share of dark pixels in it, and its numbers.
PROBE = """
<script>
addEventListener("load", () => {
  const lines = [...document.querySelectorAll("figure")].map(figure => {
    const image = figure.querySelector("img"), box = image.getBoundingClientRect();
    const canvas = document.createElement("canvas");
    canvas.width = image.naturalWidth; canvas.height = image.naturalHeight;
    const pen = canvas.getContext("2d");
    pen.drawImage(image, 0, 0);
    const pixels = pen.getImageData(0, 0, canvas.width, canvas.height).data;
    let dark = 0;
    for (let i = 0; i < pixels.length; i += 4) dark += pixels[i] < 128;
    image.click();
    const full = image.getBoundingClientRect().width;
    image.click();
    return [figure.querySelector("h2").innerText, box.width > 100 && box.height > 60, image.naturalWidth,
            image.naturalHeight, (100 * dark / (pixels.length / 4)).toFixed(2), Math.round(full),
            ...[...figure.querySelectorAll("dd")].map(e => e.innerText)].join("|");
  });
  const head = document.title + "|" + document.querySelector("p").innerText + "|" +
    performance.getEntriesByType("resource").filter(e => !e.name.startsWith("data:")).length;
  document.body.innerHTML = "<pre></pre>";
  document.querySelector("pre").textContent = [head, ...lines].join("\\n");
});
</script>
"""


@unittest.skipIf(BROWSER is None, "no chromium here (Debian: chromium)")
class CompareSheetTest(CommandTest):
    def show(self, sheet):
        """The lines that the probe leaves of a sheet."""
        self.write("probed.html", sheet + PROBE.encode())
        result = subprocess.run(
            [BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--disable-background-networking",
             "--disable-component-update", "--disable-sync", "--no-first-run", f"--user-data-dir={self.folder}/profile",
             "--window-size=1400,1000", "--virtual-time-budget=20000", "--dump-dom", f"file://{self.folder}/probed.html"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=180)
        shown = re.search(r"<pre>(.*)</pre>", result.stdout.decode(), re.DOTALL)
        self.assertIsNotNone(shown, "the browser shows the page")
        return [line.split("|") for line in html.unescape(shown.group(1)).splitlines()]

    def test_card(self):
        name = 'card & <b>"1".jpg'
        self.write(name, (SAMPLES / "card-colour.jpg").read_bytes())
        self.succeed("compare", name, "-o", "sheet.html")
        head, *figures = self.show(self.read("sheet.html"))
        self.assertEqual(head, ['card & <b>"1".jpg', "1150 \u00d7 760 pixels, 300 dots per inch", "0"])
        self.assertEqual([figure[0].split()[-1] for figure in figures], ["original", *MODES])
        for name, is_seen, width, height, dark, full, *numbers in figures:
            with self.subTest(name):
                self.assertEqual((is_seen, width, height), ("true", "1150", "760"))
                self.assertGreaterEqual(int(full), 1150, "a click shows it in full size")
                if name == "original":
                    continue
                share, components, time = numbers
                self.assertEqual(share, dark + " %", "the caption tells what the picture shows")
                mode = name.split()[0]
                counted = self.succeed("components", "-m", mode, SAMPLES / "card-colour.jpg").decode()
                self.assertRegex(counted, r", %s components\n" % components)
                self.assertRegex(time, r"^\d+\.\d ms$")

    def test_pages_and_refusals(self):
        self.write("two.pgm", noise() * 2)
        self.succeed("compare", "two.pgm", "-o", "sheets/")
        self.assertEqual(len(self.show(self.read("sheets/two.html"))), 1 + 2 * (1 + len(MODES)))
        self.write("bits.pbm", pbm([[1, 0]]))
        self.fail_with(1, "1-bit picture already", "compare", "bits.pbm", "-o", "sheet.html")


if __name__ == "__main__":
    main()
