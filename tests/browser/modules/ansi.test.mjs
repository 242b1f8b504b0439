// Colours and filters of the log.
import assert from "node:assert/strict";
import { test } from "node:test";

import { parseAnsi, plainText } from "../../../appliance/screen/page/model/ansi.js";
import { parseLogLine, passes } from "../../../appliance/screen/page/model/log-line.js";

const piece = (text, ...classes) => ({ text, classes });

test("A colour begins with its sequence and ends with the reset", () => {
    assert.deepEqual(parseAnsi("a\x1b[32mgreen\x1b[0mb"), [piece("a"), piece("green", "sgr-green"), piece("b")]);
    assert.deepEqual(parseAnsi("\x1b[31mred\x1b[m plain"), [piece("red", "sgr-red"), piece(" plain")]);
});

test("Looks add up, and each can be taken back alone", () => {
    assert.deepEqual(parseAnsi("\x1b[1;31;44mx\x1b[22my\x1b[39mz\x1b[49m."), [
        piece("x", "sgr-bold", "sgr-red", "sgr-on-blue"),
        piece("y", "sgr-red", "sgr-on-blue"),
        piece("z", "sgr-on-blue"),
        piece("."),
    ]);
    assert.deepEqual(parseAnsi("\x1b[4;3;2ma\x1b[24;23mb"), [
        piece("a", "sgr-dim", "sgr-italic", "sgr-underline"),
        piece("b", "sgr-dim"),
    ]);
});

test("Bright colours have classes, extended ones are taken out whole", () => {
    assert.deepEqual(parseAnsi("\x1b[94ma\x1b[103mb"), [
        piece("a", "sgr-bright-blue"),
        piece("b", "sgr-bright-blue", "sgr-on-bright-yellow"),
    ]);
    assert.deepEqual(parseAnsi("\x1b[38;5;31ma\x1b[38;2;1;4;31mb\x1b[48;5;1;1mc"), [piece("ab"), piece("c", "sgr-bold")]);
});

test("What else steers a terminal is dropped, text and tabulators stay", () => {
    assert.deepEqual(parseAnsi("a\x1b[2Jb\x1b[10;20Hc\x07\td\x1b]0;title\x07e\x9bf\x1b"), [piece("abc\tdef")]);
    assert.deepEqual(parseAnsi("\x1b[31"), [piece("31")]);
    assert.deepEqual(parseAnsi(""), []);
    assert.equal(plainText("\x1b[31mx\x1b[0m<b>"), "x<b>");
});

test("A line falls into level, tag, process and text", () => {
    const line = parseLogLine("E/carvoy-service( 4711): \x1b[31m[4711] A.cpp: f(3) > no: (1): 2\x1b[0m");
    assert.deepEqual([line.level, line.tag, line.process], ["E", "carvoy-service", "4711"]);
    assert.deepEqual(line.pieces, [piece("[4711] A.cpp: f(3) > no: (1): 2", "sgr-red")]);
    assert.deepEqual(parseLogLine("D/abc     (   12): ").tag, "abc");
    assert.deepEqual(parseLogLine("D/abc     (   12): ").pieces, []);
});

test("A line of another form is shown whole", () => {
    for (const text of ["nothing of the kind", "X/tag( 1): text", "I/tag: text", ""]) {
        const line = parseLogLine(text);
        assert.equal(line.level, "");
        assert.equal(line.plain, text);
        assert.deepEqual(line.pieces, text ? [piece(text)] : []);
    }
});

test("The filter takes a level and all above, and any part of the text without colours", () => {
    const lineOf = (level) => parseLogLine(`${level}/carvoy-ui(1): the \x1b[31mCard\x1b[0m's line`);
    const levels = ["V", "D", "I", "W", "E", "F"];
    const passing = (least) => levels.filter((level) => passes(lineOf(level), least, ""));
    assert.deepEqual(passing("V"), levels);
    assert.deepEqual(passing("I"), ["I", "W", "E", "F"]);
    assert.deepEqual(passing("E"), ["E", "F"]);
    assert.equal(passes(lineOf("I"), "V", "card's"), true);
    assert.equal(passes(lineOf("I"), "V", "[31m"), false);
    assert.equal(passes(lineOf("I"), "V", "CARVOY-UI"), true);
    assert.equal(passes(parseLogLine("no level"), "E", "no"), true);
    assert.equal(passes(parseLogLine("no level"), "E", "yes"), false);
});
