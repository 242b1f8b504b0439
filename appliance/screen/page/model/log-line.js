// The parts of a line of the platform log, such as "I/carvoy-service( 4711): text".
import { parseAnsi, plainText } from "./ansi.js";

export const Levels = ["V", "D", "I", "W", "E", "F"];

export const LevelNames = {
    V: "verbose",
    D: "debug",
    I: "info",
    W: "warning",
    E: "error",
    F: "fatal",
    S: "silent",
    "": "other",
};

const Line = /^([VDIWEFS])\/(.{0,128}?)\(\s*(\d+)\): ?(.*)$/s;

export function parseLogLine(line) {
    const found = Line.exec(line);
    const [, level, tag, process, text] = found ?? [null, "", "", "", line];
    return { level, tag: plainText(tag).trim(), process, pieces: parseAnsi(text), plain: plainText(line) };
}

/** A line that has no level is never filtered away by one. */
export function passes(parsed, least, words) {
    const rank = Levels.indexOf(parsed.level);
    const isLoud = rank < 0 || rank >= Levels.indexOf(least);
    return isLoud && parsed.plain.toLowerCase().includes(words.toLowerCase());
}
