// The page without a pointer: everything can be reached, seen and done with the keyboard.
import assert from "node:assert/strict";

import { Appliance } from "../support/appliance.mjs";
import { card, screen, until } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

const focused = (page) =>
    page.evaluate(() => {
        const { activeElement: at } = document;
        return { id: at.id, text: at.textContent.trim(), isBody: at === document.body };
    });

// Presses Tab until `isThere`, and notes on the way that whatever has the focus shows it.
async function tabTo(page, isThere) {
    for (let steps = 0; steps < 80; ++steps) {
        await page.keyboard.press("Tab");
        const at = await focused(page);
        if (isThere(at)) {
            return;
        }
        assert.equal(at.isBody, false, "the focus left the page");
    }
    assert.fail("it cannot be reached with Tab");
}

test("A search, a choice and the cart need no pointer", async (page) => {
    await page.keyboard.press("Tab");
    assert.match((await focused(page)).text, /Skip to the card/);
    await page.keyboard.press("Enter");
    await tabTo(page, ({ id }) => id === "term");
    await page.keyboard.type("milk");
    await page.keyboard.press("Enter");
    await card.pictured(page, 6);
    assert.equal((await focused(page)).id, "term");
    await tabTo(page, ({ text }) => text === "Choose Skim Milk");
    await page.keyboard.press("Enter");
    await page.locator("#partner-title", { hasText: "Skim Milk" }).waitFor();
    assert.equal((await focused(page)).text, "Choose Skim Milk");
    await tabTo(page, ({ text }) => text.startsWith("Add to cart"));
    await page.keyboard.press("Space");
    await page.locator(".cart-line", { hasText: "Skim Milk" }).waitFor();
    assert.ok((await focused(page)).text.startsWith("Add to cart"));
});

test("The retailer is chosen with the arrows", async (page) => {
    await page.getByRole("radio", { name: "Merchant" }).focus();
    await page.keyboard.press("ArrowRight");
    assert.equal(await page.getByRole("radio", { name: "Retailer" }).isChecked(), true);
    assert.equal(await page.getByRole("combobox", { name: "Merchant" }).isVisible(), false);
});

test("Tabs are one stop, and are changed with arrows, Home and End", async (page) => {
    await page.getByRole("tab", { name: "Messages" }).focus();
    const selected = (name) => page.getByRole("tab", { name, selected: true }).and(page.locator(":focus")).waitFor();
    await page.keyboard.press("ArrowRight");
    await selected("Log");
    await page.locator("#panel-log").waitFor();
    assert.equal(await page.locator("#panel-messages").isVisible(), false);
    await page.keyboard.press("End");
    await selected(/^Trouble/);
    await page.keyboard.press("ArrowRight");
    await selected("Messages");
    await page.keyboard.press("ArrowLeft");
    await selected(/^Trouble/);
    await page.keyboard.press("Home");
    await selected("Messages");
    assert.equal(await page.locator("[role=tab][tabindex='-1']").count(), 4);
});

test("A switch is turned with the keyboard and keeps the focus", async (page) => {
    await page.getByRole("tab", { name: /^Trouble/ }).click();
    const button = page.getByRole("switch", { name: /^Slow pictures/ });
    await button.focus();
    for (const on of [true, false]) {
        await page.keyboard.press("Space");
        await page.locator(`[data-switch=slow-pictures] [role=switch][aria-checked=${on}]:focus`).waitFor();
    }
});

test("Whatever has the focus shows it", async (page) => {
    await card.search(page, "milk");
    await card.in(page, "found");
    await page.evaluate(() => document.activeElement.blur());
    const seen = new Set();
    for (let steps = 0; steps < 120; ++steps) {
        await page.keyboard.press("Tab");
        const at = await page.evaluate(() => {
            const place = document.activeElement;
            // Where the element itself shows nothing, something that belongs to it does.
            const shows = [getComputedStyle(place), getComputedStyle(place, "::after")];
            const neighbour = place.nextElementSibling;
            const isRadio = place.matches(".segments input");
            const looks = isRadio ? [getComputedStyle(neighbour)] : shows;
            return {
                name: place.id || place.textContent.trim().slice(0, 60) || place.name,
                isVisible: looks.some((look) => look.outlineStyle !== "none" && parseFloat(look.outlineWidth) >= 2),
                isBody: place === document.body,
            };
        });
        if (at.isBody || seen.has(at.name)) {
            break;
        }
        seen.add(at.name);
        assert.equal(at.isVisible, true, at.name);
    }
    assert.ok(seen.size > 20, `${[...seen]}`);
});

test("A message opens and closes with Enter, and the log can be scrolled", async (page) => {
    const row = page.locator("#messages > li > button").first();
    await row.focus();
    await page.keyboard.press("Enter");
    await page.locator("#messages .details").waitFor();
    await page.keyboard.press("Enter");
    await page.locator("#messages .details").waitFor({ state: "detached" });
    await page.setViewportSize({ width: 1280, height: 620 });
    await page.getByRole("tab", { name: "Log" }).click();
    await page.getByRole("region", { name: "Platform log" }).focus();
    await page.keyboard.press("Home");
    await until(page, () => document.getElementById("log-scroller").scrollTop === 0);
});
