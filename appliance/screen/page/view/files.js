// Saving a recording and opening one.
import { filesOf, makeRecording, MostBytes, parseRecording, picturesOf, RecordingError, wrongIn } from "../state/recording.js";
import { count, dayAndTime } from "../model/words.js";
import { byId, el } from "./dom.js";

function download(name, file) {
    const address = URL.createObjectURL(file);
    const link = el("a", { href: address, download: name });
    document.body.append(link);
    link.click();
    link.remove();
    // The browser reads it after the click.
    setTimeout(() => URL.revokeObjectURL(address), 60000);
}

// Returns what the person has to know of it, or "".
async function save(timeline, pictures) {
    const saved = new Date();
    const { kept, base, now } = timeline;
    const events = [...timeline.events];
    const { data, left } = await pictures.asData(picturesOf(base, events), filesOf(now.images));
    const recording = makeRecording({ kept, base, events }, data, saved);
    const file = new Blob([JSON.stringify(recording)], { type: "application/json" });
    const wrong = file.size > MostBytes ? `it has more than ${MostBytes / 1024 / 1024} MB` : wrongIn(recording);
    if (wrong) {
        return `Not saved, since it could not be opened again: ${wrong}.`;
    }
    download(`screen-${dayAndTime(saved).replace(/[ :]/g, "-")}.json`, file);
    return left > 0 ? `Saved without ${count(left, "older picture")}: they would have made it too large.` : "";
}

async function read(file) {
    if (file.size > MostBytes) {
        throw new RecordingError(`it has more than ${MostBytes / 1024 / 1024} MB`);
    }
    return parseRecording(await file.text());
}

/** `open(recording)` gets what was opened, `tell(words)` why it could not be. */
export function setUpFiles({ timeline, pictures, open, tell }) {
    byId("save").addEventListener("click", async () => {
        tell(await save(timeline, pictures));
    });
    const field = byId("open-file");
    byId("open").addEventListener("click", () => field.click());
    field.addEventListener("change", async () => {
        const [file] = field.files;
        if (!file) {
            return;
        }
        try {
            open(await read(file));
            tell("");
        } catch (error) {
            const why = error instanceof RecordingError ? error.message : "it could not be read";
            tell(`“${file.name}” cannot be shown: ${why}.`);
        }
        // So that the same file can be chosen again.
        field.value = "";
    });
}
