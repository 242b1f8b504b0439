// The event stream goes quiet, is cut, or begins anew; what is on the page says so, and is right again afterwards.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";

import { Appliance } from "../support/appliance.mjs";
import { applianceProgram } from "../support/needed.mjs";
import { card, screen } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

async function tool(root, ...words) {
    const process = spawn(applianceProgram(), [...words, "--root", root], { stdio: "ignore", timeout: 60000 });
    const [status] = await once(process, "exit");
    assert.equal(status, 0);
}

test("A server that stops is noticed, nothing is sent to it, and what it does then is shown when it goes on", async (page, appliance) => {
    await card.search(page, "milk");
    // Until they are there the service waits for the UI app, and for nobody else.
    await card.pictured(page, 6);
    const server = await appliance.processOf("carvoy-ui");
    process.kill(server, "SIGSTOP");
    try {
        await page.locator("#stale", { hasText: "no word from the appliance" }).waitFor();
        await page.locator("#connection[data-connection=quiet]").waitFor();
        await page.getByRole("button", { name: /^Check out/ }).click();
        await page.getByRole("alert").filter({ hasText: "Not sent: there is no connection" }).waitFor();
        assert.equal(await card.tiles(page).count(), 6);
        // For the service the world goes on: this is what the page has missed.
        await tool(appliance.root, "say", "show my cart");
    } finally {
        process.kill(server, "SIGCONT");
    }
    await page.locator("#connection[data-connection=live]").waitFor();
    await page.locator("#stale").waitFor({ state: "hidden" });
    await page.locator("#partner-page[data-page=cart]").waitFor();
    assert.equal(await card.tiles(page).count(), 6);
    await card.search(page, "bread");
    await card.in(page, "found");
});

test("What another program asks of the appliance is on the page, too", async (page, appliance) => {
    await tool(appliance.root, "search", "eggs");
    await page.locator("#card-term", { hasText: "“eggs”" }).waitFor();
    await card.in(page, "found");
});
