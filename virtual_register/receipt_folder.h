#pragma once

#include <string>

#include "receipt_picture.h"

namespace virtual_register {

// A folder where each receipt, as it is cut off, becomes three files: receipt-000001.txt, .svg and
// .png. Numbers go on behind those that are there.
class ReceiptFolder {
  public:
    // Nothing is kept for an empty path. Makes the folder when it is missing. Throws
    // std::runtime_error with a sentence for the user.
    explicit ReceiptFolder(std::string path);
    // Keeps what was printed and not cut off.
    ~ReceiptFolder();
    ReceiptFolder(const ReceiptFolder&) = delete;
    ReceiptFolder& operator=(const ReceiptFolder&) = delete;

    void add(const PaperLine& line);

  private:
    void keep();

    std::string path_;
    unsigned last_ = 0;
    PaperLines lines_;
};

// Writes the whole file. Throws std::runtime_error with a sentence for the user.
void write_receipt(const std::string& path, const std::string& contents);

}  // namespace virtual_register
