// SPDX-License-Identifier: MIT
// The page: takes a picture, hands it to the worker, shows what comes back.
import type { Mode } from "../src/index.js";
import type { Answer, FileFormat, Order } from "./messages.js";
import { Pane } from "./pane.js";
import { View } from "./view.js";

declare const WORKER_SCRIPT: string; // put in by the build

const MIME = { png: "image/png", tiff: "image/tiff", pdf: "application/pdf" };
const ENDING = { png: "png", tiff: "tif", pdf: "pdf" };

const find = <Kind extends HTMLElement>(id: string) => document.getElementById(id) as Kind;
const element = <Name extends keyof HTMLElementTagNameMap>(name: Name, text = "", className = "") =>
    Object.assign(document.createElement(name), { textContent: text, className });

let worker: Worker;
let known: readonly { mode: Mode; suits: string }[] = [];
let panes: Pane[] = [];
let picture = { id: 0, name: "", begin: 0 };
let isDrawn = true;

const view = new View(() => {
    find("zoom").textContent = `${Math.round(100 * view.zoom)} %`;
    find("work").classList.toggle("zoomed", view.zoom > 1);
    if (!isDrawn) return;
    isDrawn = false;
    requestAnimationFrame(() => {
        isDrawn = true;
        for (const pane of panes) pane.draw();
    });
});

function say(text: string) {
    find("status").textContent = text;
}

function complain(text: string) {
    find("problem").textContent = text;
    find("problem").hidden = text === "";
}

function send(order: Order) {
    worker.postMessage(order);
}

async function start() {
    const bytes = Uint8Array.from(atob(find("module").textContent!.trim()), letter => letter.charCodeAt(0));
    worker = new Worker(URL.createObjectURL(new Blob([WORKER_SCRIPT], { type: "text/javascript" })));
    worker.onmessage = ({ data }: MessageEvent<Answer>) => hear(data);
    worker.onerror = event => complain(`Something went wrong: ${event.message}. Load the page again.`);
    send({ kind: "start", module: await WebAssembly.compile(bytes) });
}

function take(files: Iterable<File>) {
    const [file, ...others] = files;
    if (file === undefined) return;
    complain(others.length === 0 ? "" : `One picture at a time: this is ${file.name}, the other ${others.length} were left.`);
    picture = { id: picture.id + 1, name: file.name, begin: performance.now() };
    for (const pane of panes) pane.close();
    panes = [];
    find("first").replaceChildren();
    find("modes").replaceChildren();
    say(`Reading ${file.name} …`);
    send({ kind: "picture", id: picture.id, file });
}

function hear(answer: Answer) {
    if (answer.kind === "ready") {
        known = answer.modes;
        document.documentElement.dataset["ready"] = "";
        return;
    }
    if (answer.kind === "file") return save(answer);
    if (answer.id !== picture.id) return;
    switch (answer.kind) {
        case "original": return showOriginal(answer);
        case "glance": return showGlance(answer);
        case "result": return showResult(answer);
        case "done": return say(`${picture.name}: every mode in ${seconds(performance.now() - picture.begin)}.`);
        case "failed":
            find("work").hidden = find("modes").childElementCount === 0;
            find("start").hidden = !find("work").hidden;
            say("");
            return complain(`${picture.name}: ${answer.reason}.`);
    }
}

const seconds = (milliseconds: number) => `${(milliseconds / 1000).toFixed(2)} s`;

function showOriginal({ width, height, preview, whole }: Answer & { kind: "original" }) {
    if (panes.length === 0) makePanes(width, height);
    panes[1]!.show({ width, height, preview, ...(whole ? { whole } : {}) });
}

function makePanes(width: number, height: number) {
    find("start").hidden = true;
    find("work").hidden = false;
    find("name").textContent = picture.name;
    find("work").style.setProperty("--shape", `${Math.min(2.2, Math.max(0.7, width / height))}`);
    const original = new Pane("original", view);
    original.caption.append(element("p", `${width} × ${height} pixels`));
    const [automatic, ...others] = known.map(({ mode, suits }) => {
        const pane = new Pane(mode, view);
        pane.caption.append(element("p", suits));
        return pane;
    }) as [Pane, ...Pane[]];
    panes = [automatic, original, ...others];
    find("first").append(automatic.figure, original.figure);
    find("modes").append(...others.map(pane => pane.figure));
    view.reset();
    say(`Working on ${picture.name} …`);
}

// Where all of the picture takes long, a part of its pixels comes first.
function showGlance({ preview }: Answer & { kind: "glance" }) {
    panes[0]!.glance(preview, panes[1]!);
    said("glance");
    say(`${picture.name}: a first impression after ${seconds(performance.now() - picture.begin)}; the whole follows.`);
}

// For whoever measures: milliseconds since the picture came.
function said(what: string) {
    document.documentElement.dataset[what] = String(Math.round(performance.now() - picture.begin));
}

function showResult(result: Answer & { kind: "result" }) {
    const { mode, bits, preview, findings, warnings } = result;
    const pane = panes.find(({ name }) => name === mode)!;
    pane.show({ width: bits.width, height: bits.height, preview, whole: bits });
    const facts = [`${(100 * result.blackShare).toFixed(1)} % black`, `${Math.round(result.milliseconds)} ms`];
    if (result.confidence !== undefined) facts.unshift(`${Math.round(100 * result.confidence)} % of the ink is letters in rows`);
    pane.caption.append(element("p", facts.join(" · ")));
    for (const warning of warnings) pane.caption.append(element("p", `Look twice: ${warning}.`, "warning"));
    if (findings !== undefined) {
        const { lines, trueLine, logo } = findings;
        const legend = element("ul", "", "legend");
        legend.append(element("li", `${lines.length} text ${lines.length === 1 ? "line" : "lines"}`),
                      element("li", trueLine === null ? "no main line" : "main line", "main"),
                      element("li", logo === null ? "no logo" : "logo", "logo"));
        pane.caption.append(legend);
        for (const other of panes.slice(0, 2)) {
            other.findings = findings;
            other.draw();
        }
        say(`${picture.name}: the automatic result after ${seconds(performance.now() - picture.begin)}; the other modes follow.`);
        said("automatic");
    }
    pane.caption.append(fileButtons(mode));
}

function fileButtons(mode: Mode): HTMLElement {
    const row = element("div", "", "files");
    for (const format of Object.keys(MIME) as FileFormat[]) {
        const button = element("button", format.toUpperCase());
        button.type = "button";
        button.setAttribute("aria-label", `Download ${mode} as ${format.toUpperCase()}`);
        button.addEventListener("click", () => send({ kind: "file", id: picture.id, mode, format }));
        row.append(button);
    }
    return row;
}

function save({ mode, format, bytes }: Answer & { kind: "file" }) {
    const link = element("a");
    link.href = URL.createObjectURL(new Blob([bytes], { type: MIME[format] }));
    link.download = `${picture.name.replace(/\.[^.]*$/, "")}-${mode}.${ENDING[format]}`;
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
    say(`${link.download} saved.`);
}

for (const id of ["choose", "photograph"]) {
    const input = find<HTMLInputElement>(id);
    input.addEventListener("change", () => {
        take(input.files ?? []);
        input.value = ""; // the same file may be chosen again
    });
}
document.addEventListener("paste", event => {
    const files = [...event.clipboardData?.files ?? []];
    if (files.length === 0) return complain("There is no picture in what was pasted.");
    take(files);
});
document.addEventListener("dragover", event => {
    event.preventDefault();
    document.documentElement.classList.add("dropping");
});
for (const end of ["dragleave", "drop"]) {
    document.addEventListener(end, () => document.documentElement.classList.remove("dropping"));
}
document.addEventListener("drop", event => {
    event.preventDefault();
    take(event.dataTransfer?.files ?? []);
});
find("smaller").addEventListener("click", () => view.step(-1));
find("larger").addEventListener("click", () => view.step(1));
find("whole").addEventListener("click", () => view.reset());
find<HTMLInputElement>("marks").addEventListener("change", event => {
    view.hasMarks = (event.target as HTMLInputElement).checked;
    for (const pane of panes) pane.draw();
});
start().catch(error => complain(`This browser does not run the page: ${error instanceof Error ? error.message : error}.`));
