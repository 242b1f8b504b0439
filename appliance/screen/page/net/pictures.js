// The pictures' files: each is fetched once and kept, for the page and for a recording. The appliance wipes its folder
// at each search.

import { isPictureData } from "../state/shapes.js";

const MostKept = 48 * 1024 * 1024;

/** How much of a recording's file its pictures may take, as they stand in it. */
export const MostSaved = 24 * 1024 * 1024;

function dataUrlOf(blob) {
    return new Promise((resolve, reject) => {
        const reader = new FileReader();
        reader.addEventListener("load", () => resolve(reader.result));
        reader.addEventListener("error", () => reject(reader.error));
        reader.readAsDataURL(blob);
    });
}

export class Pictures {
    #pending = new Map();
    // By name, the one that was asked for longest ago first.
    #files = new Map();
    #bytes = 0;
    #namesInUse;
    #most;

    /** `namesInUse()` returns what is looked at: that is kept, however much it is. `most` bytes are kept otherwise. */
    constructor(namesInUse = () => [], most = MostKept) {
        this.#namesInUse = namesInUse;
        this.#most = most;
    }

    /** The address that an image shows, or "" where the file is not there any more. */
    async addressOf(name) {
        const file = await this.#file(name);
        return file?.address ?? "";
    }

    /**
     * Of `names`, from the oldest to the newest, what is known, and of `there` what is still to be had, as data
     * addresses: `{data, left}` with the number of those for which there was no room.
     */
    async asData(names, there, most = MostSaved) {
        const data = {};
        let left = 0;
        let size = 0;
        for (const name of [...names].reverse()) {
            const file = this.#files.get(name) ?? (there.includes(name) ? await this.#file(name) : undefined);
            const address = file && (await dataUrlOf(file.blob));
            if (!isPictureData(address)) {
                continue;
            }
            if (size + address.length > most) {
                left += 1;
                continue;
            }
            size += address.length;
            data[name] = address;
        }
        return { data, left };
    }

    #file(name) {
        const known = this.#files.get(name);
        if (known) {
            this.#files.delete(name);
            this.#files.set(name, known);
            return known;
        }
        if (!this.#pending.has(name)) {
            // What was not there may come with the next connection.
            this.#pending.set(name, this.#fetch(name).finally(() => this.#pending.delete(name)));
        }
        return this.#pending.get(name);
    }

    async #fetch(name) {
        try {
            const response = await fetch(`/pictures/${name}`);
            if (!response.ok) {
                return undefined;
            }
            const blob = await response.blob();
            const file = { blob, size: blob.size, address: URL.createObjectURL(blob) };
            this.#files.set(name, file);
            this.#bytes += file.size;
            this.#makeRoom(name);
            return file;
        } catch {
            return undefined;
        }
    }

    #makeRoom(newest) {
        if (this.#bytes <= this.#most) {
            return;
        }
        const used = new Set([newest, ...this.#namesInUse()]);
        for (const [name, { size, address }] of this.#files) {
            if (this.#bytes <= this.#most) {
                return;
            }
            if (!used.has(name)) {
                this.#files.delete(name);
                this.#bytes -= size;
                URL.revokeObjectURL(address);
            }
        }
    }
}
