// What the person is told besides the panels: why a command was not sent or failed, and the state of the connection.
import { byId, setText, when } from "./dom.js";
import { handFocusBack } from "./focus.js";

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

// A bar that is not shown is still there for those who listen: only what changes in it is read out.
function showBar(bar, isShown) {
    if (!isShown) {
        handFocusBack(bar);
    }
    bar.classList.toggle("off", !isShown);
    bar.querySelector("button").hidden = !isShown;
}

/** Returns tell(words), which shows why something was not done, or with "" takes that away, and an old notice with it. */
export function createTell() {
    const bar = byId("told");
    const place = byId("told-words");
    let told = "";
    const tell = (words) => {
        told = words;
        showBar(bar, words !== "");
        // The same words again are told again.
        place.textContent = "";
        requestAnimationFrame(() => setText(place, told));
    };
    byId("told-close").addEventListener("click", () => tell(""));
    return (words) => {
        if (words === "") {
            byId("notice-close").click();
        }
        tell(words);
    };
}

function createServerNotice() {
    let shown = null;
    let closed = null;
    let seen = null;
    const bar = byId("notice");
    const show = (notice) => {
        showBar(bar, notice !== null);
        bar.dataset.level = notice?.level ?? "";
        setText(byId("notice-words"), notice?.text ?? "");
    };
    byId("notice-close").addEventListener("click", () => {
        closed = shown ?? closed;
        show(null);
    });
    return when(
        ({ state, origin }) => [state.notice, origin],
        ({ state: { notice }, origin }) => {
            // With each connection the last notice comes again, and is no news.
            const isAgain = origin !== seen && notice?.text === closed?.text;
            const isClosed = notice !== null && (notice === closed || isAgain);
            seen = origin;
            shown = notice;
            closed = isClosed || notice === null ? (notice ?? closed) : null;
            show(isClosed ? null : notice);
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
