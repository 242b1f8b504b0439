// Names of products that others only know by merchant and reference.

function fromCard(card, { merchant, variantRef }) {
    const isTheirs = card && card.source === "merchant" && card.merchant === merchant;
    return isTheirs ? card.products.find((product) => product.variantRef === variantRef)?.name : undefined;
}

function fromMessage({ extras }, { merchant, variantRef }) {
    const references = extras.key_product_variant_refs;
    const names = extras.key_product_names;
    if (extras.key_merchant !== merchant || !Array.isArray(references) || !Array.isArray(names)) {
        return undefined;
    }
    return names[references.indexOf(variantRef)];
}

/** The product's name by the card or, after another search, by the lists that went by; "" where neither knows it. */
export function nameOf(state, product) {
    const onCard = fromCard(state.card, product);
    if (onCard !== undefined) {
        return onCard;
    }
    for (let i = state.messages.length - 1; i >= 0; --i) {
        const name = fromMessage(state.messages[i], product);
        if (name !== undefined) {
            return name;
        }
    }
    return "";
}

const MostShown = 6;

/** The products for which the card has a place; by voice no others are chosen either. */
export function shownOf(card) {
    return card.products.slice(0, MostShown);
}

/**
 * Whether a product's picture came ("known"), may still come ("awaited"), or was left out ("missing"): they come in the
 * products' order, so that none follows once a later one is there.
 */
export function pictureFates(products) {
    const last = products.findLastIndex((product) => product.picture);
    return products.map((product, index) => (product.picture ? "known" : index < last ? "missing" : "awaited"));
}
