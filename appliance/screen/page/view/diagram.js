// The messages between the apps as a sequence diagram that grows downwards.
import { lanesFor, layoutOf, shortOperation, summaryOf } from "../model/lanes.js";
import { clock, count, lookUp } from "../model/words.js";
import { byId, el, hidden, icon, keyed, setText, when } from "./dom.js";
import { makeDetails } from "./details.js";
import { followEnd } from "./follow.js";

function drawLanes(lanes, apps) {
    const heads = lanes.map((lane) => {
        const isThere = lane.app === "" || lookUp(apps, lane.app, false);
        return el(
            "li.lane",
            { title: lane.app || "Tools and everything else on the bus", "data-there": String(Boolean(isThere)) },
            lane.short,
            isThere ? null : el("span.away", {}, "away"),
        );
    });
    byId("lanes").replaceChildren(...heads);
}

function makeArrow(message, layout) {
    const arrow = el("span.arrow", { "data-kind": message.kind, "data-direction": layout.direction, "aria-hidden": "true" });
    arrow.style.setProperty("--left", layout.left);
    arrow.style.setProperty("--width", layout.width);
    return arrow;
}

function makeLabel(message, layout) {
    const label = el(
        "span.label",
        { "data-side": layout.side },
        icon(message.kind),
        el("span.operation", {}, shortOperation(message.operation)),
        el("span.summary", {}, summaryOf(message)),
    );
    label.style.setProperty("--left", layout.left);
    label.style.setProperty("--width", layout.width);
    return label;
}

function makeRow(message, lanes, toggle) {
    const layout = layoutOf(message, lanes);
    const button = el(
        "button.message",
        { type: "button", "aria-expanded": "false", onclick: () => toggle(message.number) },
        el("time", {}, clock(message.at)),
        hidden(`${message.kind} from ${lanes[layout.start].name} to ${lanes[layout.end].name}: `),
        el("span.track", {}, makeLabel(message, layout), makeArrow(message, layout)),
    );
    return el("li", { "data-number": message.number, "data-kind": message.kind }, button);
}

function updateRow(row, message, opened, go) {
    const isOpen = message.number === opened;
    const button = row.firstElementChild;
    if ((button.getAttribute("aria-expanded") === "true") === isOpen) {
        return;
    }
    button.setAttribute("aria-expanded", String(isOpen));
    if (isOpen) {
        const details = makeDetails(message, go);
        button.setAttribute("aria-controls", details.id);
        row.append(details);
    } else {
        button.removeAttribute("aria-controls");
        row.lastElementChild.remove();
    }
}

// What answers the opened message, and what it answers, stand out with it.
function markRelated(messages, opened) {
    const chosen = messages.find((message) => message.number === opened);
    for (const row of byId("messages").children) {
        row.classList.remove("related");
    }
    if (!chosen) {
        return;
    }
    const isRelated = ({ number, answers }) => number === chosen.answers || (answers > 0 && answers === chosen.number);
    for (const { number } of messages.filter(isRelated)) {
        byId("messages").querySelector(`[data-number="${number}"]`)?.classList.add("related");
    }
}

// A message that is no longer kept is none to be led to.
function settleLinks(list, messages) {
    for (const link of list.querySelectorAll(".details .link")) {
        if (!messages.some(({ number }) => String(number) === link.dataset.number)) {
            const row = link.closest("li").firstElementChild;
            if (link === document.activeElement) {
                row.focus({ preventScroll: true });
            }
            link.replaceWith(link.textContent);
        }
    }
}

export function createDiagram(redraw) {
    const list = byId("messages");
    const scroller = byId("messages-scroller");
    const follow = followEnd(scroller, byId("messages-end"));
    let opened = 0;
    let lanes = lanesFor();
    let drawn = { messages: null, opened: 0 };
    const open = (number) => {
        opened = number;
        redraw();
    };
    const toggle = (number) => open(opened === number ? 0 : number);
    const go = (number) => {
        open(number);
        const row = list.querySelector(`[data-number="${number}"] > button`);
        row?.scrollIntoView({ block: "nearest" });
        row?.focus({ preventScroll: true });
    };
    const drawHeads = when(
        ({ state }) => [state.apps, state.settings?.partner],
        ({ state }) => {
            lanes = lanesFor(state.settings?.partner);
            drawLanes(lanes, state.apps);
        },
    );
    const drawRows = when(
        ({ state, isHoodOpen }) => [state.messages, opened, isHoodOpen, state.settings?.partner],
        ({ state }) => {
            const { messages } = state;
            const partner = state.settings?.partner;
            keyed(
                list,
                messages,
                (message) => `${message.number}/${message.at}/${partner}`,
                (message) => makeRow(message, lanes, toggle),
                (row, message) => updateRow(row, message, opened, go),
            );
            markRelated(messages, opened);
            settleLinks(list, messages);
            setText(byId("messages-count"), count(messages.length, "message"));
            byId("messages-none").hidden = messages.length > 0;
            if (opened !== drawn.opened) {
                // Who reads a row does not want it to be scrolled away.
                (opened === 0 ? follow.look : follow.stay)();
            }
            if (messages !== drawn.messages) {
                follow.grown();
            }
            drawn = { messages, opened };
        },
    );
    return (view) => {
        drawHeads(view);
        drawRows(view);
    };
}
