// The pictures that the page keeps: how much of them, and which go first.
import assert from "node:assert/strict";
import { afterEach, beforeEach, test } from "node:test";

import { Pictures } from "../../../appliance/screen/page/net/pictures.js";

const Size = 100;
const real = { fetch: globalThis.fetch, FileReader: globalThis.FileReader, create: URL.createObjectURL, revoke: URL.revokeObjectURL };
let asked = [];
let revoked = [];
let gone = new Set();

// As much of the browser's as is needed to read a file.
class Reader extends EventTarget {
    async readAsDataURL(blob) {
        const bytes = Buffer.from(await blob.arrayBuffer());
        this.result = `data:${blob.type};base64,${bytes.toString("base64")}`;
        this.dispatchEvent(new Event("load"));
    }
}

beforeEach(() => {
    [asked, revoked, gone] = [[], [], new Set()];
    let number = 0;
    globalThis.fetch = async (address) => {
        const name = address.slice("/pictures/".length);
        asked.push(name);
        return { ok: !gone.has(name), blob: async () => new Blob([new Uint8Array(Size)], { type: "image/png" }) };
    };
    globalThis.FileReader = Reader;
    URL.createObjectURL = () => `blob:${(number += 1)}`;
    URL.revokeObjectURL = (address) => revoked.push(address);
});

afterEach(() => {
    globalThis.fetch = real.fetch;
    globalThis.FileReader = real.FileReader;
    URL.createObjectURL = real.create;
    URL.revokeObjectURL = real.revoke;
});

async function show(pictures, ...names) {
    const addresses = [];
    for (const name of names) {
        addresses.push(await pictures.addressOf(name));
    }
    return addresses;
}

test("A file is asked for once, however often and however soon again it is shown", async () => {
    const pictures = new Pictures();
    const [first, second] = await Promise.all([pictures.addressOf("a"), pictures.addressOf("a")]);
    assert.equal(first, second);
    assert.deepEqual(await show(pictures, "a"), [first]);
    assert.deepEqual(asked, ["a"]);
});

test("What was not there is asked for again", async () => {
    const pictures = new Pictures();
    gone.add("a");
    assert.deepEqual(await show(pictures, "a"), [""]);
    gone.delete("a");
    assert.deepEqual(await show(pictures, "a"), ["blob:1"]);
});

test("Where there is no room only the oldest go, and the rest stays", async () => {
    const pictures = new Pictures(() => [], 3 * Size);
    await show(pictures, "a", "b", "c", "a", "d");
    assert.deepEqual(revoked, ["blob:2"], "b, since a was shown after it");
    await show(pictures, "a", "c", "d");
    assert.deepEqual(asked, ["a", "b", "c", "d"]);
    await show(pictures, "e", "f");
    assert.deepEqual(revoked, ["blob:2", "blob:1", "blob:3"]);
    await show(pictures, "d", "e", "f");
    assert.deepEqual(asked, ["a", "b", "c", "d", "e", "f"]);
});

test("What is looked at and what has just come stay, even if there is too much of it", async () => {
    const pictures = new Pictures(() => ["a", "b"], Size);
    await show(pictures, "a", "b", "c");
    assert.deepEqual(revoked, []);
    await show(pictures, "d");
    assert.deepEqual(revoked, ["blob:3"]);
});

test("For a recording only the files are asked for that are there now", async () => {
    const pictures = new Pictures();
    await show(pictures, "a");
    gone.add("d");
    const { data, left } = await pictures.asData(["a", "b", "c", "d"], ["c", "d"]);
    assert.deepEqual(asked, ["a", "d", "c"]);
    assert.deepEqual(Object.keys(data).sort(), ["a", "c"]);
    assert.match(data.c, /^data:image\/png;base64,AAAA/);
    assert.equal(left, 0);
});

test("Where a recording has no room the oldest pictures are left out, and counted", async () => {
    const pictures = new Pictures();
    await show(pictures, "a", "b", "c");
    const { data, left } = await pictures.asData(["a", "b", "c"], [], 2 * 170);
    assert.deepEqual(Object.keys(data).sort(), ["b", "c"]);
    assert.equal(left, 1);
});
