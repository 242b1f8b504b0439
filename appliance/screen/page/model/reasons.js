// The service's own words for a failed search, in plain ones.

function statusReason(status, them) {
    if (status === 0) {
        return `There was no answer from the ${them}.`;
    }
    return status >= 500 ? `The ${them} cannot answer at the moment.` : `The ${them} refused the search.`;
}

function transferReason(why, them) {
    if (/certificate|ssl|tls/i.test(why)) {
        return `The ${them}'s certificate is not trusted, so nothing was asked.`;
    }
    if (/time.?out|timed out/i.test(why)) {
        return `The ${them} took too long to answer.`;
    }
    if (/connect|resolve/i.test(why)) {
        return `The ${them} could not be reached.`;
    }
    return `The connection to the ${them} broke off.`;
}

const Rules = [
    [/^Not logged in|ecommerce login/i, (_, them) => `The ${them} did not accept the sign-in.`],
    [/^Invalid access token/i, (_, them) => `Nobody is signed in at the ${them}.`],
    [/^Invalid extra data/i, () => "The search was incomplete."],
    [/^curl_easy_perform\(\) failed: (.*)/i, (found, them) => transferReason(found[1], them)],
    [/^curl perform failed: (\d+)/i, (found, them) => statusReason(Number(found[1]), them)],
    [/json|no member|parse/i, (_, them) => `The ${them}'s answer could not be understood.`],
];

/** The first words that are known decide: what failed first is what it began with. */
export function plainReason(reasons, source) {
    const them = source === "retailer" ? "retailer" : "merchant";
    for (const reason of reasons) {
        for (const [pattern, say] of Rules) {
            const found = pattern.exec(reason);
            if (found) {
                return say(found, them);
            }
        }
    }
    return "The search could not be completed.";
}
