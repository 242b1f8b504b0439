// What a test with a browser needs besides node. Where something is missing the program ends as skipped, and says why.
import { accessSync, constants } from "node:fs";
import { createRequire } from "node:module";
import path from "node:path";

const Skipped = 77;

function skip(why) {
    console.log(`skipped: ${why}`);
    process.exit(Skipped);
}

function isProgram(file) {
    try {
        accessSync(file, constants.X_OK);
        return true;
    } catch {
        return false;
    }
}

function load() {
    const folder = process.env.CARVOY_BROWSER_MODULES;
    if (!folder) {
        skip("CARVOY_BROWSER_MODULES does not name the folder with node_modules");
    }
    const require = createRequire(path.join(path.resolve(folder), "package.json"));
    try {
        return { playwright: require("playwright-core"), axe: require("axe-core") };
    } catch (error) {
        return skip(`${folder} lacks a module: ${error.message.split("\n")[0]}`);
    }
}

export const Chromium = process.env.CHROMIUM || "/usr/bin/chromium";
if (!isProgram(Chromium)) {
    skip(`there is no Chromium at ${Chromium}`);
}
export const { playwright, axe } = load();

/** The tool's program, for the tests that run the whole appliance. */
export function applianceProgram() {
    const program = process.env.CARVOY_APPLIANCE;
    if (!program || !isProgram(program)) {
        skip(`CARVOY_APPLIANCE names no program: ${program ?? "it is not set"}`);
    }
    return program;
}
