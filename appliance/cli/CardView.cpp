#include "CardView.h"

#include "PlainText.h"
#include "Table.h"

namespace Tool {

namespace {

using Appliance::printable;

std::string countText(std::size_t count)
{
    return count == 1 ? "1 product" : std::to_string(count) + " products";
}

std::string titleText(const Ui::CardContent& card, const Style& style)
{
    if (card.state == Ui::CardState::Empty) {
        return style.bold("Nothing searched yet");
    }
    const std::string where = card.source == Ui::Source::Retailer ? "the retailer" : printable(card.merchant);
    const std::string what = style.bold("“" + printable(card.term) + "”") + " at " + style.bold(where);
    const bool searching = card.state == Ui::CardState::Searching;
    return what + style.dim(": " + (searching ? "searching" : countText(card.products.size())));
}

// A merchant tells a product's size, the retailer the code of its discount.
Table productTable(const Ui::CardContent& card, const Style& style)
{
    const bool shrinks = true;
    const bool atRetailer = card.source == Ui::Source::Retailer;
    Table table(style);
    table.addColumn("#", Table::Align::Right);
    table.addColumn("Product", Table::Align::Left, shrinks);
    table.addColumn(atRetailer ? "Type" : "Size");
    table.addColumn("Discount");
    table.addColumn("Before", Table::Align::Right);
    table.addColumn("Price", Table::Align::Right);
    for (std::size_t i = 0; i < card.products.size(); ++i) {
        const Ui::Product& product = card.products[i];
        table.addRow({std::to_string(i + 1), product.name, atRetailer ? product.discountType : product.size,
                      product.discount, product.formerPrice, product.price});
    }
    return table;
}

std::string numbered(std::size_t index, Ui::PictureKind kind, const char* mark)
{
    const char* name = kind == Ui::PictureKind::Badge ? " badge   " : " picture ";
    return mark + std::string(name) + std::to_string(index + 1) + "  ";
}

}  // namespace

std::string cardText(const Ui::CardContent& card, const Style& style)
{
    const std::string title = titleText(card, style) + "\n";
    return card.products.empty() ? title : title + "\n" + productTable(card, style).text();
}

std::string pictureText(std::size_t index, const std::string& path, const Style& style, Ui::PictureKind kind)
{
    return style.green(numbered(index, kind, "✓")) + printable(path) + "\n";
}

std::string missingPictureText(std::size_t index, const std::string& reason, const Style& style,
                               Ui::PictureKind kind)
{
    return style.red(numbered(index, kind, "✗")) + printable(reason) + "\n";
}

}  // namespace Tool
