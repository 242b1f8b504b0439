// What the page must not take from the person: what is being typed, chosen and pressed, and the browser's connections.
import assert from "node:assert/strict";

import { card as cardOf, product, settings, someState } from "../support/states.mjs";
import { card, openRecording, screen, until } from "../support/screen.mjs";
import { StandIn } from "../support/stand-in.mjs";

const { test } = screen(() => new StandIn({ card: null }).start());

const field = (page) => page.getByRole("searchbox", { name: "What to search for" });

test("What is being typed when the first card comes is left alone", async (page, server) => {
    await field(page).fill("coff");
    server.step("card", cardOf({ sequence: 2, term: "cake" }));
    await page.locator("#card-term", { hasText: "cake" }).waitFor();
    assert.equal(await field(page).inputValue(), "coff");
});

test("The merchants of a recording do not change the choice", async (page) => {
    const choice = page.getByRole("combobox", { name: "Merchant" });
    await choice.selectOption("corner-store");
    await openRecording(page, { base: someState({ settings: settings({ merchants: ["elsewhere"], confirm: "late" }) }) });
    await page.locator("#confirm[data-mode=late]").waitFor({ state: "attached" });
    assert.equal(await choice.inputValue(), "corner-store");
    await page.getByRole("button", { name: "Back to live" }).click();
    await page.locator("#confirm[data-mode=now]").waitFor({ state: "attached" });
    assert.equal(await choice.inputValue(), "corner-store");
});

test("A switch that is pressed twice before it has turned is turned on and off", async (page, server) => {
    await page.getByRole("tab", { name: /^Trouble/ }).click();
    const button = page.getByRole("switch", { name: /^Answer 401/ });
    const before = server.commands.length;
    await button.click();
    await button.click();
    server.step("flag", 3);
    await page.locator("#flag", { hasText: "3" }).waitFor({ state: "attached" });
    await Promise.all([page.waitForResponse(/say/), page.getByRole("button", { name: /^Check out/ }).click()]);
    const sent = server.commands.slice(before).map(({ id, on, sentence }) => (id ? on : sentence));
    assert.deepEqual(sent, [true, false, "check out"]);
});

test("A page that nobody sees has no connection, and is right again when it is looked at", async (page, server) => {
    const look = (isHidden) => page.evaluate((value) => {
        Object.defineProperty(document, "hidden", { value, configurable: true });
        document.dispatchEvent(new Event("visibilitychange"));
    }, isHidden);
    const [stream] = server.streams;
    const closed = new Promise((resolve) => stream.once("close", resolve));
    await look(true);
    await closed;
    assert.equal(server.streams.size, 0);
    server.step("card", cardOf({ sequence: 9, term: "missed" }));
    await look(false);
    await page.locator("#card-term", { hasText: "missed" }).waitFor();
    await page.locator("#connection[data-connection=live]").waitFor();
});

test("More products than there are places are nowhere, and one is one", async (page, server) => {
    server.step("card", cardOf({ sequence: 20, products: Array.from({ length: 8 }, () => product()) }));
    await until(page, () => document.querySelectorAll("#products > li").length === 6);
    assert.equal(await page.locator("#choices > li").count(), 6);
    assert.equal(await page.locator("#card-count").textContent(), "6 products");
    server.step("card", cardOf({ sequence: 21, products: [product()] }));
    await page.locator("#announcer", { hasText: "1 product for milk" }).waitFor();
    assert.equal(await card.tiles(page).count(), 1);
    assert.equal(await page.locator("#card-count").textContent(), "1 product");
});
