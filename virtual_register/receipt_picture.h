#pragma once

#include <string>
#include <vector>

#include "paper.h"

namespace virtual_register {

using PaperLines = std::vector<PaperLine>;

// What is printed, as a piece of paper: UTF-8 text, a drawing with real letters, or dots.
std::string receipt_text(const PaperLines& lines);
std::string receipt_svg(const PaperLines& lines);
std::string receipt_png(const PaperLines& lines);

enum class ReceiptFormat { text, svg, png };
std::string receipt_as(ReceiptFormat format, const PaperLines& lines);

}  // namespace virtual_register
