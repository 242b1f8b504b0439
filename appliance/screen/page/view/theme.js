// Light or dark: the system's preference until somebody chooses otherwise.
import { byId } from "./dom.js";

const Dark = "(prefers-color-scheme: dark)";

function isDark() {
    const chosen = document.documentElement.dataset.theme;
    return chosen ? chosen === "dark" : matchMedia(Dark).matches;
}

function keep(theme) {
    try {
        localStorage.setItem("theme", theme);
    } catch {
        // Without storage the choice lasts as long as the page.
    }
}

export function setUpTheme() {
    const button = byId("theme");
    const show = () => button.setAttribute("aria-pressed", String(isDark()));
    button.addEventListener("click", () => {
        const theme = isDark() ? "light" : "dark";
        document.documentElement.dataset.theme = theme;
        keep(theme);
        show();
    });
    matchMedia(Dark).addEventListener("change", show);
    show();
}
