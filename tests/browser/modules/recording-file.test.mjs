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
    refused(recording({ kept: {} }), /kept\.messages is no whole number/);
    for (const odd of [1e9, 1.5, -1, 1001, "300"]) {
        refused(recording({ kept: { messages: odd, log: 1000 } }), /kept\.messages is no whole number from 1 to 1000/);
    }
    refused(recording({ kept: { messages: 300, log: 5001 } }), /kept\.log is no whole number from 1 to 5000/);
    refused(recording({ base: [] }), /base is no object/);
    refused(recording({ base: { card: 3 } }), /base\.card is no object/);
    refused(recording({ base: { messages: {} } }), /base\.messages is no list/);
    refused(recording({ base: { messages: [message({ number: 1 })] } }), /base\.messages\[0\]\.at is no number/);
    refused(recording({ base: { images: [{ name: "a", size: "1", version: "" }] } }), /base\.images\[0\]\.size/);
    refused(recording({ events: {} }), /events is no list/);
    refused(recording({ events: [{ at: 1, name: "flag", data: 1 }, {}] }), /events\[1\]\.at is no number/);
    refused(recording({ events: [{ at: 1, name: "novelty" }] }), /events\[0\]\.data is missing/);
});

test("More than a page can draw is refused, and so are times that no calendar has", () => {
    const many = (number, item) => Array.from({ length: number }, () => item);
    const line = { line: "I/x(1): y", at: 1 };
    const eventOf = (name, data) => ({ events: [{ at: 1, name, data }] });
    const cart = many(501, { product: { merchant: "a", variantRef: "b" }, quantity: 1 });
    const partner = { page: "cart", product: { merchant: "", variantRef: "" }, cart, messages: [] };
    const cases = [
        { base: { log: many(5001, line) } },
        { base: { messages: many(1001, { ...message(), at: 1 }) } },
        { events: many(5001, { at: 1, name: "flag", data: 1 }) },
        { base: { images: many(501, { name: "a", size: 1, version: "" }) } },
        eventOf("partner", partner),
        eventOf("card", card({ reasons: many(101, "a") })),
        eventOf("settings", { confirm: "now", delay: 1, merchants: many(101, "a"), switches: [] }),
        eventOf("settings", { confirm: "now", delay: 1, merchants: [], switches: many(101, {}) }),
        eventOf("record", Object.fromEntries(many(101, 1).map((one, index) => [`field${index}`, one]))),
        eventOf("message", message({ extras: Object.fromEntries(many(1001, "").map((one, index) => [`key${index}`, one])) })),
    ];
    cases.forEach((changes) => refused(recording(changes), /has more than \d+ entries/));
    for (const at of [-1, 1e300]) {
        refused(recording({ events: [{ at, name: "flag", data: 1 }] }), /events\[0\]\.at is no time/);
        refused(recording({ base: { log: [{ ...line, at }] } }), /base\.log\[0\]\.at is no time/);
    }
});

test("Of what a recording begins with no more is taken than is kept", () => {
    const log = Array.from({ length: 20 }, (_, index) => ({ line: `line ${index}`, at: index }));
    const { base } = parse(recording({ base: someState({ log }), kept: { messages: 1, log: 3 } }));
    assert.deepEqual(base.log, log.slice(-3));
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
