#include "CardView.h"

#include "Table.h"

namespace Tool {

namespace {

std::string countText(std::size_t count)
{
    return count == 1 ? "1 product" : std::to_string(count) + " products";
}

std::string titleText(const Ui::CardContent& card, const Style& style)
{
    if (card.state == Ui::CardState::Empty) {
        return style.bold("Nothing searched yet");
    }
    const std::string what =
        style.bold("“" + printable(card.term) + "”") + " at " + style.bold(printable(card.merchant));
    const bool searching = card.state == Ui::CardState::Searching;
    return what + style.dim(": " + (searching ? "searching" : countText(card.products.size())));
}

Table productTable(const Ui::CardContent& card, const Style& style)
{
    const bool shrinks = true;
    Table table(style);
    table.addColumn("#", Table::Align::Right);
    table.addColumn("Product", Table::Align::Left, shrinks);
    table.addColumn("Size");
    table.addColumn("Discount");
    table.addColumn("Before", Table::Align::Right);
    table.addColumn("Price", Table::Align::Right);
    for (std::size_t i = 0; i < card.products.size(); ++i) {
        const Ui::Product& product = card.products[i];
        table.addRow({std::to_string(i + 1), product.name, product.size, product.discount,
                      product.formerPrice, product.price});
    }
    return table;
}

std::string numbered(std::size_t index, const char* mark)
{
    return std::string(mark) + " picture " + std::to_string(index + 1) + "  ";
}

}  // namespace

std::string cardText(const Ui::CardContent& card, const Style& style)
{
    const std::string title = titleText(card, style) + "\n";
    return card.products.empty() ? title : title + "\n" + productTable(card, style).text();
}

std::string pictureText(std::size_t index, const std::string& path, const Style& style)
{
    return style.green(numbered(index, "✓")) + printable(path) + "\n";
}

std::string missingPictureText(std::size_t index, const std::string& reason, const Style& style)
{
    return style.red(numbered(index, "✗")) + printable(reason) + "\n";
}

}  // namespace Tool
