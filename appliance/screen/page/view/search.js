// The search field with the choice of merchant or retailer.
import { merchantName } from "../model/words.js";
import { byId, el, when } from "./dom.js";

const Suggestions = { merchant: "milk", retailer: "우유" };

function chosenSource() {
    return document.querySelector("input[name=source]:checked").value;
}

function showSource() {
    const source = chosenSource();
    byId("merchant-field").hidden = source !== "merchant";
    byId("term").placeholder = `For example ${Suggestions[source]}`;
}

function chooseSource(source) {
    document.querySelector(`input[name=source][value=${source}]`).checked = true;
    showSource();
}

function fillMerchants(merchants) {
    const select = byId("merchant");
    const chosen = select.value;
    select.replaceChildren(...merchants.map((id) => el("option", { value: id }, merchantName(id))));
    if (merchants.includes(chosen)) {
        select.value = chosen;
    }
}

function hasMerchant(id) {
    return [...byId("merchant").options].some((option) => option.value === id);
}

// The first card that arrives says what was searched before this page was opened; later the field is the person's.
function begin(card) {
    if (!card || card.state === "empty") {
        return;
    }
    chooseSource(card.source);
    byId("term").value = card.term;
    if (hasMerchant(card.merchant)) {
        byId("merchant").value = card.merchant;
    }
}

export function createSearch(commands, tell) {
    document.querySelectorAll("input[name=source]").forEach((radio) => radio.addEventListener("change", showSource));
    showSource();
    byId("search").addEventListener("submit", (event) => {
        event.preventDefault();
        const term = byId("term").value.trim();
        if (term === "") {
            tell("Write what to search for first.");
            byId("term").focus();
            return;
        }
        commands.search(chosenSource(), byId("merchant").value, term);
    });
    let hasBegun = false;
    byId("search").addEventListener("input", () => (hasBegun = true));
    const drawMerchants = when(
        // Its options are left alone while somebody has it open and turns a switch elsewhere.
        // Those of a recording cannot be asked.
        ({ state, mode }) => [mode, JSON.stringify(state.settings?.merchants)],
        ({ state, mode }) => mode === "live" && state.settings && fillMerchants(state.settings.merchants),
    );
    return (view) => {
        drawMerchants(view);
        if (!hasBegun && view.mode === "live" && view.state.card) {
            hasBegun = true;
            begin(view.state.card);
        }
    };
}
