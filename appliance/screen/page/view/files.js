// Saving a recording and opening one.
import { makeRecording, MostBytes, parseRecording, picturesOf, RecordingError } from "../state/recording.js";
import { dayAndTime } from "../model/words.js";
import { byId, el } from "./dom.js";

function download(name, content) {
    const address = URL.createObjectURL(new Blob([content], { type: "application/json" }));
    const link = el("a", { href: address, download: name });
    document.body.append(link);
    link.click();
    link.remove();
    // The browser reads it after the click.
    setTimeout(() => URL.revokeObjectURL(address), 60000);
}

async function save(timeline, pictures) {
    const saved = new Date();
    const { kept, base } = timeline;
    const events = [...timeline.events];
    const files = await pictures.asData(picturesOf(base, events));
    const name = `screen-${dayAndTime(saved).replace(/[ :]/g, "-")}.json`;
    download(name, JSON.stringify(makeRecording({ kept, base, events }, files, saved)));
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
        await save(timeline, pictures);
        tell("");
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
