// The real appliance, in a folder of its own.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtemp, readFile, rm } from "node:fs/promises";
import { tmpdir } from "node:os";
import path from "node:path";
import { createInterface } from "node:readline";

import { applianceProgram } from "./needed.mjs";

const Program = applianceProgram();
const Limit = 60000;

// The first line with the page's address; rejects where the program ends before it, or takes too long.
function addressOf(process, output) {
    return new Promise((resolve, reject) => {
        const fail = (why) => reject(new Error(`${why}:\n${output.join("\n")}`));
        const limit = setTimeout(() => fail("the appliance was not up in time"), Limit);
        process.once("exit", (status) => fail(`the appliance ended with ${status}`));
        process.once("error", (error) => fail(error.message));
        for (const stream of [process.stdout, process.stderr]) {
            createInterface({ input: stream }).on("line", (line) => {
                output.push(line);
                const found = /http:\/\/127\.0\.0\.1:\d+\//.exec(line);
                if (found) {
                    clearTimeout(limit);
                    resolve(found[0]);
                }
            });
        }
    });
}

async function ended(process) {
    if (process.exitCode !== null || process.signalCode !== null) {
        return;
    }
    let limit;
    const late = new Promise((resolve) => (limit = setTimeout(resolve, Limit, "late")));
    const how = await Promise.race([once(process, "exit"), late]);
    clearTimeout(limit);
    if (how === "late") {
        process.kill("SIGKILL");
        await once(process, "exit");
    }
}

export class Appliance {
    #output = [];

    async start(...options) {
        // The service builds the paths of pictures in 128 bytes: a short folder.
        this.root = await mkdtemp(path.join(tmpdir().length > 20 ? "/tmp" : tmpdir(), "cs-"));
        this.process = spawn(Program, ["screen", "--root", this.root, "--until-stdin-closes", ...options]);
        try {
            this.address = await addressOf(this.process, this.#output);
        } catch (error) {
            await this.end().catch(() => {});
            throw error;
        }
        return this;
    }

    /** The process number of one of its programs. */
    async processOf(name) {
        const session = JSON.parse(await readFile(path.join(this.root, "session.json"), "utf8"));
        return session.processes[name];
    }

    /** Ends it; it must have ended well, with nothing to say about it. */
    async end() {
        this.process?.stdin.end();
        if (this.process) {
            await ended(this.process);
        }
        await rm(this.root, { recursive: true, force: true });
        const { exitCode, signalCode } = this.process;
        assert.deepEqual([exitCode, signalCode], [0, null], `the appliance ended badly:\n${this.#output.join("\n")}`);
    }
}
