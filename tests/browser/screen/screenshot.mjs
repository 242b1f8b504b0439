// The README's picture of the screen: after a search, with a chosen product and the messages that led there.
// CARVOY_SCREENSHOT names the file; without it everything but the file is the same.
import assert from "node:assert/strict";

import { Appliance } from "../support/appliance.mjs";
import { card, screen, until } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

test("The screen as the README shows it", async (page) => {
    await card.search(page, "milk");
    await card.in(page, "found");
    await card.pictured(page, 6);
    await page.getByRole("button", { name: "Choose Skim Milk" }).click();
    await page.locator("#partner-title", { hasText: "Skim Milk" }).waitFor();
    await page.locator("#assistant-view", { hasText: "View closed" }).waitFor();
    await page.locator("#messages > li", { hasText: "close_app" }).waitFor();
    await page.mouse.move(0, 0);
    // Neither the focus nor a picture that is still fading in belongs into it.
    await page.evaluate(() => {
        document.activeElement.blur();
        window.scrollTo(0, 0);
    });
    await until(page, () => document.getAnimations().every((one) => one.effect.getComputedTiming().iterations !== 1));
    const picture = await page.screenshot({ path: process.env.CARVOY_SCREENSHOT || undefined });
    assert.ok(picture.length > 20000);
}, { context: { colorScheme: "light", viewport: { width: 1280, height: 900 } } });
