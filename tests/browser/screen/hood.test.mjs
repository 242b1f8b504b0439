// Under the hood: the sequence diagram, the log, the records and the image directory.
import assert from "node:assert/strict";

import { Appliance } from "../support/appliance.mjs";
import { card, screen, turn, until } from "../support/screen.mjs";

const { test } = screen(() => new Appliance().start());

async function searched(page, term = "milk") {
    await card.search(page, term);
    await card.in(page, "found");
    await card.pictured(page, await card.tiles(page).count());
}

const rows = (page) =>
    page.locator("#messages > li").evaluateAll((all) =>
        all.map((row) => ({
            number: Number(row.dataset.number),
            kind: row.dataset.kind,
            operation: row.querySelector(".operation").textContent,
            spoken: row.querySelector(".hidden").textContent,
        })),
    );

test("The diagram shows the search, its result, the reply and the pictures in this order", async (page) => {
    await searched(page);
    const all = await rows(page);
    const place = (kind, operation, spoken) =>
        all.findIndex((row) => row.kind === kind && row.operation === operation && row.spoken === spoken);
    const places = [
        place("launch", "search", "launch from UI app to Service: "),
        place("launch", "result", "launch from UI app to Service: "),
        place("launch", "result", "launch from Service to UI app: "),
        place("reply", "result", "reply from UI app to Service: "),
        place("launch", "product_image", "launch from Service to UI app: "),
    ];
    assert.ok(
        places.every((at, index) => at >= 0 && (index === 0 || at > places[index - 1])),
        `${places} of ${JSON.stringify(all)}`,
    );
    assert.equal(all.filter(({ operation }) => operation === "product_image").length, 6);
});

test("A row opens to all of its extra data, and leads to what it answers", async (page) => {
    await searched(page, "bread");
    const result = page.locator("#messages > [data-kind=launch]", { hasText: "total_num_of_products" }).last();
    await result.getByRole("button").focus();
    await page.keyboard.press("Enter");
    const details = result.locator(".details");
    await details.getByText("http://carvoy-service/appcontrol/operation/result").waitFor();
    const names = await details.locator("dt", { hasText: /^key_product_names$/ }).locator("+ dd li").allTextContents();
    assert.deepEqual(names, await page.locator("#products .name").allTextContents());
    await details.locator("dt", { hasText: /^key_search_term$/ }).waitFor();

    const number = await result.getAttribute("data-number");
    const reply = page.locator("#messages > [data-kind=reply].related");
    await reply.getByRole("button").click();
    await details.waitFor({ state: "detached" });
    await page.locator("#messages").getByRole("button", { name: `message ${number}`, exact: true }).click();
    await page.locator(`#messages > [data-number="${number}"] > button[aria-expanded=true]:focus`).waitFor();
});

test("The lanes tell which apps are there", async (page) => {
    const lanes = page.locator("#lanes > li");
    await until(page, () => document.querySelectorAll("#lanes > [data-there=true]").length === 6);
    const names = await lanes.allTextContents();
    assert.deepEqual(names, ["Others", "UI app", "Service", "Retailer", "Partner", "Assistant"]);
});

test("What is said is in the diagram as voice, with its arguments", async (page) => {
    await page.getByRole("button", { name: /^Show the cart/ }).click();
    const voice = page.locator("#messages > [data-kind=voice]", { hasText: "Result" }).last();
    await voice.getByRole("button").click();
    await voice.locator(".details", { hasText: "Show Cart Success" }).waitFor();
    await voice.locator(".details h4", { hasText: "Arguments" }).waitFor();
});

test("The log has the platform's colours, and is filtered by level and text", async (page) => {
    await turn(page, "503");
    await card.search(page, "milk");
    await card.in(page, "failed");
    await turn(page, "503", false);
    await page.getByRole("tab", { name: "Log" }).click();
    const lines = page.locator("#log > li");
    const error = page.locator("#log > [data-level=E]", { hasText: "curl perform failed: 503" }).last();
    await error.locator(".sgr-red").waitFor();
    await page.locator("#log > [data-level=D] .sgr-green").first().waitFor({ state: "attached" });

    await page.getByRole("combobox", { name: "Least level" }).selectOption("E");
    await until(page, () => document.querySelector("#log > li") && !document.querySelector("#log > :not([data-level=E])"));
    await page.getByRole("combobox", { name: "Least level" }).selectOption("V");
    const words = page.getByRole("searchbox", { name: "Text in the line" });
    await words.fill("onappcontrol");
    await until(page, () => {
        const texts = [...document.querySelectorAll("#log > li")].map((line) => line.textContent);
        return texts.length > 0 && texts.every((text) => /onAppControl/.test(text));
    });
    assert.match(await page.locator("#log-count").textContent(), /^\d+ of \d+ lines$/);
    await words.fill("no line has this");
    await page.getByText("No line is like that.").waitFor();
    assert.equal(await lines.count(), 0);
});

test("The log follows its end, unless somebody has scrolled up", async (page) => {
    await page.setViewportSize({ width: 1280, height: 620 });
    await page.getByRole("tab", { name: "Log" }).click();
    const isAtEnd = () => {
        const { scrollHeight, scrollTop, clientHeight } = document.getElementById("log-scroller");
        return scrollHeight > clientHeight + 100 && scrollHeight - scrollTop - clientHeight < 2;
    };
    await until(page, isAtEnd);
    const scroller = page.locator("#log-scroller");
    await scroller.evaluate((place) => (place.scrollTop = 40));
    await page.getByRole("button", { name: "Newest" }).waitFor();
    const before = await page.locator("#log > li").count();
    await card.search(page, "bread");
    await until(page, (count) => document.querySelectorAll("#log > li").length > count, before);
    assert.equal(await scroller.evaluate((place) => place.scrollTop), 40);
    await page.getByRole("button", { name: "Newest" }).click();
    await until(page, isAtEnd);
    await card.search(page, "milk");
    await card.in(page, "found");
    await until(page, isAtEnd);
});

test("The status record, the setting and the image directory are those of the last search", async (page) => {
    await searched(page);
    await page.getByRole("tab", { name: "Records" }).click();
    const field = (name) => page.locator(`[data-field=${name}] dd`);
    await field("totalCount").filter({ hasText: "6" }).waitFor();
    await field("isLoggedIn").filter({ hasText: /1\s*yes/ }).waitFor();
    await field("currentViewType").filter({ hasText: "never written" }).waitFor();
    await page.locator("#flag", { hasText: "the search was answered" }).waitFor();
    await page.getByRole("tab", { name: "Pictures" }).click();
    await until(page, () => document.querySelectorAll("#images .picture[data-picture=shown]").length === 6);
    assert.equal(await page.locator("#images-count").textContent(), "6 files");
    assert.match(await page.locator("#images > li").first().textContent(), /^1\.png\d+ bytes|^1\.png\d+ kB/);
});
