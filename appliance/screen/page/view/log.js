// The platform log, with its colours, filtered by level and text.
import { LevelNames, parseLogLine, passes } from "../model/log-line.js";
import { clock, count } from "../model/words.js";
import { byId, el, keyed, setText, when } from "./dom.js";
import { followEnd } from "./follow.js";

const parsedLines = new WeakMap();

function parsed(entry) {
    let line = parsedLines.get(entry);
    if (!line) {
        line = parseLogLine(entry.line);
        parsedLines.set(entry, line);
    }
    return line;
}

function makeLine(entry) {
    const { level, tag, process, pieces } = parsed(entry);
    const text = pieces.map(({ text: words, classes }) => el(["span", ...classes].join("."), {}, words));
    return el(
        "li.log-line",
        { "data-level": level },
        el("time", {}, clock(entry.at)),
        el("abbr.level", { title: LevelNames[level] }, level || "·"),
        el("span.tag", { title: process ? `process ${process}` : undefined }, tag),
        el("span.log-text", {}, text),
    );
}

export function createLog(redraw) {
    const scroller = byId("log-scroller");
    const follow = followEnd(scroller, byId("log-end"));
    const level = byId("log-level");
    const words = byId("log-words");
    level.addEventListener("change", redraw);
    words.addEventListener("input", redraw);
    return when(
        ({ state, isHoodOpen }) => [state.log, level.value, words.value, isHoodOpen],
        ({ state }) => {
            const lines = state.log.filter((entry) => passes(parsed(entry), level.value, words.value));
            keyed(byId("log"), lines, (entry) => entry, makeLine);
            const all = count(state.log.length, "line");
            setText(byId("log-count"), lines.length === state.log.length ? all : `${lines.length} of ${all}`);
            byId("log-none").hidden = lines.length > 0;
            setText(byId("log-none"), state.log.length > 0 ? "No line is like that." : "Nothing was logged yet.");
            follow.grown();
        },
    );
}
