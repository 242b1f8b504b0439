// The pictures' files: each is fetched once and kept, for the page and for a recording. The appliance wipes its folder
// at each search.

import { isPictureData } from "../state/shapes.js";

const MostBytes = 48 * 1024 * 1024;

function dataUrlOf(blob) {
    return new Promise((resolve, reject) => {
        const reader = new FileReader();
        reader.addEventListener("load", () => resolve(reader.result));
        reader.addEventListener("error", () => reject(reader.error));
        reader.readAsDataURL(blob);
    });
}

export class Pictures {
    #files = new Map();
    #bytes = 0;

    /** The address that an image shows, or "" where the file is not there any more. */
    async addressOf(name) {
        const file = await this.#file(name);
        return file?.address ?? "";
    }

    /** What is known or still to be had, by name, as data addresses. */
    async asData(names) {
        const found = await Promise.all(
            names.map(async (name) => {
                const file = await this.#file(name);
                return [name, file && (await dataUrlOf(file.blob))];
            }),
        );
        return Object.fromEntries(found.filter(([, data]) => isPictureData(data)));
    }

    #file(name) {
        if (!this.#files.has(name)) {
            const pending = this.#fetch(name);
            this.#files.set(name, pending);
            // What was not there may come with the next connection.
            pending.then((file) => file || this.#files.delete(name));
        }
        return this.#files.get(name);
    }

    async #fetch(name) {
        try {
            const response = await fetch(`/pictures/${name}`);
            if (!response.ok) {
                return undefined;
            }
            const blob = await response.blob();
            this.#makeRoom(blob.size);
            return { blob, address: URL.createObjectURL(blob) };
        } catch {
            return undefined;
        }
    }

    #makeRoom(size) {
        this.#bytes += size;
        for (const [name, pending] of this.#files) {
            if (this.#bytes <= MostBytes) {
                return;
            }
            this.#files.delete(name);
            pending.then((file) => {
                this.#bytes -= file?.blob.size ?? 0;
                URL.revokeObjectURL(file?.address ?? "");
            });
        }
    }
}
