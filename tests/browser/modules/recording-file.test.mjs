// What the page saves as a recording, and what it accepts as one.
import assert from "node:assert/strict";
import { test } from "node:test";

import { makeRecording, parseRecording, picturesOf, RecordingError } from "../../../appliance/screen/page/state/recording.js";
import { card, message, product, someState } from "../support/states.mjs";

const saved = new Date("2026-03-01T10:20:30.456Z");
const kept = { messages: 300, log: 1000 };

function recording(changes = {}) {
    const events = [
        { at: 1000, name: "card", data: card() },
        { at: 1001, name: "message", data: message({ number: 1 }) },
        { at: 1002, name: "log", data: { line: "I/x(1): y" } },
        { at: 1003, name: "novelty", data: { of: "a later version" } },
    ];
    const pictures = { "1.png?v=1-2": "data:image/png;base64,AA==" };
    return { ...makeRecording({ base: someState(), events, kept }, pictures, saved), ...changes };
}

const parse = (value) => parseRecording(JSON.stringify(value));

test("What is saved can be opened again, and is the same", () => {
    const value = recording();
    assert.equal(value.format, "carvoy-screen-recording");
    assert.equal(value.version, 1);
    assert.equal(value.saved, "2026-03-01T10:20:30.456Z");
    assert.deepEqual(parse(value), value);
});

function refused(value, reason) {
    const content = typeof value === "string" ? value : JSON.stringify(value);
    assert.throws(() => parseRecording(content), (error) => error instanceof RecordingError && reason.test(error.message));
}

test("What is no recording is refused with what it is", () => {
    refused("", /not JSON/);
    refused(JSON.stringify(recording()).slice(0, -20), /not JSON/);
    refused("null", /something else/);
    refused("[]", /something else/);
    refused({}, /something else/);
    refused({ ...recording(), format: "other" }, /something else/);
    refused({ ...recording(), version: 2 }, /version 2.*reads 1/);
});

test("A recording with a wrong member is refused with the member's place", () => {
    refused(recording({ saved: 1 }), /^saved is no text/);
    refused(recording({ saved: "yesterday" }), /saved is no time/);
    refused(recording({ kept: { messages: 0, log: 1 } }), /kept/);
    refused(recording({ kept: {} }), /kept\.messages is no number/);
    refused(recording({ base: [] }), /base is no object/);
    refused(recording({ base: { card: 3 } }), /base\.card is no object/);
    refused(recording({ base: { messages: {} } }), /base\.messages is no list/);
    refused(recording({ base: { messages: [message({ number: 1 })] } }), /base\.messages\[0\]\.at is no number/);
    refused(recording({ base: { images: [{ name: "a", size: "1", version: "" }] } }), /base\.images\[0\]\.size/);
    refused(recording({ events: {} }), /events is no list/);
    refused(recording({ events: [{ at: 1, name: "flag", data: 1 }, {}] }), /events\[1\]\.at is no number/);
    refused(recording({ events: [{ at: 1, name: "novelty" }] }), /events\[0\]\.data is missing/);
});

test("An event that a view relies on must be as it ought to be", () => {
    const eventOf = (name, data) => recording({ events: [{ at: 1, name, data }] });
    refused(eventOf("card", { ...card(), products: [{ ...product(), price: 3 }] }), /events\[0\]\.data\.products\[0\]\.price/);
    refused(eventOf("card", { ...card(), state: "odd" }), /data\.state is none of empty, searching, shown/);
    refused(eventOf("message", message({ kind: "shout" })), /data\.kind/);
    refused(eventOf("message", message({ extras: { a: [1] } })), /data\.extras\.a/);
    refused(eventOf("log", { line: null }), /data\.line/);
    refused(eventOf("partner", { page: "none", product: {}, cart: [], messages: [] }), /product\.merchant/);
    refused(eventOf("settings", { confirm: "now", delay: 1, merchants: [], switches: [{}] }), /switches\[0\]\.id/);
    refused(eventOf("notice", "words"), /data is no object/);
    for (const name of ["card", "partner", "assistant", "record", "flag", "notice"]) {
        assert.ok(parse(eventOf(name, null)), name);
    }
});

test("Pictures must be pictures in the file itself", () => {
    for (const data of ["http://elsewhere.example/1.png", "data:text/html;base64,AA==", "data:image/svg+xml;base64,AA==", 3]) {
        refused(recording({ pictures: { "1.png?v=1": data } }), /pictures\.1\.png\?v=1 is no picture/);
    }
    refused(recording({ pictures: [] }), /pictures is no object/);
});

test("A recording asks for all pictures of which its timeline speaks, once each", () => {
    const shown = (picture, badge) => card({ products: [product({ picture, badge }), product({ picture: "", badge: undefined })] });
    const events = [
        { at: 1, name: "card", data: shown("1.png?v=1", "") },
        { at: 2, name: "card", data: shown("1.png?v=1", "12.png?v=2") },
        { at: 3, name: "images", data: [{ name: "9.gif", size: 1, version: "4-5" }] },
        { at: 4, name: "card", data: null },
    ];
    const names = picturesOf({ card: shown("0.png?v=0", ""), images: [] }, events);
    assert.deepEqual(names, ["0.png?v=0", "1.png?v=1", "12.png?v=2", "9.gif?v=4-5"]);
});
