// Accessibility in every state that the page can have, by axe and by what axe does not know.
import assert from "node:assert/strict";
import { mkdtemp, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import path from "node:path";
import { after, before } from "node:test";

import { axe } from "../support/needed.mjs";
import { full, Long, pictures } from "../support/full-state.mjs";
import { card, openDetails, openTabs, overflow, screen, until } from "../support/screen.mjs";
import { StandIn } from "../support/stand-in.mjs";
import { card as cardOf } from "../support/states.mjs";

const server = new StandIn(full);
pictures.forEach((name) => server.pictures.add(name));
const { test } = screen(() => server.start());

let folder = "";
before(async () => (folder = await mkdtemp(path.join(tmpdir(), "access-"))));
after(() => rm(folder, { recursive: true, force: true }));

async function violations(page, part) {
    // Colours on their way are nobody's to read.
    await page.evaluate(() => Promise.all(document.getAnimations().filter((one) => one.effect.getComputedTiming().iterations === 1).map((one) => one.finished.catch(() => {}))));
    await page.evaluate(`window.axe || (() => { ${axe.source} })()`);
    const found = await page.evaluate((where) => window.axe.run(where, { resultTypes: ["violations"] }), part);
    return found.violations
        .filter(({ impact }) => impact === "serious" || impact === "critical")
        .map(({ id, nodes }) => `${id}: ${nodes.slice(0, 4).map((node) => `${node.target} ${node.failureSummary}`).join("; ")}`);
}

async function check(page, what, part = "html") {
    assert.deepEqual(await violations(page, part), [], what);
    assert.ok((await overflow(page)) <= 0, `${what}: the page is wider than its window`);
}

const looks = [
    ["light", { colorScheme: "light" }],
    ["dark", { colorScheme: "dark" }],
    ["light at 360 pixels", { colorScheme: "light", viewport: { width: 360, height: 740 } }],
];

for (const [look, context] of looks) {
    test(`Nothing stands in anybody's way with all panels, in ${look}`, async (page) => {
        await card.pictured(page, 2);
        await openDetails(page);
        await check(page, "all");
        await openTabs(page, (name) => check(page, name, "#hood"));
    }, { context });

    test(`Nothing stands in anybody's way in the states of the card, in ${look}`, async (page) => {
        const states = [
            { state: "searching", outcome: "", products: [] },
            { outcome: "nothing", products: [] },
            { outcome: "failed", products: [], reasons: ["Not logged in", Long.repeat(3)] },
            { state: "empty", outcome: "", products: [] },
        ];
        for (const changes of states) {
            server.step("card", cardOf(changes));
            await card.in(page, changes.outcome || changes.state);
            await check(page, JSON.stringify(changes), "main");
        }
        server.step("card", full.card);
        await card.in(page, "found");
    }, { context });
}

test("Nothing stands in anybody's way in a recording", async (page) => {
    const kept = { messages: 300, log: 1000 };
    const events = [{ at: 1767225602000, name: "flag", data: 0 }];
    const recording = { format: "carvoy-screen-recording", version: 1, saved: "2026-01-01T00:00:00Z", kept, base: full, events, pictures: {} };
    const file = path.join(folder, "recording.json");
    await writeFile(file, JSON.stringify(recording));
    for (const [width, colorScheme] of [[1280, "light"], [360, "dark"]]) {
        await page.setViewportSize({ width, height: 800 });
        await page.emulateMedia({ colorScheme });
        await page.locator("#open-file").setInputFiles(file);
        await page.locator("#playback").waitFor();
        await check(page, `${width}`);
    }
});

test("A telephone's width hides the page's heading only from those who see it", async (page) => {
    await page.getByRole("heading", { level: 1, name: "Appliance screen" }).waitFor();
}, { context: { viewport: { width: 360, height: 740 } } });

test("There are landmarks, one heading of the first level, and live regions that are few", async (page) => {
    await page.getByRole("main").waitFor();
    await page.getByRole("banner").waitFor();
    await page.getByRole("complementary", { name: "Under the hood" }).waitFor();
    await page.getByRole("search", { name: "Products" }).waitFor();
    assert.equal(await page.locator("h1").count(), 1);
    const live = await page.locator("[role=status], [role=alert], [role=log], [aria-live]").evaluateAll((all) => all.map((place) => place.id || place.firstElementChild?.id));
    assert.deepEqual(live.sort(), ["announcer", "notice-words", "stale", "told-words"]);
    // Messages and lines come in bursts, and are nothing to read out.
    for (const list of ["#messages", "#log", "#products"]) {
        assert.equal(await page.locator(`[aria-live] ${list}, [role=log] ${list}, [role=status] ${list}`).count(), 0);
    }
});

test("Who wants less motion gets none", async (page) => {
    server.step("card", cardOf({ state: "searching", outcome: "", products: [] }));
    await card.in(page, "searching");
    await until(page, () => document.getAnimations().length === 0);
    server.step("card", full.card);
}, { context: { reducedMotion: "reduce" } });
