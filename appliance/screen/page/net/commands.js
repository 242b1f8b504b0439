// What a person asks of the appliance. What comes of it arrives on the stream; only a refusal is told at once.

const AnswerLimit = 10000;

export const NotSent = "Not sent: there is no connection to the appliance.";
export const NotLive = "Not sent: this is a recording. Go back to live first.";
const NoAnswer = "The appliance did not answer. It is not known whether this arrived.";

async function refusalOf(response) {
    const body = await response.json().catch(() => ({}));
    return typeof body.error === "string" ? `Not done: ${body.error}` : `Not done: the answer was ${response.status}.`;
}

async function post(path, body) {
    const limit = new AbortController();
    const timer = setTimeout(() => limit.abort(), AnswerLimit);
    try {
        const response = await fetch(path, {
            method: "POST",
            headers: { "Content-Type": "application/json" },
            body: JSON.stringify(body),
            signal: limit.signal,
        });
        return response.ok ? "" : await refusalOf(response);
    } catch {
        return limit.signal.aborted ? NoAnswer : NotSent;
    } finally {
        clearTimeout(timer);
    }
}

/** Each command resolves to true once it was taken; else `tell` has got the reason, in words. */
export function createCommands(hindrance, tell) {
    // One after the other, so that they arrive in the order in which they were given.
    let before = Promise.resolve();
    async function command(path, body) {
        // What was told before goes at once: what comes of this command may be on the stream before its answer.
        const hindered = hindrance();
        tell(hindered);
        if (hindered) {
            return false;
        }
        const answer = before.then(() => post(path, body));
        before = answer;
        const trouble = await answer;
        if (trouble) {
            tell(trouble);
        }
        return trouble === "";
    }
    return {
        search: (source, merchant, term) =>
            command("/api/search", source === "merchant" ? { source, merchant, term } : { source, term }),
        say: (sentence) => command("/api/say", { sentence }),
        turn: (id, on) => command("/api/switch", { id, on }),
        confirm: (mode) => command("/api/confirm", { mode }),
    };
}
