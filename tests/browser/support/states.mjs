// States and their parts, as the server would send them.

export function product(changes = {}) {
    return {
        name: "Whole Milk",
        size: "1 gal",
        discount: "Save 10%",
        formerPrice: "$4.99",
        price: "$4.49",
        variantRef: "FM-1001-1",
        picture: "",
        ...changes,
    };
}

export function card(changes = {}) {
    return {
        sequence: 1,
        state: "shown",
        outcome: "found",
        reasons: [],
        source: "merchant",
        merchant: "freshmart",
        term: "milk",
        troubles: [],
        products: [product()],
        ...changes,
    };
}

export function message(changes = {}) {
    return {
        number: 1,
        kind: "launch",
        from: "org.tizen.carvoy",
        to: "org.tizen.carvoy-service",
        operation: "http://carvoy-service/appcontrol/operation/search",
        uri: "",
        extras: { key_search_term: "milk" },
        result: "",
        error: "",
        answers: 0,
        ...changes,
    };
}

export function settings(changes = {}) {
    return {
        confirm: "now",
        delay: 2000,
        partner: "org.example.partnerpay",
        merchants: ["freshmart", "greengrocer", "corner-store"],
        switches: [
            { id: "401", label: "Answer 401", words: "~status=401", for: "both", group: "answer", on: false },
            { id: "503", label: "Answer 503", words: "~status=503", for: "both", group: "answer", on: true },
        ],
        ...changes,
    };
}

export function someState(changes = {}) {
    return {
        card: card({ sequence: 0, state: "empty", outcome: "", merchant: "", term: "", products: [] }),
        partner: { page: "none", product: { merchant: "", variantRef: "" }, cart: [], messages: [] },
        assistant: { turn: 0, sentence: "", action: "", nlu: [], fate: "none", reason: "", view: "closed", messages: [] },
        record: null,
        flag: null,
        images: [],
        settings: settings(),
        apps: { "org.tizen.carvoy": true, "org.tizen.carvoy-service": true },
        notice: null,
        messages: [],
        log: [],
        ...changes,
    };
}
