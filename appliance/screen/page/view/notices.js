// What the person is told besides the panels: why a command was not sent or failed, and the state of the connection.
import { byId, setText, when } from "./dom.js";

const Connections = {
    connecting: ["Connecting", "Connecting to the appliance"],
    live: ["Live", "Connected to the appliance"],
    quiet: ["No word", "There is no word from the appliance. What you see may be out of date. Connecting again…"],
    lost: ["Not connected", "The connection to the appliance was lost. What you see may be out of date. Connecting again…"],
};

function showConnection({ connection, mode }) {
    const [short, long] = Connections[connection];
    const pill = byId("connection");
    pill.dataset.connection = mode === "recording" ? "recording" : connection;
    setText(byId("connection-words"), mode === "recording" ? "Recording" : short);
    const isStale = mode === "live" && (connection === "lost" || connection === "quiet");
    byId("stale").hidden = !isStale;
    setText(byId("stale-words"), isStale ? long : "");
    byId("stage").dataset.stale = String(isStale);
}

/** Returns tell(words), which shows why something was not done, or with "" takes that away, and an old notice with it. */
export function createTell() {
    const place = byId("told");
    byId("told-close").addEventListener("click", () => {
        place.hidden = true;
        setText(byId("told-words"), "");
    });
    return (words) => {
        place.hidden = words === "";
        if (words === "") {
            byId("notice-close").click();
        }
        // The same words again are told again.
        byId("told-words").textContent = "";
        byId("told-words").textContent = words;
    };
}

function createServerNotice() {
    let dismissed = null;
    let shown = null;
    const place = byId("notice");
    byId("notice-close").addEventListener("click", () => {
        dismissed = shown;
        place.hidden = true;
    });
    return when(
        ({ state }) => [state.notice],
        ({ state }) => {
            shown = state.notice;
            place.hidden = !shown || shown === dismissed;
            place.dataset.level = shown?.level ?? "";
            setText(byId("notice-words"), shown?.text ?? "");
        },
    );
}

export function createNotices() {
    const showNotice = createServerNotice();
    const show = when(({ connection, mode }) => [connection, mode], showConnection);
    return (view) => {
        show(view);
        showNotice(view);
    };
}
