// The page's side of the event stream, and its commands, with clocks and servers of the test's own.
import assert from "node:assert/strict";
import { afterEach, beforeEach, test } from "node:test";

import { createCommands, NotSent } from "../../../appliance/screen/page/net/commands.js";
import { Pauses, Stream } from "../../../appliance/screen/page/net/stream.js";

const real = { setTimeout, clearTimeout, EventSource: globalThis.EventSource, fetch: globalThis.fetch };
let now = 0;
let timers = new Map();
let sources = [];

class Source extends EventTarget {
    constructor() {
        super();
        sources.push(this);
    }

    close() {
        this.isClosed = true;
    }

    send(name, data) {
        this.dispatchEvent(new MessageEvent(name, { data: JSON.stringify(data) }));
    }
}

beforeEach(() => {
    [now, timers, sources] = [0, new Map(), []];
    let last = 0;
    globalThis.EventSource = Source;
    globalThis.setTimeout = (run, after) => {
        last += 1;
        timers.set(last, { run, due: now + after });
        return last;
    };
    globalThis.clearTimeout = (timer) => timers.delete(timer);
});

afterEach(() => Object.assign(globalThis, real));

function pass(time) {
    const end = now + time;
    for (;;) {
        const next = [...timers].filter(([, { due }]) => due <= end).sort(([, one], [, other]) => one.due - other.due)[0];
        if (!next) {
            break;
        }
        timers.delete(next[0]);
        now = next[1].due;
        next[1].run();
    }
    now = end;
}

function started() {
    const heard = [];
    const note = (what) => (data) => heard.push([what, data]);
    const stream = new Stream({ timeline: note("timeline"), step: note("step"), connection: note("connection") });
    stream.start();
    return { stream, heard };
}

const timeline = { beat: 100, events: [] };

test("A stream that breaks off after each beginning is taken up after growing pauses", () => {
    started();
    for (const [index, pause] of [...Pauses, Pauses.at(-1)].entries()) {
        assert.equal(sources.length, index + 1);
        sources.at(-1).send("timeline", timeline);
        sources.at(-1).dispatchEvent(new Event("error"));
        pass(pause - 1);
        assert.equal(sources.length, index + 1);
        pass(1);
    }
    assert.equal(sources.length, Pauses.length + 2);
});

test("After some beats of health the pauses begin anew", () => {
    started();
    sources[0].dispatchEvent(new Event("error"));
    pass(Pauses[0]);
    sources[1].send("timeline", timeline);
    for (let beats = 0; beats < 4; ++beats) {
        pass(100);
        sources[1].send("beat", {});
    }
    sources[1].dispatchEvent(new Event("error"));
    pass(Pauses[0]);
    assert.equal(sources.length, 3);
});

test("Three beats without a word are quiet, and what comes before a timeline is nothing", () => {
    const { heard } = started();
    sources[0].send("step", { name: "flag" });
    sources[0].send("timeline", timeline);
    pass(299);
    assert.deepEqual(heard.map(([what, data]) => (what === "connection" ? data : what)), ["timeline", "live"]);
    pass(1);
    assert.deepEqual(heard.at(-1), ["connection", "quiet"]);
    assert.equal(sources[0].isClosed, true);
});

test("A stream that was stopped stays so until it is started", () => {
    const { stream, heard } = started();
    sources[0].dispatchEvent(new Event("error"));
    stream.stop();
    pass(60000);
    assert.equal(sources.length, 1);
    stream.start();
    sources[1].send("timeline", timeline);
    assert.deepEqual(heard.at(-1), ["connection", "live"]);
    stream.stop();
    assert.equal(sources[1].isClosed, true);
    pass(60000);
    assert.equal(sources.length, 2);
});

test("Commands are sent one after the other, and one that fails holds up none", async () => {
    const open = [];
    globalThis.fetch = (path, { body }) => new Promise((resolve, reject) => open.push({ ...JSON.parse(body), resolve, reject }));
    const told = [];
    const commands = createCommands(() => "", (words) => told.push(words));
    const settled = () => new Promise((resolve) => setImmediate(resolve));
    const results = [commands.turn("a", true), commands.turn("a", false), commands.say("b")];
    await settled();
    assert.deepEqual(open.map(({ on }) => on), [true]);
    open[0].reject(new Error("gone"));
    await settled();
    assert.deepEqual(open.map(({ on }) => on), [true, false]);
    open[1].resolve({ ok: true });
    await settled();
    open[2].resolve({ ok: true });
    assert.deepEqual(await Promise.all(results), [false, true, true]);
    assert.equal(told.at(-1), NotSent);
});
