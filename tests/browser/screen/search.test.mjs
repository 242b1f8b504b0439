// Searches with the real appliance: what is found, nothing found, and what a reload keeps.
import assert from "node:assert/strict";

import { Appliance } from "../support/appliance.mjs";
import { card, screen, turn, until } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

test("Before the first search the card says so", async (page) => {
    await card.in(page, "empty");
    await page.getByText("What would you like?").waitFor();
    assert.equal(await card.tiles(page).count(), 0);
});

test("A search fills the card with names, sizes, prices, discounts and pictures", async (page) => {
    await card.search(page, "milk");
    await card.in(page, "found");
    await card.pictured(page, 6);
    assert.equal(await page.locator("#card-where").textContent(), "Freshmart");
    assert.equal(await page.locator("#card-count").textContent(), "6 products");
    const skim = card.tiles(page).nth(1);
    assert.equal(await skim.locator(".name").textContent(), "Skim Milk");
    assert.equal(await skim.locator(".size").textContent(), "1/2 gal");
    assert.equal(await skim.locator(".discount").textContent(), "Save 10%");
    assert.equal(await skim.locator(".price").textContent(), "$2.69");
    const former = skim.locator("s.former");
    assert.equal(await former.evaluate((place) => place.lastChild.data), "$3.0");
    assert.match(await former.evaluate((place) => getComputedStyle(place).textDecorationLine), /line-through/);
    assert.equal(await card.tiles(page).first().locator(".discount").isVisible(), false);
    const widths = await page.locator("#products .picture img:not(.backdrop)").evaluateAll((all) => all.map((image) => image.naturalWidth));
    assert.ok(widths.length === 6 && widths.every((width) => width > 0), `${widths}`);
    await page.locator("#announcer", { hasText: "6 products for milk at Freshmart." }).waitFor();
});

test("Another merchant is asked when it is chosen", async (page) => {
    await card.search(page, "apple", "greengrocer");
    await card.in(page, "found");
    assert.equal(await page.locator("#card-where").textContent(), "Greengrocer");
});

test("Nothing found has a state of its own", async (page) => {
    await card.search(page, "zzqq");
    await card.in(page, "nothing");
    await page.getByText("Nothing found", { exact: true }).waitFor();
    await page.getByText("has nothing for “zzqq”").waitFor();
    assert.equal(await page.getByText("The search did not work").isVisible(), false);
});

test("Without a term nothing is sent, and the page says why", async (page) => {
    const posts = [];
    page.on("request", (request) => request.method() === "POST" && posts.push(request.url()));
    await page.getByRole("searchbox", { name: "What to search for" }).fill("   ");
    await page.getByRole("button", { name: "Search", exact: true }).click();
    await page.getByRole("alert").filter({ hasText: "Write what to search for first." }).waitFor();
    assert.deepEqual(posts, []);
});

test("A reload keeps the card with its pictures, the messages and the switches", async (page) => {
    await turn(page, "slow-answer");
    await turn(page, "slow-answer", false);
    await turn(page, "missing-picture");
    await card.search(page, "milk");
    await card.in(page, "found");
    await until(page, () => document.querySelector("#products .picture[data-picture=missing]"));
    const count = await card.tiles(page).count();
    await card.pictured(page, count - 1);
    const look = () => ({
        names: [...document.querySelectorAll("#products .name")].map((name) => name.textContent),
        messages: [...document.querySelectorAll("#messages > li")].map((row) => row.dataset.number),
        switches: [...document.querySelectorAll("[role=switch]")].map((button) => button.getAttribute("aria-checked")),
        term: document.getElementById("term").value,
    });
    const before = await page.evaluate(look);
    assert.ok(before.messages.length > 5 && before.switches.includes("true"));
    await page.reload();
    await card.in(page, "found");
    await card.pictured(page, count - 1);
    const after = await page.evaluate(look);
    assert.deepEqual(after.messages.slice(0, before.messages.length), before.messages);
    assert.deepEqual({ ...after, messages: [] }, { ...before, messages: [] });
    await turn(page, "missing-picture", false);
});
