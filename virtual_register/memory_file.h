#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "memory.h"

namespace virtual_register {

// A register's memory as text, one record a line, so that it can be read, compared and put together
// by hand. The first line names format and version. A file of an earlier version is taken and
// written back in the present one; a file of a later version is refused.
//
//   tarvo-register memory 2
//   # a remark; it is not kept
//   register firmware 303 serial 3030303132333435 error 0
//   counters tape 1 checks 2 drawer 100000 first-record 0
//   ram 0000 20202020...           up to 16 bytes; rows that are all zero are left out
//   eeprom 0012 00...
//   tape 00010000...               31 bytes a record, oldest first
//   product 8D8E...                39 bytes
//   check stage 0 type 6 ...       the open check, then its lines
//   line name ... barcode ... price ... quantity ... amount ...
//   last tape 1 number 2 ...       the last check printed, then its lines
//   last-line ...
//
// Version 1 is the same but for tape records without barcode digits, which it wrote too short.
//
// Texts are bytes in hexadecimal, an empty one is "-". Sums are kopecks.
class MemoryFileError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string memory_to_text(const Memory& memory);
Memory memory_from_text(std::string_view text);

// `disk` waits until the file is on the disk, which may take tens of milliseconds: with it the
// memory survives the machine, without it only the program.
enum class Durability { program, disk };
// The file is replaced as a whole or not at all.
void save_memory(const Memory& memory, const std::string& path, Durability durability);
bool memory_file_exists(const std::string& path);
Memory load_memory(const std::string& path);

}  // namespace virtual_register
