// From events to a state, and back and forth in a recording.
import assert from "node:assert/strict";
import { test } from "node:test";

import { apply, applyAll, complete, emptyState } from "../../../appliance/screen/page/state/reducer.js";
import { Player } from "../../../appliance/screen/page/state/player.js";
import { Timeline } from "../../../appliance/screen/page/state/timeline.js";

const kept = { messages: 3, log: 2 };
const log = (at, line) => ({ at, name: "log", data: { line } });
const message = (at, number) => ({ at, name: "message", data: { number } });

test("A state is replaced by the event of its name, and nothing else is touched", () => {
    const before = complete({ card: { sequence: 1 }, flag: 0 });
    const after = apply(before, { at: 5, name: "flag", data: 1 });
    assert.equal(after.flag, 1);
    assert.equal(before.flag, 0);
    assert.equal(after.card, before.card);
    assert.equal(after.messages, before.messages);
});

test("What a base does not know yet counts as empty", () => {
    const nothing = { apps: null, card: null, flag: null, images: null, messages: [], log: [] };
    assert.deepEqual(complete(nothing), emptyState());
    assert.equal(complete({ flag: 0 }).flag, 0);
});

test("Messages and lines are appended with their time, and the oldest go", () => {
    const events = [1, 2, 3, 4].flatMap((at) => [message(at, at * 10), log(at, `line ${at}`)]);
    const state = applyAll(emptyState(), events, kept);
    assert.deepEqual(state.messages, [
        { number: 20, at: 2 },
        { number: 30, at: 3 },
        { number: 40, at: 4 },
    ]);
    assert.deepEqual(state.log, [
        { line: "line 3", at: 3 },
        { line: "line 4", at: 4 },
    ]);
});

test("No event replaces a whole list, and a name of the language's own does no harm", () => {
    const before = applyAll(emptyState(), [log(1, "kept")], kept);
    assert.equal(apply(before, { at: 2, name: "messages", data: [] }, kept), before);
    const after = apply(before, { at: 2, name: "__proto__", data: { polluted: true } }, kept);
    assert.equal(after.polluted, undefined);
    assert.equal({}.polluted, undefined);
    assert.equal(apply(before, { at: 3, name: "constructor", data: 1 }, kept).log, before.log);
});

test("A timeline gives the same state at once and step by step", () => {
    const events = Array.from({ length: 9 }, (_, at) => (at % 2 ? log(at, `${at}`) : message(at, at)));
    const data = { run: "1", kept, base: { flag: 1 } };
    const atOnce = new Timeline();
    atOnce.begin({ ...data, events });
    const byStep = new Timeline();
    byStep.begin({ ...data, events: [] });
    events.forEach((event) => byStep.add(event));
    assert.deepEqual(byStep.now, atOnce.now);
    assert.deepEqual(applyAll(byStep.base, byStep.events, kept), atOnce.now);
});

test("A timeline that grows long folds its beginning into the base, and the state stays", () => {
    const timeline = new Timeline();
    timeline.begin({ run: "1", kept, base: {}, events: [] });
    for (let at = 0; at <= 5000; ++at) {
        timeline.add(log(at, `${at}`));
    }
    assert.equal(timeline.events.length, 4001);
    assert.deepEqual(applyAll(timeline.base, timeline.events, kept), timeline.now);
    assert.equal(timeline.now.log.at(-1).line, "5000");
});

test("A new timeline forgets the one before", () => {
    const timeline = new Timeline();
    timeline.begin({ run: "1", kept, base: { flag: 1 }, events: [log(1, "old")] });
    timeline.begin({ run: "2", kept, base: {}, events: [] });
    assert.deepEqual(timeline.now, emptyState());
});

test("A recording shows at each place what its events up to there give, whatever was looked at before", () => {
    const events = Array.from({ length: 173 }, (_, at) => (at % 3 ? log(at, `${at}`) : message(at, at)));
    const player = new Player({ base: {}, events, kept });
    for (const place of [173, 0, 50, 49, 51, 172, 100, 1]) {
        player.seek(place);
        assert.deepEqual(player.state, applyAll(emptyState(), events.slice(0, place), kept), `place ${place}`);
    }
});

test("A place outside of a recording is its nearest end", () => {
    const player = new Player({ base: {}, events: [log(7, "a"), log(9, "b")], kept });
    player.seek(99);
    assert.deepEqual([player.position, player.event], [2, log(9, "b")]);
    player.seek(-1);
    assert.deepEqual([player.position, player.event], [0, undefined]);
    player.seek(Number.NaN);
    assert.equal(player.position, 0);
});

test("The entry of an event is the same object each time, so that its row can stay", () => {
    const events = [log(1, "a"), log(2, "b")];
    const player = new Player({ base: {}, events, kept });
    player.seek(2);
    const first = player.state.log[0];
    player.seek(1);
    assert.equal(player.state.log[0], first);
});
