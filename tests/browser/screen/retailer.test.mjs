// A search at the retailer, whose login file all tests of a build share.
import assert from "node:assert/strict";

import { Appliance } from "../support/appliance.mjs";
import { card, screen, until } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

test("A search at the retailer shows prices in won, and the badges' icons", async (page) => {
    await card.search(page, "우유", "");
    await card.in(page, "found");
    await card.pictured(page, 6);
    assert.equal(await page.locator("#card-where").textContent(), "Retailer");
    const prices = await page.locator("#products .price").allTextContents();
    assert.equal(prices.length, 6);
    assert.ok(prices.every((price) => /^[\d,]+원$/.test(price)), `${prices}`);
    const discounts = (await page.locator("#products .discount").allTextContents()).filter(Boolean);
    assert.ok(discounts.some((discount) => discount.includes("할인")), `${discounts}`);
    await until(page, () => [...document.querySelectorAll(".badge-icon")].some((icon) => icon.naturalWidth > 0));
    assert.ok((await page.locator(".badge-icon:visible").count()) >= 1);
    assert.equal(await page.locator("#messages > li", { hasText: "emart_product_image" }).count() > 6, true);
});

test("What the retailer has cannot be chosen by voice, and the page says so", async (page) => {
    await card.search(page, "우유", "");
    await card.in(page, "found");
    await page.getByText("only a merchant's products can be chosen").waitFor();
    assert.equal(await page.getByRole("button", { name: /^Choose / }).count(), 0);
    assert.equal(await page.locator("#choices > li").count(), 0);
});

test("The switch back to a merchant shows the merchant's products again", async (page) => {
    await card.search(page, "우유", "");
    await card.in(page, "found");
    await card.search(page, "milk");
    await card.in(page, "found");
    await page.getByRole("button", { name: "Choose Whole Milk", exact: true }).waitFor();
    assert.equal(await page.locator(".badge-icon:visible").count(), 0);
});
