// Tabs as the ARIA practices describe them: one tab stop, arrows, Home and End.

function select(tabs, chosen, takesFocus) {
    for (const tab of tabs) {
        const isChosen = tab === chosen;
        tab.setAttribute("aria-selected", String(isChosen));
        tab.tabIndex = isChosen ? 0 : -1;
        document.getElementById(tab.getAttribute("aria-controls")).hidden = !isChosen;
    }
    if (takesFocus) {
        chosen.focus();
    }
    chosen.scrollIntoView({ block: "nearest", inline: "nearest" });
}

function targetOf(key, index, count) {
    const targets = { ArrowRight: (index + 1) % count, ArrowLeft: (index + count - 1) % count, Home: 0, End: count - 1 };
    return targets[key];
}

/** `changed` is called after another panel was opened. */
export function setUpTabs(list, changed) {
    const tabs = [...list.querySelectorAll("[role=tab]")];
    const open = (tab, takesFocus) => {
        select(tabs, tab, takesFocus);
        changed();
    };
    tabs.forEach((tab, index) => {
        tab.addEventListener("click", () => open(tab, false));
        tab.addEventListener("keydown", (event) => {
            const target = targetOf(event.key, index, tabs.length);
            if (target !== undefined) {
                event.preventDefault();
                open(tabs[target], true);
            }
        });
    });
}
