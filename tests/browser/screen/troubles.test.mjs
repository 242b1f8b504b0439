// Each switch of trouble leads to its state on the card, and the card is well again once it is off.
import assert from "node:assert/strict";

import { Appliance } from "../support/appliance.mjs";
import { card, screen, turn } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

const failures = [
    ["401", /did not accept the sign-in/, /Not logged in/],
    ["503", /cannot answer at the moment/, /curl perform failed: 503/],
    ["garbage", /could not be understood/, /json/],
    ["untrusted-certificate", /certificate is not trusted/, /SSL|certificate/],
];

for (const [id, plain, own] of failures) {
    test(`The switch ${id} makes the search fail, in plain words and the service's own`, async (page) => {
        await turn(page, id);
        await card.search(page, "milk");
        await card.in(page, "failed");
        await page.getByText("The search did not work").waitFor();
        assert.match(await page.locator("#failed-words").textContent(), plain);
        assert.match(await page.locator("#failed-reasons").textContent(), own);
        assert.equal(await card.tiles(page).count(), 0);
        assert.match(await page.locator("#announcer").textContent(), plain);
        await turn(page, id, false);
        await card.search(page, "milk");
        await card.in(page, "found");
        assert.equal(await card.tiles(page).count(), 6);
        assert.equal(await page.locator("#card-troubles").isVisible(), false);
    });
}

test("A slow answer shows the search until it comes", async (page) => {
    await turn(page, "slow-answer");
    await card.search(page, "bread");
    await card.in(page, "searching");
    await page.getByText("Searching…").waitFor();
    await page.locator("#card-troubles", { hasText: "~delay=3s" }).waitFor();
    assert.equal(await card.tiles(page).count(), 0);
    await card.in(page, "found");
    await turn(page, "slow-answer", false);
});

test("Of the answers only one can be chosen, and the tab tells how many switches are on", async (page) => {
    await turn(page, "401");
    await turn(page, "503");
    await page.locator('[data-switch="401"] [role=switch][aria-checked=false]').waitFor();
    await turn(page, "missing-picture");
    assert.equal(await page.locator("#trouble-on").textContent(), "2");
    await page.getByRole("tab", { name: "Trouble switches on: 2" }).waitFor();
    await turn(page, "503", false);
    await turn(page, "missing-picture", false);
    assert.equal(await page.locator("#trouble-on").isVisible(), false);
});
