// The product card as text.
#pragma once

#include <string>

#include "Card.h"
#include "Terminal.h"

namespace Tool {

// A title line and a table of the products. Same card, same style: same text.
std::string cardText(const Ui::CardContent& card, const Style& style);

// One line for a picture that arrived, and one for a picture that did not; `index` counts from 0.
std::string pictureText(std::size_t index, const std::string& path, const Style& style,
                        Ui::PictureKind kind = Ui::PictureKind::Product);
std::string missingPictureText(std::size_t index, const std::string& reason, const Style& style,
                               Ui::PictureKind kind = Ui::PictureKind::Product);

}  // namespace Tool
