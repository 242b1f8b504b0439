// A server for the page that sends what a test wants: for states that the appliance never has, or not at will.
import { once } from "node:events";
import { readFile } from "node:fs/promises";
import { createServer } from "node:http";
import path from "node:path";
import { fileURLToPath } from "node:url";

import { someState } from "./states.mjs";

const Page = fileURLToPath(new URL("../../../appliance/screen/page/", import.meta.url));
const Types = { ".html": "text/html", ".css": "text/css", ".js": "text/javascript", ".svg": "image/svg+xml" };
const Policy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; " +
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
const Beat = 2000;

// One red point.
const Picture = Buffer.from("R0lGODlhAQABAPAAAP8AAAAAACwAAAAAAQABAAACAkQBADs=", "base64");

export class StandIn {
    constructor(base = {}) {
        this.base = someState(base);
        this.events = [];
        this.commands = [];
        this.answer = { status: 202, body: "" };
        this.pictures = new Set();
        this.run = "1";
        this.streams = new Set();
        this.opened = 0;
    }

    async start(port = 0) {
        this.server = createServer((request, response) => this.#serve(request, response));
        this.server.listen(port, "127.0.0.1");
        await once(this.server, "listening");
        this.address = `http://127.0.0.1:${this.server.address().port}/`;
        this.beats = setInterval(() => this.#send("beat", {}), Beat);
        return this;
    }

    step(name, data) {
        const event = { at: 1767225600000 + this.events.length, name, data };
        this.events.push(event);
        this.#send("step", event);
    }

    /** Ends all streams, as a server does that ends. */
    drop() {
        this.streams.forEach((stream) => stream.destroy());
    }

    async end() {
        clearInterval(this.beats);
        this.server.close();
        this.server.closeAllConnections?.();
        this.drop();
    }

    #send(kind, data) {
        this.streams.forEach((stream) => stream.write(`event: ${kind}\ndata: ${JSON.stringify(data)}\n\n`));
    }

    async #serve(request, response) {
        const { pathname, search } = new URL(request.url, "http://screen");
        response.setHeader("Content-Security-Policy", Policy);
        response.setHeader("Connection", "close");
        if (request.method === "POST") {
            await this.#command(pathname, request, response);
        } else if (pathname === "/events") {
            this.#stream(request, response);
        } else if (pathname.startsWith("/pictures/")) {
            const isThere = this.pictures.has(pathname.slice("/pictures/".length) + search);
            response.writeHead(isThere ? 200 : 404, { "Content-Type": "image/gif" }).end(isThere ? Picture : "");
        } else {
            await this.#file(pathname, response);
        }
    }

    async #command(pathname, request, response) {
        const parts = [];
        for await (const part of request) {
            parts.push(part);
        }
        this.commands.push({ path: pathname, ...JSON.parse(Buffer.concat(parts)) });
        response.writeHead(this.answer.status, { "Content-Type": "application/json" }).end(this.answer.body);
    }

    #stream(request, response) {
        response.writeHead(200, { "Content-Type": "text/event-stream" });
        const kept = { messages: 300, log: 1000 };
        const timeline = { run: this.run, beat: Beat, kept, base: this.base, events: this.events };
        response.write(`event: timeline\ndata: ${JSON.stringify(timeline)}\n\n`);
        this.streams.add(response);
        this.opened += 1;
        response.on("close", () => this.streams.delete(response));
    }

    async #file(pathname, response) {
        const file = path.join(Page, pathname === "/" ? "index.html" : path.normalize(pathname));
        const type = Types[path.extname(file)];
        const content = type && (await readFile(file).catch(() => undefined));
        response.writeHead(content ? 200 : 404, { "Content-Type": `${type ?? "text/plain"}; charset=utf-8` }).end(content);
    }
}
