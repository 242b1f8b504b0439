// The switches of trouble and of the confirmation.
import { byId, el, keyed, setText, when } from "./dom.js";

const Modes = ["now", "late", "fail", "never"];

function makeSwitch({ id }, turn) {
    const button = el("button.switch", { type: "button", role: "switch", "aria-checked": "false" });
    button.append(el("span.knob", { "aria-hidden": "true" }), el("span.switch-label"), el("code.word"), el("span.quiet"));
    const item = el("li", { "data-switch": id }, button);
    // Who presses twice before it has turned means both.
    button.addEventListener("click", async () => {
        const wished = !(item.wished ?? button.getAttribute("aria-checked") === "true");
        item.wished = wished;
        if (!(await turn(id, wished)) && item.wished === wished) {
            item.wished = undefined;
        }
    });
    return item;
}

function updateSwitch(item, { label, words, for: reach, group, on }) {
    const button = item.firstElementChild;
    const [, name, word, note] = button.children;
    button.setAttribute("aria-checked", String(on));
    if (item.wished === on) {
        item.wished = undefined;
    }
    setText(name, label);
    setText(word, words);
    word.hidden = words === "";
    const notes = [reach === "merchant" ? "merchant only" : "", group ? `one ${group} at a time` : ""];
    setText(note, notes.filter(Boolean).join(", "));
}

function drawConfirmation({ confirm, delay }) {
    byId("confirm").dataset.mode = confirm;
    for (const mode of Modes) {
        document.querySelector(`input[name=confirm][value=${mode}]`).checked = mode === confirm;
    }
    setText(byId("late-words"), `with success after ${delay / 1000} s`);
}

function draw(settings, commands) {
    keyed(
        byId("switches"),
        settings.switches,
        ({ id }) => id,
        (item) => makeSwitch(item, commands.turn),
        updateSwitch,
    );
    drawConfirmation(settings);
    const on = settings.switches.filter((item) => item.on).length + (settings.confirm === "now" ? 0 : 1);
    setText(byId("trouble-on"), on > 0 ? String(on) : "");
    byId("trouble-on").hidden = on === 0;
    byId("trouble-words").textContent = on > 0 ? ` switches on: ${on}` : "";
}

export function createTrouble(commands) {
    let shown = null;
    document.querySelectorAll("input[name=confirm]").forEach((radio) => {
        radio.addEventListener("change", async () => {
            // What was not taken is not chosen either.
            if (!(await commands.confirm(radio.value)) && shown) {
                drawConfirmation(shown);
            }
        });
    });
    return when(
        ({ state }) => [state.settings],
        ({ state }) => {
            shown = state.settings;
            if (shown) {
                draw(shown, commands);
            }
        },
    );
}
