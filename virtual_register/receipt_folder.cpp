#include "receipt_folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace virtual_register {
namespace {

// The number in "receipt-000012.svg"; 0 for any other name.
unsigned number_of(const std::string& name) {
    unsigned number = 0;
    return std::sscanf(name.c_str(), "receipt-%9u.", &number) == 1 ? number : 0;
}

}  // namespace

ReceiptFolder::ReceiptFolder(std::string path) : path_(std::move(path)) {
    if (path_.empty()) {
        return;
    }
    std::error_code error;
    std::filesystem::create_directories(path_, error);
    std::filesystem::directory_iterator files;
    if (!error) {
        files = std::filesystem::directory_iterator(path_, error);
    }
    if (error) {
        throw std::runtime_error("cannot keep receipts in " + path_ + ": " + error.message());
    }
    for (const auto& file : files) {
        last_ = std::max(last_, number_of(file.path().filename().string()));
    }
}

ReceiptFolder::~ReceiptFolder() {
    if (!lines_.empty()) {
        keep();
    }
}

void ReceiptFolder::add(const PaperLine& line) {
    if (path_.empty()) {
        return;
    }
    lines_.push_back(line);
    if (line.kind == PaperLine::Kind::cut) {
        keep();
    }
}

void ReceiptFolder::keep() {
    char name[32];
    std::snprintf(name, sizeof name, "/receipt-%06u", ++last_);
    try {
        write_receipt(path_ + name + ".txt", receipt_text(lines_));
        write_receipt(path_ + name + ".svg", receipt_svg(lines_));
        write_receipt(path_ + name + ".png", receipt_png(lines_));
    } catch (const std::runtime_error& error) {
        // The register prints on; its pictures are no reason to stop selling.
        std::cerr << "tarvo-register: " << error.what() << '\n';
    }
    lines_.clear();
}

void write_receipt(const std::string& path, const std::string& contents) {
    std::ofstream file(path, std::ios::binary);
    file << contents << std::flush;
    if (!file) {
        throw std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
    }
}

}  // namespace virtual_register
