// The card as the page gets it.
#pragma once

#include <nlohmann/json.hpp>

#include "Card.h"
#include "PictureFolder.h"
#include "Verdict.h"

namespace Screen {

// With addresses in place of paths, and trouble words apart from the term. A search that was not sent is
// over for the page.
nlohmann::json faceOf(const Ui::CardContent& card, const Verdict& verdict, const PictureFolder& pictures);

}  // namespace Screen
