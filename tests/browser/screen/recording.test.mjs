// A recording is saved, opened where nothing else is known, and stepped through; what is none is refused.
import assert from "node:assert/strict";
import { mkdtemp, readFile, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import path from "node:path";
import { after, before } from "node:test";

import { Appliance } from "../support/appliance.mjs";
import { card, screen, until } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

let folder = "";
before(async () => (folder = await mkdtemp(path.join(tmpdir(), "recording-"))));
after(() => rm(folder, { recursive: true, force: true }));

const file = () => path.join(folder, "saved.json");

async function open(page, name) {
    await page.locator("#open-file").setInputFiles(name);
}

const slide = (page, place) => page.getByRole("slider", { name: "Event" }).fill(String(place));

test("What has happened is saved with its pictures", async (page) => {
    await card.search(page, "milk");
    await card.in(page, "found");
    await card.pictured(page, 6);
    await page.getByRole("button", { name: "Choose Skim Milk" }).click();
    await page.locator("#partner-title", { hasText: "Skim Milk" }).waitFor();
    await page.locator("#assistant-view", { hasText: "View closed" }).waitFor();
    const [download] = await Promise.all([
        page.waitForEvent("download"),
        page.getByRole("button", { name: "Save recording" }).click(),
    ]);
    assert.match(download.suggestedFilename(), /^screen-[\d-]+\.json$/);
    await download.saveAs(file());
    const recording = JSON.parse(await readFile(file(), "utf8"));
    assert.equal(recording.format, "carvoy-screen-recording");
    assert.equal(recording.version, 1);
    const newest = recording.events.findLast((event) => event.name === "card").data;
    assert.equal(newest.products.length, 6);
    for (const { picture } of newest.products) {
        assert.match(recording.pictures[picture], /^data:image\/(png|jpeg|gif);base64,/);
    }
    // The page goes on, so that a recording is not simply what is there.
    await card.search(page, "zzqq");
    await card.in(page, "nothing");
});

test("A recording opens in a fresh page, which asks the appliance for nothing of it", async (page) => {
    await card.in(page, "nothing");
    const asked = [];
    page.on("request", (request) => request.url().startsWith("http") && asked.push(request.url()));
    await open(page, file());
    await page.getByRole("region", { name: "Recording" }).getByText("Recording of 2").waitFor();
    await page.locator("#connection", { hasText: "Recording" }).waitFor();
    const slider = page.getByRole("slider", { name: "Event" });
    assert.equal(await slider.inputValue(), "0");
    await slide(page, await slider.getAttribute("max"));
    await card.in(page, "found");
    await card.pictured(page, 6);
    await page.locator("#partner-title", { hasText: "Skim Milk" }).waitFor();
    const sources = await page.locator("#products .picture img").evaluateAll((all) => all.map((image) => image.src));
    assert.ok(sources.every((source) => source.startsWith("data:image/")));
    assert.deepEqual(asked, []);
});

test("The way through a recording goes by slider, by steps and by itself, and back to live", async (page) => {
    await open(page, file());
    const slider = page.getByRole("slider", { name: "Event" });
    await slider.waitFor();
    const last = Number(await slider.getAttribute("max"));
    const recording = JSON.parse(await readFile(file(), "utf8"));
    const searching = recording.events.findIndex(({ name, data }) => name === "card" && data.state === "searching") + 1;

    await slide(page, searching);
    await card.in(page, "searching");
    await page.getByRole("button", { name: "One event back" }).click();
    await card.in(page, "empty");
    await page.getByRole("button", { name: "One event on" }).click();
    await card.in(page, "searching");

    await page.getByRole("button", { name: "Play" }).click();
    await page.getByRole("button", { name: "Pause" }).waitFor();
    await until(page, (from) => Number(document.getElementById("playback-slider").value) > from, searching);
    await page.getByRole("button", { name: "Pause" }).click();
    const paused = Number(await slider.inputValue());
    assert.ok(paused > searching && paused <= last);
    await slide(page, last - 2);
    await page.getByRole("button", { name: "Play" }).click();
    await until(page, (end) => Number(document.getElementById("playback-slider").value) === end, last);
    await page.getByRole("button", { name: "Play" }).waitFor();

    await page.getByRole("button", { name: "Check out" }).click();
    await page.getByRole("alert").filter({ hasText: "this is a recording" }).waitFor();
    await page.getByRole("button", { name: "Back to live" }).click();
    await card.in(page, "nothing");
    assert.equal(await page.locator("#playback").isVisible(), false);
    await page.locator("#connection", { hasText: "Live" }).waitFor();
});

test("What is no recording is refused with its reason, and what was shown stays", async (page) => {
    const good = await readFile(file(), "utf8");
    const broken = {
        "half.json": [good.slice(0, good.length / 2), /“half\.json” cannot be shown: it is not JSON/],
        "other.json": ['{"a": 1}', /something else than a recording/],
        "newer.json": [JSON.stringify({ ...JSON.parse(good), version: 7 }), /version 7, and this page reads 1/],
        "bent.json": [JSON.stringify({ ...JSON.parse(good), events: [{ at: 1, name: "card", data: 5 }] }), /events\[0\]\.data is no object/],
    };
    for (const [name, [content, reason]] of Object.entries(broken)) {
        await writeFile(path.join(folder, name), content);
        await open(page, path.join(folder, name));
        await page.getByRole("alert").filter({ hasText: reason }).waitFor();
        await card.in(page, "nothing");
        assert.equal(await page.locator("#playback").isVisible(), false);
    }
    await open(page, file());
    await page.locator("#playback").waitFor();
    assert.equal(await page.locator("#told").isVisible(), false);
});
