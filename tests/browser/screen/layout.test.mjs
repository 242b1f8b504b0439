// The layout from a telephone's width to a desk's.
import assert from "node:assert/strict";

import { full, pictures } from "../support/full-state.mjs";
import { openDetails, openTabs, overflow, screen } from "../support/screen.mjs";
import { StandIn } from "../support/stand-in.mjs";

const server = new StandIn(full);
pictures.forEach((name) => server.pictures.add(name));
const { test } = screen(() => server.start());

test("The page is never wider than its window", async (page) => {
    await openDetails(page);
    for (const width of [320, 360, 768, 1099, 1100, 1280, 1920]) {
        await page.setViewportSize({ width, height: 900 });
        await openTabs(page, async (name) => assert.ok((await overflow(page)) <= 0, `${name} at ${width}`));
    }
});

test("At 360 pixels all tabs are in sight", async (page) => {
    await page.setViewportSize({ width: 360, height: 740 });
    for (const box of await Promise.all((await page.getByRole("tab").all()).map((tab) => tab.boundingBox()))) {
        assert.ok(box.x >= 0 && box.x + box.width <= 360, JSON.stringify(box));
    }
});

test("From 1100 pixels on there are two columns, below one in the order of use", async (page) => {
    const box = (selector) => page.locator(selector).boundingBox();
    const [cardBox, hoodBox] = [await box("#card"), await box("#hood")];
    assert.ok(hoodBox.x >= cardBox.x + cardBox.width);
    await page.setViewportSize({ width: 768, height: 1024 });
    const tops = await Promise.all(["#card", "#speak", "#partner", "#hood"].map(async (id) => (await box(id)).y));
    assert.deepEqual([...tops].sort((a, b) => a - b), tops);
});

test("What can be pressed is at least 44 pixels high and wide", async (page) => {
    await openDetails(page);
    for (const width of [1280, 360]) {
        await page.setViewportSize({ width, height: 900 });
        await openTabs(page, async (name) => {
            const small = await page.evaluate(() => {
                const all = [...document.querySelectorAll("button, select, input:not([type=file])")];
                const visible = all.filter((place) => place.getClientRects().length > 0);
                return visible
                    .map((place) => ({ place, box: (place.closest("label") ?? (place.matches(".choose") ? place.closest(".tile") : place)).getBoundingClientRect() }))
                    .filter(({ box }) => box.height < 43.9 || box.width < 43.9)
                    .map(({ place, box }) => `${place.outerHTML.slice(0, 80)} ${box.width} x ${box.height}`);
            });
            assert.deepEqual(small, [], `${name} at ${width}`);
        });
    }
});
