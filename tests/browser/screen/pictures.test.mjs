// Pictures that are held back, come one by one, come slowly, or do not come.
import assert from "node:assert/strict";

import { Appliance } from "../support/appliance.mjs";
import { card, confirm, screen, turn, until } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

// Notes from now on what the next card shows first: its list, the confirmation in the diagram, and each picture.
async function observe(page) {
    await page.evaluate(() => {
        const { dataset } = document.getElementById("card-body");
        const old = dataset.sequence;
        const oldReplies = document.querySelectorAll("#messages > [data-kind=reply]").length;
        window.seen = [];
        window.lastBefore = Math.max(0, ...[...document.querySelectorAll("#messages > li")].map((row) => Number(row.dataset.number)));
        const note = (what) => window.seen.includes(what) || window.seen.push(what);
        const look = () => {
            if (dataset.sequence === old) {
                return;
            }
            const tiles = [...document.querySelectorAll("#products > .tile")];
            if (tiles.length > 0) {
                note("list");
            }
            const replies = document.querySelectorAll("#messages > [data-kind=reply]").length;
            if (replies > oldReplies) {
                note("confirmation");
            }
            tiles.forEach((tile, index) => {
                const { picture } = tile.querySelector(".picture").dataset;
                if (picture === "coming" || picture === "shown") {
                    note(`picture ${index + 1}`);
                }
            });
        };
        const options = { subtree: true, childList: true, attributes: true, attributeFilter: ["data-picture", "data-sequence"] };
        new MutationObserver(look).observe(document.getElementById("stage"), options);
    });
}

const seen = (page) => page.evaluate(() => window.seen);
const All = [1, 2, 3, 4, 5, 6].map((number) => `picture ${number}`);

test("Until a late confirmation there are places for the pictures, which then come in the products' order", async (page) => {
    await confirm(page, "late");
    await observe(page);
    await card.search(page, "milk");
    await until(page, () => document.querySelectorAll("#products .picture[data-picture=awaited]").length === 6);
    await card.pictured(page, 6);
    assert.deepEqual(await seen(page), ["list", "confirmation", ...All]);
    await confirm(page, "now");
});

test("Without a confirmation the list is there, and no picture comes", async (page) => {
    await confirm(page, "never");
    await observe(page);
    await card.search(page, "milk");
    await card.in(page, "found");
    // What is said later has a later number: once it is in the diagram, a picture of the search would be, too.
    await page.getByRole("textbox", { name: "A sentence" }).fill("show my cart");
    await page.getByRole("button", { name: "Say" }).click();
    await page.locator("#partner-page[data-page=cart]").waitFor();
    assert.deepEqual((await seen(page)).filter((what) => what !== "confirmation"), ["list"]);
    assert.equal(await page.locator("#products .picture[data-picture=awaited]").count(), 6);
    const since = await page.locator("#messages > li").evaluateAll((all) =>
        all
            .filter((row) => Number(row.dataset.number) > window.lastBefore)
            .map((row) => `${row.dataset.kind} ${row.querySelector(".operation").textContent}`),
    );
    assert.ok(since.includes("launch result"), `${since}`);
    assert.equal(since.includes("reply result"), false, `${since}`);
    assert.equal(since.includes("launch product_image"), false, `${since}`);
    await confirm(page, "now");
});

test("A refused list is shown, and gets no pictures", async (page) => {
    await confirm(page, "fail");
    await card.search(page, "bread");
    await card.in(page, "found");
    await page.locator("#messages > [data-kind=reply]", { hasText: "failed" }).first().waitFor({ state: "attached" });
    const count = await card.tiles(page).count();
    assert.equal(await page.locator("#products .picture[data-picture=awaited]").count(), count);
    await confirm(page, "now");
});

test("Slow pictures leave their places empty until they come", async (page) => {
    await turn(page, "slow-pictures");
    await card.search(page, "milk");
    await until(page, () => document.querySelectorAll("#products .picture[data-picture=awaited]").length === 6);
    await until(page, () => document.querySelector("#products .picture[data-picture=shown]"));
    await turn(page, "slow-pictures", false);
    await card.search(page, "eggs");
    await card.in(page, "found");
    const count = await card.tiles(page).count();
    await card.pictured(page, count);
});

test("A missing picture says so, and the others come", async (page) => {
    await turn(page, "missing-picture");
    await card.search(page, "milk");
    await card.in(page, "found");
    await card.pictured(page, 5);
    const fates = await page.locator("#products .picture").evaluateAll((all) => all.map((place) => place.dataset.picture));
    assert.deepEqual(fates, ["shown", "missing", "shown", "shown", "shown", "shown"]);
    await card.tiles(page).nth(1).getByText("No picture").waitFor();
    await turn(page, "missing-picture", false);
    await card.search(page, "milk");
    await card.pictured(page, 6);
});
