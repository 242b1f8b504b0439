// Answers of a merchant, of any size, for measuring.
#pragma once

#include <cstddef>
#include <string>

namespace Benchmarks {

/** An answer with `products` products, each about 500 bytes, like the ones that merchants send. */
std::string answerWith(size_t products);

/** What every reader of an answer pays: json-glib's own parse of it. Returns the number of root members; 0
 * where it refuses the text. */
size_t parseWithJsonGlib(const std::string& text);

}  // namespace Benchmarks
