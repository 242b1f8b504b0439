// A page in a real browser, and what holds for every one: no errors on its console, no request to another host.
import assert from "node:assert/strict";
import { mkdtemp, rm } from "node:fs/promises";
import { tmpdir } from "node:os";
import path from "node:path";
import { after, before, test } from "node:test";

import { Chromium, playwright } from "./needed.mjs";

// In milliseconds; for a slow machine, or for somebody who writes a test.
export const Limit = Number(process.env.CARVOY_BROWSER_LIMIT) || 60000;

const Options = [
    "--disable-gpu",
    "--disable-quic",
    "--no-first-run",
    "--disable-background-networking",
    "--disable-component-update",
    "--disable-sync",
];

// A picture's file may be gone by the time that it is asked for.
function isOfPictures(message) {
    return /404/.test(message.text()) && /\/pictures\//.test(message.location().url);
}

function watch(page, address) {
    const found = [];
    page.on("pageerror", (error) => found.push(`page error: ${error.stack ?? error}`));
    page.on("console", (message) => {
        if (["error", "warning"].includes(message.type()) && !isOfPictures(message)) {
            found.push(`console: ${message.text()} (${message.location().url})`);
        }
    });
    page.on("request", (request) => {
        const url = request.url();
        if (!url.startsWith(address) && !url.startsWith("data:") && !url.startsWith(`blob:${address}`)) {
            found.push(`a request to ${url}`);
        }
    });
    return found;
}

/**
 * One browser for a file's tests. `start` returns what serves the page: it has an `address` and can `end`.
 *
 * The result's `test(name, run, options)` runs `run(page, server)` with a fresh page that has shown its first state.
 * `options.expected` is what may be on the console in this test alone, `options.context` goes to the browser.
 */
export function screen(start) {
    const world = {};
    before(async () => {
        world.folder = await mkdtemp(path.join(tmpdir(), "browser-"));
        const args = process.getuid() === 0 ? [...Options, "--no-sandbox"] : Options;
        world.browser = await playwright.chromium.launch({ executablePath: Chromium, args, artifactsDir: world.folder });
        world.server = await start();
    });
    after(async () => {
        await world.browser?.close();
        await rm(world.folder, { recursive: true, force: true });
        await world.server?.end();
    });

    async function open(options = {}) {
        const context = await world.browser.newContext({ viewport: { width: 1280, height: 900 }, ...options.context });
        context.setDefaultTimeout(Limit);
        const page = await context.newPage();
        const found = watch(page, world.server.address);
        await page.goto(world.server.address);
        await page.locator("#connection[data-connection=live]").waitFor();
        return { page, context, found };
    }

    function screenTest(name, run, options = {}) {
        test(name, async () => {
            const { page, context, found } = await open(options);
            try {
                await run(page, world.server, { open });
            } finally {
                await context.close();
            }
            const unexpected = found.filter((what) => !options.expected?.test(what));
            assert.deepEqual(unexpected, []);
        });
    }
    return { test: screenTest };
}

/** Waits until `look`, run in the page, returns something true. */
export async function until(page, look, argument) {
    await page.waitForFunction(look, argument, { timeout: Limit });
}

export const card = {
    tiles: (page) => page.locator("#products > .tile"),

    async in(page, state) {
        await page.locator(`#card-body[data-state=${state}]`).waitFor();
    },

    /** At a merchant, or with "" at the retailer. The card is that of this search then, or of a later one. */
    async search(page, term, merchant = "freshmart") {
        const before = await page.locator("#card-body").getAttribute("data-sequence");
        await page.getByRole("radio", { name: merchant ? "Merchant" : "Retailer" }).check();
        if (merchant) {
            await page.getByRole("combobox", { name: "Merchant" }).selectOption(merchant);
        }
        await page.getByRole("searchbox", { name: "What to search for" }).fill(term);
        await page.getByRole("button", { name: "Search", exact: true }).click();
        await until(page, (old) => Number(document.getElementById("card-body").dataset.sequence) > Number(old), before);
        await page.locator("#card-term", { hasText: `“${term}”` }).waitFor();
    },

    /** Each product's picture has been drawn. */
    async pictured(page, count) {
        await until(
            page,
            (wanted) => document.querySelectorAll("#products > .tile .picture[data-picture=shown]").length === wanted,
            count,
        );
    },
};

export async function turn(page, id, on = true) {
    await page.getByRole("tab", { name: /^Trouble/ }).click();
    const button = page.locator(`[data-switch="${id}"] [role=switch]`);
    if ((await button.getAttribute("aria-checked")) !== String(on)) {
        await button.click();
    }
    await page.locator(`[data-switch="${id}"] [role=switch][aria-checked=${on}]`).waitFor();
}

export async function confirm(page, mode) {
    await page.getByRole("tab", { name: /^Trouble/ }).click();
    await page.locator(`input[name=confirm][value=${mode}]`).check();
    await page.locator(`#confirm[data-mode=${mode}]`).waitFor();
}

/** How many pixels the page is wider than its window. */
export const overflow = (page) => page.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);

export async function openTabs(page, each) {
    for (const name of ["Messages", "Log", "Records", "Pictures", /^Trouble/]) {
        await page.getByRole("tab", { name }).click();
        await each(String(name));
    }
    await page.getByRole("tab", { name: "Messages" }).click();
}

export async function openDetails(page) {
    await page.locator("#messages > li:nth-child(2) > button").click();
    await page.locator("#messages .details").waitFor();
}

/** Opens a recording that a test has made up, of which only these members matter. */
export async function openRecording(page, changes) {
    const recording = {
        format: "carvoy-screen-recording",
        version: 1,
        saved: "2026-01-01T00:00:00Z",
        kept: { messages: 300, log: 1000 },
        base: {},
        events: [],
        pictures: {},
        ...changes,
    };
    const buffer = Buffer.from(JSON.stringify(recording));
    await page.locator("#open-file").setInputFiles({ name: "made-up.json", mimeType: "application/json", buffer });
}
