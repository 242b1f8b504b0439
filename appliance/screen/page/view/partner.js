// The partner app: its page, the product by name, and the cart.
import { nameOf } from "../model/products.js";
import { lookUp, merchantName } from "../model/words.js";
import { byId, el, keyed, setText, when } from "./dom.js";
import { drawReceived } from "./received.js";

const Pages = { none: "Nothing open", product: "Product", cart: "Cart", "check-out": "Check-out" };

function titleOf(state, product) {
    return nameOf(state, product) || product.variantRef || "A product without a reference";
}

function whereOf(product) {
    return `${merchantName(product.merchant)}, ${product.variantRef}`;
}

function makeLine() {
    return el("li.cart-line", {}, el("span.quantity"), el("span.cart-name"), el("span.reference"));
}

function drawCart(state, cart) {
    keyed(
        byId("partner-cart"),
        cart.map((line, index) => ({ ...line, index })),
        ({ index }) => index,
        makeLine,
        (line, { product, quantity }) => {
            const [number, name, reference] = line.children;
            setText(number, `${quantity} ×`);
            setText(name, titleOf(state, product));
            setText(reference, whereOf(product));
        },
    );
    byId("partner-cart").hidden = cart.length === 0;
    byId("partner-empty").hidden = cart.length > 0;
}

const Titles = { cart: "The cart is open", "check-out": "Checking out", none: "Waiting to be opened" };

function draw(state) {
    const partner = state.partner ?? { page: "none", product: null, cart: [], messages: [] };
    const isProduct = partner.page === "product";
    setText(byId("partner-page"), lookUp(Pages, partner.page, partner.page));
    byId("partner-page").dataset.page = partner.page;
    setText(byId("partner-title"), isProduct ? titleOf(state, partner.product) : lookUp(Titles, partner.page, ""));
    setText(byId("partner-where"), isProduct ? whereOf(partner.product) : "");
    drawCart(state, partner.cart);
    drawReceived(byId("partner-received"), partner.messages);
}

export function partnerAnnouncement(state) {
    const { partner } = state;
    if (!partner || partner.page === "none") {
        return "";
    }
    const title = partner.page === "product" ? titleOf(state, partner.product) : lookUp(Titles, partner.page, partner.page);
    const last = partner.messages.at(-1);
    const isAdded = last?.outcome === "taken" && last.operation.endsWith("/click_add_cart");
    return isAdded ? `Partner app: ${title} was put into the cart.` : `Partner app: ${title}.`;
}

export function createPartner() {
    return when(
        // A name may only become known with a message.
        ({ state }) => [state.partner, state.card, state.messages],
        ({ state }) => draw(state),
    );
}
