// What is said, and what the assistant and the partner app make of it.
import assert from "node:assert/strict";

import { Appliance } from "../support/appliance.mjs";
import { card, screen } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

async function say(page, sentence) {
    await page.getByRole("textbox", { name: "A sentence" }).fill(sentence);
    await page.getByRole("button", { name: "Say", exact: true }).click();
    await page.locator("#assistant-sentence", { hasText: `“${sentence}”` }).waitFor();
}

const title = (page, text) => page.locator("#partner-title", { hasText: text }).waitFor();

test("A product that is chosen by its number is open at the partner, by name", async (page) => {
    await card.search(page, "milk");
    await card.in(page, "found");
    await page.getByRole("button", { name: /^The second one/ }).click();
    await title(page, "Skim Milk");
    await page.locator("#partner-page", { hasText: "Product" }).waitFor();
    assert.match(await page.locator("#partner-where").textContent(), /Freshmart, FM-/);
    await page.locator("#assistant-action", { hasText: "Commerce Searched Item" }).waitFor();
    await page.locator("#assistant-fate", { hasText: "Delivered" }).waitFor();
    await page.locator("#assistant-view", { hasText: "View closed" }).waitFor();
    await page.locator("#partner-received", { hasText: "show_detailed_view" }).waitFor();
});

test("A product on the card can be chosen itself, added to the cart, and paid", async (page) => {
    await card.search(page, "milk");
    await card.in(page, "found");
    await page.getByRole("button", { name: "Choose Coconut Milk" }).click();
    await title(page, "Coconut Milk");
    await page.getByRole("button", { name: /^Add to cart/ }).click();
    const line = page.locator(".cart-line", { hasText: "Coconut Milk" });
    await line.getByText("1 ×").waitFor();
    await page.getByRole("button", { name: /^Add to cart/ }).click();
    await line.getByText("2 ×").waitFor();
    await page.getByRole("button", { name: /^Show the cart/ }).click();
    await page.locator("#partner-page[data-page=cart]").waitFor();
    await page.getByRole("button", { name: /^Check out/ }).click();
    await page.locator("#partner-page[data-page=check-out]").waitFor();
    await line.waitFor();
});

test("What is in the cart keeps its name when something else is searched", async (page) => {
    await card.search(page, "bread");
    await card.in(page, "found");
    await page.locator(".cart-line", { hasText: "Coconut Milk" }).waitFor();
});

test("A sentence in other words does the same", async (page) => {
    await say(page, "show me my cart");
    await page.locator("#assistant-action", { hasText: "Show Cart Success" }).waitFor();
    await page.locator("#assistant-fate", { hasText: "Delivered" }).waitFor();
});

test("A sentence that is not understood says so, and why", async (page) => {
    await say(page, "sing me a song");
    await page.locator("#assistant-fate", { hasText: "Failed" }).waitFor();
    assert.equal(await page.locator("#assistant-action").textContent(), "Not understood");
    assert.notEqual(await page.locator("#assistant-reason").textContent(), "");
    await page.locator("#assistant-reason").waitFor();
});

test("Without a sentence nothing is said", async (page) => {
    const posts = [];
    page.on("request", (request) => request.method() === "POST" && posts.push(request.url()));
    await page.getByRole("button", { name: "Say", exact: true }).click();
    await page.getByRole("alert").filter({ hasText: "Write what to say first." }).waitFor();
    assert.deepEqual(posts, []);
});
