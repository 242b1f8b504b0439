// What the service keeps for others: the status record and the setting that tells of an answered search.
import { byId, el, keyed, setText, when } from "./dom.js";

const Fields = ["isLoggedIn", "isLinked", "totalCount", "productCountInCart", "currentViewType"];

function meaningOf(name, value) {
    if (value === null || value === undefined) {
        return "never written";
    }
    return name.startsWith("is") ? (value === 1 ? "yes" : value === 0 ? "no" : "") : "";
}

function makeField([name]) {
    return el("div.field", { "data-field": name }, el("dt", {}, name), el("dd", {}, el("strong"), el("span")));
}

// A value that has changed shows it for a moment.
function showValue(place, value, meaning) {
    const [number, words] = place.children;
    const text = value === null || value === undefined ? "–" : String(value);
    if (number.textContent !== "" && number.textContent !== text) {
        number.classList.remove("changed");
        requestAnimationFrame(() => number.classList.add("changed"));
    }
    setText(number, text);
    setText(words, meaning);
}

function drawRecord(record) {
    const others = Object.keys(record ?? {}).filter((name) => !Fields.includes(name));
    const rows = [...Fields, ...others].map((name) => [name, record?.[name]]);
    keyed(
        byId("record"),
        rows,
        ([name]) => name,
        makeField,
        (field, [name, value]) => showValue(field.lastElementChild, value, meaningOf(name, value)),
    );
    byId("record-none").hidden = record !== null;
}

function drawFlag(flag) {
    const meanings = { 0: "no answer yet", 1: "the search was answered" };
    showValue(byId("flag"), flag, flag === null ? "never written" : (meanings[flag] ?? ""));
}

export function createRecords() {
    return when(
        ({ state }) => [state.record, state.flag],
        ({ state }) => {
            drawRecord(state.record);
            drawFlag(state.flag);
        },
    );
}
