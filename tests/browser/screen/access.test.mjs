// Accessibility by axe, and the layout from a telephone's width to a desk's, in every state that the page can have.
import assert from "node:assert/strict";
import { mkdtemp, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import path from "node:path";
import { after, before } from "node:test";

import { axe } from "../support/needed.mjs";
import { card as cardOf, message, product, settings } from "../support/states.mjs";
import { card, screen, until } from "../support/screen.mjs";
import { StandIn } from "../support/stand-in.mjs";

const Long = "Extraordinarily-long-single-word-product-name-without-any-place-to-break";
const received = [
    { number: 1, time: "2026-01-01T10:00:00.000Z", operation: "http://a/b/show_detailed_view", from: "x", extras: {}, outcome: "taken" },
    { number: 2, time: "2026-01-01T10:00:01.000Z", operation: "http://a/b/click_add_cart", from: "x", extras: {}, outcome: "no product's page is open" },
];
const bought = { merchant: "freshmart", variantRef: "FM-1001-1" };
const products = [
    product({ picture: "1.gif?v=1" }),
    product({ name: Long, variantRef: "2" }),
    product({ name: "With a picture", variantRef: "3", picture: "3.gif?v=1", badge: "4.gif?v=1", price: "1,234,567,890원" }),
];
const kinds = ["launch", "reply", "refusal", "voice"];
const messages = kinds.flatMap((kind, index) => [
    { ...message({ number: index * 2 + 1, kind, error: kind === "refusal" ? "NoReply" : "" }), at: 1767225600000 },
    { ...message({ number: index * 2 + 2, kind, from: "org.tizen.nuvex-da", extras: { list: ["a", ""], none: [] } }), at: 1767225601000 },
]);
const colours = Array.from({ length: 8 }, (_, n) => `\x1b[${30 + n}mink ${n}\x1b[0m \x1b[${90 + n}mbright\x1b[0m \x1b[4${n}mback\x1b[0m`);
const log = ["V", "D", "I", "W", "E", "F"].map((level) => ({ at: 1767225600000, line: `${level}/carvoy-service( 12): ${colours.join(" ")}` }));

const full = {
    card: cardOf({ products, troubles: ["~image-404=2"], term: "milk" }),
    partner: { page: "product", product: bought, cart: [{ product: bought, quantity: 2 }], messages: received },
    assistant: { turn: 1, sentence: "add it", action: "", nlu: [], fate: "failed", reason: "not understood", view: "open", messages: received },
    record: { isLoggedIn: 1, isLinked: 0, totalCount: 3, productCountInCart: null, currentViewType: null },
    flag: 1,
    images: [{ name: "1.gif", size: 43, version: "1" }],
    apps: { "org.tizen.carvoy": true, "org.tizen.carvoy-service": true },
    notice: { text: "A notice of the appliance's.", level: "error" },
    settings: settings(),
    messages,
    log,
};

const server = new StandIn(full);
["1.gif?v=1", "3.gif?v=1", "4.gif?v=1"].forEach((name) => server.pictures.add(name));
const { test } = screen(() => server.start());

let folder = "";
before(async () => (folder = await mkdtemp(path.join(tmpdir(), "access-"))));
after(() => rm(folder, { recursive: true, force: true }));

async function violations(page) {
    // Colours on their way are nobody's to read.
    await page.evaluate(() => Promise.all(document.getAnimations().filter((one) => one.effect.getComputedTiming().iterations === 1).map((one) => one.finished.catch(() => {}))));
    await page.evaluate(axe.source);
    const found = await page.evaluate(() => window.axe.run(document, { resultTypes: ["violations"] }));
    return found.violations
        .filter(({ impact }) => impact === "serious" || impact === "critical")
        .map(({ id, nodes }) => `${id}: ${nodes.slice(0, 4).map((node) => `${node.target} ${node.failureSummary}`).join("; ")}`);
}

const overflow = (page) => page.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);

async function check(page, what) {
    assert.deepEqual(await violations(page), [], what);
    assert.ok((await overflow(page)) <= 0, `${what}: the page is wider than its window`);
}

async function openTabs(page, each) {
    for (const name of ["Messages", "Log", "Records", "Pictures", /^Trouble/]) {
        await page.getByRole("tab", { name }).click();
        await each(String(name));
    }
    await page.getByRole("tab", { name: "Messages" }).click();
}

async function openDetails(page) {
    await page.locator("#messages > li:nth-child(2) > button").click();
    await page.locator("#messages .details").waitFor();
}

const looks = [
    ["light", { colorScheme: "light" }],
    ["dark", { colorScheme: "dark" }],
    ["light at 360 pixels", { colorScheme: "light", viewport: { width: 360, height: 740 } }],
    ["dark at 360 pixels", { colorScheme: "dark", viewport: { width: 360, height: 740 } }],
];

for (const [look, context] of looks) {
    test(`Nothing stands in anybody's way with all panels, in ${look}`, async (page) => {
        await card.pictured(page, 2);
        await openDetails(page);
        await openTabs(page, (name) => check(page, name));
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
            await check(page, JSON.stringify(changes));
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

test("The page is never wider than its window", async (page) => {
    await openDetails(page);
    for (const width of [320, 360, 768, 1099, 1100, 1280, 1920]) {
        await page.setViewportSize({ width, height: 900 });
        await openTabs(page, async (name) => assert.ok((await overflow(page)) <= 0, `${name} at ${width}`));
    }
});

test("From 1100 pixels on there are two columns, below one in the order of use", async (page) => {
    const box = (selector) => page.locator(selector).boundingBox();
    const [cardBox, hoodBox] = [await box("#card"), await box("#hood")];
    assert.ok(hoodBox.x >= cardBox.x + cardBox.width);
    await page.setViewportSize({ width: 768, height: 1024 });
    const tops = await Promise.all(["#card", "#speak", "#partner", "#hood"].map(async (id) => (await box(id)).y));
    assert.deepEqual([...tops].sort((a, b) => a - b), tops);
});

test("What can be pressed is at least 44 pixels high and wide", async (page) => {
    await openDetails(page);
    for (const width of [1280, 360]) {
        await page.setViewportSize({ width, height: 900 });
        await openTabs(page, async (name) => {
            const small = await page.evaluate(() => {
                const all = [...document.querySelectorAll("button, select, input:not([type=file])")];
                const visible = all.filter((place) => place.getClientRects().length > 0);
                return visible
                    .map((place) => ({ place, box: (place.closest("label") ?? (place.matches(".choose") ? place.closest(".tile") : place)).getBoundingClientRect() }))
                    .filter(({ box }) => box.height < 43.9 || box.width < 43.9)
                    .map(({ place, box }) => `${place.outerHTML.slice(0, 80)} ${box.width} x ${box.height}`);
            });
            assert.deepEqual(small, [], `${name} at ${width}`);
        });
    }
});

test("There are landmarks, one heading of the first level, and live regions that are few", async (page) => {
    await page.getByRole("main").waitFor();
    await page.getByRole("banner").waitFor();
    await page.getByRole("complementary", { name: "Under the hood" }).waitFor();
    await page.getByRole("search", { name: "Products" }).waitFor();
    assert.equal(await page.locator("h1").count(), 1);
    const live = await page.locator("[role=status], [role=alert], [role=log], [aria-live]").evaluateAll((all) => all.map((place) => place.id || place.firstElementChild?.id));
    assert.deepEqual(live.sort(), ["announcer", "notice-words", "playback-title", "stale", "told-words"]);
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
